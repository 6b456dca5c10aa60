#include "tw_minihud.h"

#include "tw_exception.h"
#include "tw_hudfixture.h"

#include <algorithm>
#include <climits>
#include <initializer_list>
#include <string>

using namespace HudTest;
using namespace Tidewheel;

namespace
{

// An archive whose every file has these bytes.
struct FontArchive : AM::ArchiveManager
{
    struct Archive : AM::ArchiveBase
    {
        AM::File read(const std::string&) override
        {
            AM::File file(new AM::FileStructure);
            file->length = static_cast<long>(mBytes.size());
            file->data = new unsigned char[mBytes.size()];
            std::copy(mBytes.begin(), mBytes.end(), file->data);
            return file;
        }
        bool write(AM::File) override { return false; }
        std::string mBytes;
    };
    explicit FontArchive(const std::string& font)
    {
        Archive* archive = new Archive;
        archive->mBytes = font;
        mArchives.push_back(archive);
    }
};

struct Canvas : HUDBase
{
    explicit Canvas(AM::ArchiveManager& archive) : HUDBase(archive) {}
    void redraw() override {}
};

// Cells of 8 by 12 without ink, but for a pixel (column, row) of each of these codes.
struct Ink
{
    int code, column, row;
};
std::string makeFont(std::initializer_list<Ink> ink)
{
    std::string font = "SBF!\x08\x0C" + std::string(32 * 96, '\0');
    for (const Ink& dot : ink)
        font[static_cast<std::size_t>(6 + dot.code * 12 + dot.row)] |= static_cast<char>(0x80 >> dot.column);
    return font;
}

std::string errorOf(AM::ArchiveManager& archive)
{
    try
    {
        Canvas canvas(archive);
    }
    catch (const Exception& exception)
    {
        return exception.what();
    }
    return "";
}

int filled(const HUDBase& hud, std::uint32_t colour)
{
    return static_cast<int>(std::count(hud.mData, hud.mData + hud.mWidth * hud.mHeight, colour));
}

} // namespace

TEST(HudFont, brokenFilesAreNamed)
{
    const char* const noFont = "Font not an Sandrift Binary Font -!-\n";
    const std::string good = makeFont({});
    const struct
    {
        const char* name;
        std::string file;
        std::string error;
    } cases[] = {
        {"empty", "", noFont},
        {"tag cut", "SBF", noFont},
        {"wrong tag", "SBF?" + good.substr(4), noFont},
        {"no cell size", good.substr(0, 5),
         "HUDBase::loadFont, File is too short (tidewheel.font): expected 6 bytes, got 5"},
        {"a byte short", good.substr(0, 3077),
         "HUDBase::loadFont, File is too short (tidewheel.font): expected 3078 bytes, got 3077"},
        {"good", good, ""},
        {"no rows", std::string("SBF!\x08\0", 6), ""},
    };
    for (const auto& test : cases)
    {
        FontArchive archive(test.file);
        EXPECT_EQ(errorOf(archive), test.error) << test.name;
    }
    AM::ArchiveManager nothing;
    EXPECT_EQ(errorOf(nothing), "[Tidewheel] Could not find 'tidewheel.font'!");
}

TEST(HudFont, widthsFollowFromTheInk)
{
    FontArchive archive(makeFont({{'A', 5, 3}, {' ', 7, 0}, {255, 0, 11}}));
    Canvas canvas(archive);
    EXPECT_EQ(canvas.mCharAdvance[65], 8);
    EXPECT_EQ(canvas.mCharAdvance[255], 3);
    EXPECT_EQ(canvas.mCharAdvance[32], 4);
    EXPECT_EQ(canvas.mCharAdvance[66], 0);
    EXPECT_EQ(canvas.mFont['A' * 96 + 3 * 8 + 5], 1);

    EXPECT_EQ(canvas.drawText("A\xFF", 10, 20, 0x11223344, 0, false), 11);
    EXPECT_EQ(pixel(canvas, 15, 23), 0x11223344u);
    EXPECT_EQ(pixel(canvas, 18, 31), 0x11223344u);
    EXPECT_EQ(filled(canvas, 0), 512 * 512 - 2);
}

TEST(HudFont, theShowsFontDrawsAllItMayBeAskedFor)
{
    ShowArchive archive;
    Canvas canvas(archive);
    for (int code = 33; code < 256; ++code)
    {
        const bool blank = code == 0xA0 || code == 0xAD;
        EXPECT_EQ(canvas.mCharAdvance[code] > 2, !blank) << code;
        for (int column = 0; column < 8; ++column) EXPECT_EQ(canvas.mFont[code * 96 + column], 0) << code;
    }
}

