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

TEST(HudCanvas, drawsInsideItsScrollingArea)
{
    FontArchive archive(makeFont({{'A', 0, 0}, {'A', 5, 0}}));
    const struct
    {
        const char* name;
        int y, height;   // in rows of the list
        int first, rows; // what of it is filled in the canvas
    } cases[] = {
        {"box inside", 140, 10, 40, 10},     {"box cut above", 125, 10, 30, 5},  {"box cut below", 195, 10, 95, 5},
        {"box at the end", 190, 10, 90, 10}, {"box above", 110, 10, 0, 0},       {"box below", 210, 10, 0, 0},
        {"box over all", 120, 90, 0, 0},     {"negative box", 140, -3, 0, 0},    {"text above", 128, 0, 0, 0},
        {"text at the top", 129, 0, 29, 1},  {"text at the end", 187, 0, 87, 1}, {"text below", 188, 0, 0, 0},
        {"pixel above", 129, 1, 0, 0},       {"pixel", 130, 1, 30, 1},           {"last pixel", 199, 1, 99, 1},
        {"pixel below", 200, 1, 0, 0},
    };
    for (const auto& test : cases)
    {
        Canvas canvas(archive);
        canvas.mClipTop = 30;
        canvas.mClipBottom = 100;
        canvas.mScroll = 100;
        const bool isText = test.height == 0, isPixel = test.height == 1;
        if (isText)
            EXPECT_EQ(canvas.drawText("A", 5, test.y, 7, 0, true), test.rows * 8) << test.name;
        else if (isPixel)
            canvas.drawPixel(5, test.y, 7, true);
        else
            canvas.drawBox(5, test.y, 2, test.height, 7, true);
        EXPECT_EQ(filled(canvas, 7), (isPixel ? 1 : 2) * test.rows) << test.name;
        EXPECT_TRUE(test.rows == 0 ||
                    (pixel(canvas, 5, test.first) == 7 && pixel(canvas, 5, test.first + test.rows - 1) == 7))
            << test.name;
    }
}

TEST(HudCanvas, textIsCutAtItsWidthAndPixelsAddTheirBits)
{
    FontArchive archive(makeFont({{'A', 0, 0}, {'A', 5, 0}}));
    Canvas canvas(archive);
    EXPECT_EQ(canvas.drawText("AAA", 0, 0, 7, 13, false), 24); // pens 0, 8, 16; columns up to 12
    EXPECT_EQ(filled(canvas, 7), 3);
    canvas.drawPixel(0, 0, 0xFF000000, false);
    EXPECT_EQ(pixel(canvas, 0, 0), 0xFF000007u);
    EXPECT_EQ(canvas.gradient(0xFF102030, 0x00FF2031, 0.5f), 0x7F872030u);
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