TEST(HudCanvas, textIsCutAtItsWidthAndWhollyInsideTheScrollingArea)
{
    FontArchive archive(makeFont({{'A', 0, 0}, {'A', 5, 0}}));
    Canvas canvas(archive);
    EXPECT_EQ(canvas.drawText("AAA", 0, 0, 7, 13, false), 24); // pens 0, 8, 16; columns up to 12
    EXPECT_EQ(filled(canvas, 7), 3);
    EXPECT_EQ(canvas.drawText("", 0, 0, 7, 0, false), 0);

    canvas.mClipTop = 30;
    canvas.mClipBottom = 100;
    canvas.mScroll = 1000;
    for (const int y : {1028, 1088}) EXPECT_EQ(canvas.drawText("A", 0, y, 8, 0, true), 0) << y;
    for (const int y : {1029, 1087}) EXPECT_EQ(canvas.drawText("A", 0, y, 8, 0, true), 8) << y;
    EXPECT_EQ(filled(canvas, 8), 4);
    EXPECT_EQ(pixel(canvas, 5, 29), 8u);
}

TEST(HudCanvas, scrolledBoxesAreCutToTheArea)
{
    ShowArchive archive;
    Canvas canvas(archive);
    const struct
    {
        int y, height, first, rows;
    } cases[] = {{140, 10, 40, 10}, {125, 10, 30, 5}, {195, 10, 95, 5}, {190, 10, 90, 10}, {110, 10, 0, 0},
                 {210, 10, 0, 0},   {120, 90, 0, 0},  {140, -3, 0, 0},  {140, 0, 0, 0}};
    for (const auto& test : cases)
    {
        canvas.resize(512, 512);
        canvas.mClipTop = 30;
        canvas.mClipBottom = 100;
        canvas.mScroll = 100;
        canvas.drawBox(5, test.y, 3, test.height, 7, true);
        EXPECT_EQ(filled(canvas, 7), 3 * test.rows) << test.y;
        if (test.rows > 0)
        {
            EXPECT_EQ(pixel(canvas, 5, test.first), 7u) << test.y;
            EXPECT_EQ(pixel(canvas, 7, test.first + test.rows - 1), 7u) << test.y;
        }
    }
}

TEST(HudCanvas, pixelsAddTheirBits)
{
    ShowArchive archive;
    Canvas canvas(archive);
    canvas.drawBox(0, 0, 512, 512, 0xCC333344, false);
    canvas.drawPixel(3, 4, 0xFF000000, false);
    EXPECT_EQ(pixel(canvas, 3, 4), 0xFF333344u);
    canvas.mClipTop = 30;
    canvas.mClipBottom = 100;
    canvas.mScroll = 10;
    for (const int y : {39, 40, 109, 110}) canvas.drawPixel(0, y, 0xFF000000, true);
    EXPECT_EQ(filled(canvas, 0xFF333344), 3);
    EXPECT_EQ(pixel(canvas, 0, 99), 0xFF333344u);
}

TEST(HudCanvas, nothingLeavesTheBuffer)
{
    ShowArchive archive;
    Canvas canvas(archive);
    canvas.resize(7, 5);
    const int far[] = {INT_MIN, -8, -1, 0, 4, 7, INT_MAX};
    for (const int x : far)
        for (const int y : far)
            for (const bool scroll : {false, true})
            {
                canvas.drawPixel(x, y, 1, scroll);
                canvas.drawText("MW\xFF", x, y, 1, 0, scroll);
                canvas.drawCircle(x, y, 12, 1, scroll);
                canvas.drawBox(x, y, 1000, 9, 1, scroll);
                canvas.drawBox(x, y, INT_MIN, INT_MIN, 1, scroll);
            }
}

TEST(HudCanvas, circlesLeaveOutTheirRim)
{
    ShowArchive archive;
    Canvas canvas(archive);
    canvas.drawCircle(10, 10, 5, 7, true);
    for (int y = 7; y < 13; ++y)
        for (int x = 7; x < 13; ++x)
            EXPECT_EQ(pixel(canvas, x, y) == 7, x >= 9 && x <= 11 && y >= 9 && y <= 11) << x << " " << y;
}

TEST(HudCanvas, coloursMixByChannel)
{
    ShowArchive archive;
    EXPECT_EQ(Canvas(archive).gradient(0xFF102030, 0x00FF2031, 0.5f), 0x7F872030u);
}

TEST(MiniHud, showsTheClockOfTheLastTimeEvent)
{
    ShowArchive archive;
    MiniHUD hud(archive);
    Event records[3];
    records[0].type = records[1].type = EVENT_TIME;
    records[1].time = 61.5f;
    records[1].fps = 59.6f;
    records[2].type = EVENT_KEYDOWN;
    Events events;
    hud.mDirty = false;
    events.events = &records[2];
    events.count = 1;
    hud.processEvents(events);
    EXPECT_FALSE(hud.mDirty);

    events.events = records;
    events.count = 3;
    hud.processEvents(events);
    EXPECT_TRUE(hud.mDirty);
    EXPECT_TRUE(hasText(hud, "01:01.50", 3, 2, white));
    EXPECT_TRUE(hasText(hud, "fps:60", 3, 16, white));
    EXPECT_EQ(filled(hud, 0xAA000000), 64 + 64 + 30); // the edges above, below and at the left
}
