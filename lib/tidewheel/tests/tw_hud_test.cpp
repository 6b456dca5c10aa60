#include "tw_hudfixture.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <sstream>
#include <string>

using namespace HudTest;

namespace
{

// The window shows 40 seconds on 398 columns from 110 on, so 10 seconds are 99.5 columns. Row i of the list stands at
// 30 + 12 i.
std::string entryWith(const std::string& children, const char* times = "start='0' end='40'")
{
    return std::string("<script><effect name='known' ") + times + ">" + children + "</effect></script>";
}

// A row of the picture from column `first` on, as lengths of equal pixels and a letter for each colour.
std::string row(const Stage& stage, int y, int first)
{
    static const std::map<std::uint32_t, char> letters = {
        {white, 'W'},      {0xFF000000, 'K'}, {red, 'R'},        {0xCC333344, 'a'}, {0xCC383849, 'b'},
        {0xEE004466, 's'}, {0xEE000000, 'k'}, {0xCC4477CC, 'e'}, {0xCC99BBFF, 'r'}, {0xCC000000, 'd'},
        {0xCC550000, 'u'}, {0xEE002277, 'E'}, {0xCCFFFFFF, 'w'}, {0xCC003F00, 't'}, {0xEE002200, 'T'},
        {0xEE440000, 'U'}, {0xFF777777, 'f'}, {0xEE776666, 'c'}, {0xFFFF2222, 'z'}, {0xFFFF6666, 'C'},
        {0xFF7777FF, 'p'}};
    std::string text;
    for (int x = first, length = 1; x < 512; ++x, ++length)
    {
        const std::uint32_t colour = pixel(stage.mHud, x, y);
        if (x < 511 && pixel(stage.mHud, x + 1, y) == colour) continue;
        const auto letter = letters.find(colour);
        text += std::to_string(length) + (letter == letters.end() ? '?' : letter->second);
        length = 0;
    }
    return text;
}

struct View
{
    const char* name;
    std::string script;
    const char* keys;
    float time;
    int first;
    const char* rows; // number and pixels of each
};

} // namespace

TEST(HudView, showsWhatThereIsAndWhatIsPicked)
{
    const std::string one = "<script><effect name='known' start='2' end='10'/></script>";
    const std::string off = "<script><effect name='known' state='off' start='2' end='10'/></script>";
    const std::string beat = entryWith("<trigger start='1' repeat='3' delay='2'/>", "start='2' end='10'");
    const std::string curve = entryWith("<spline type='linear'><key/><key time='20' value='0.5'/><key time='40'/>"
                                        "</spline>",
                                        "start='0' end='30'");
    // clang-format off
    const View views[] = {
        {"frame", "<script></script>", "", 0.0f, 0,
         "0:10?492W10? 28:512W 29:2W508K2W 30:2W107a1W1R78a1p320a2W 31:2W107a1W1R399a2W 32:2W107a1W400a2W "
         "485:2W107a1W79a1p320a2W 486:512W 509:2W107K1W2K398a2W 511:512W"},
        {"waiting", one, "", 1.9f, 110, "40:18s1R1w59e1p18e1s1w300s2W 35:19s1w59e1p18e1s1w300s2W 41:400s2W"},
        {"running", one, "", 2.0f, 110, "40:19s1R59e1p18e1s1w300s2W 35:19s1w59r1W18r1s1w300s2W"},
        {"over", one, "", 10.0f, 110, "35:19s1w59e1p18e1s1w300s2W"},
        {"clipped", one, "", 29.0f, 110, "35:1w8e1w390s2W"},
        {"gone", one, "", 30.0f, 110, "35:400s2W"},
        {"disabled", off, "", 5.0f, 110, "40:19s1w29d1R29d1p18d1s1w300s2W"},
        {"unknown", "<script><effect name='other' start='2' end='60'/></script>", "", 5.0f, 110,
         "40:19s1w29u1R29u1p317u1s1w1s2W"},
        {"start picked", one, "Return", 5.0f, 110, "35:19k1R59E1p18E1k1w300k2W"},
        {"whole picked", one, "Return Right", 5.0f, 110, "35:19k1w59R1?18R1k1w300k2W"},
        {"end picked", one, "Return Right Right", 5.0f, 110, "35:19k1w59E1p18E1k1R300k2W"},
        {"disabled, whole picked", off, "Return Right", 5.0f, 110, "40:19k1w59R1?18R1k1w300k2W"},
        {"disabled, edited", off, "Return", 5.0f, 110, "40:19k1R29d1R29d1p18d1k1w300k2W"},
        {"stripes", "<script><effect/><effect/><effect/></script>", "", 9.0f, 108,
         "45:1a1W79a1p9a1R310a2W 57:1b1W89b1R310b2W"},
        {"trigger", beat, "Right", 0.5f, 2,
         "42:107t1W4b1R14b79t302b2W 52:107t1W4b1R14b10t1f19t1W19t1W28t302b2W 53:107t1W400b2W"},
        {"trigger, selected", beat, "Right Down", 0.5f, 2, "52:107s1W4b1R14b10s1W19s1W19s1W28s302b2W"},
        {"firing picked", beat, "Right Down Return Right", 0.5f, 2, "52:107k1W4k1R14k10T1W19T1R19T1W28T302k2W"},
        {"firing at the left end", entryWith("<trigger start='5'/>"), "Right", 25.0f, 110, "52:199t1R148t52b2W"},
        {"curve", curve, "Right", 39.0f, 110,
         "53:9u1W99u291b2W 54:8u3W98u90a1R200a2W 57:47u18c44u90a1R200a2W "
         "65:1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z4u1z3u98a3W190a2W"},
        {"key picked", curve, "Right Down Return Right", 9.0f, 2,
         "53:107k1W199U1R98U102k2W 54:107k1W89U1R108U1R1C1R97U102k2W 80:107k1W79U1p218U102k2W "
         "88:107k1W89U1R208U102k2W 89:107k1W400k2W"},
        {"spline", curve, "Right", 9.0f, 2, "80:107u1W79u1p218u102a2W 88:107u1W89u1R208u102a2W 89:107u1W400a2W"},
        {"spline, selected", curve, "Right Down", 9.0f, 2, "80:107s1W79s1p218s102a2W"},
    };
    // clang-format on
    for (const View& view : views)
    {
        Stage stage(view.script);
        stage.keys(view.keys);
        if (std::string(view.name) == "trigger") stage.trigger(0).mFired = 1;
        stage.time(view.time, 8.0f);
        std::istringstream rows(view.rows);
        std::string text;
        for (int y; rows >> y;)
        {
            rows.ignore(1) >> text;
            EXPECT_EQ(row(stage, y, view.first), text) << view.name << ", row " << y;
        }
    }
}

TEST(HudView, entriesHaveNamesAndMarkers)
{
    Stage stage("<script><effect name='known' end='3'/><effect name='known' end='3'><trigger name='beat'/>"
                "<spline name='height' type='linear'><key/></spline></effect><effect name='other' end='30'/>"
                "<effect name='known' state='off' start='1' end='30'/></script>");
    stage.time(1.0f);
    stage.keys("Down Right");
    EXPECT_TRUE(hasText(stage.mHud, "known", 11, 29, 0xEEEEBB33));
    EXPECT_TRUE(hasText(stage.mHud, "-", 4, 42, 0xEEFFFFFF));
    EXPECT_TRUE(hasText(stage.mHud, "beat", 20, 53, white));
    EXPECT_TRUE(hasText(stage.mHud, "height", 20, 65, 0xEEFFFFFF) && hasText(stage.mHud, "linear", 25, 77, 0xFFAAAAAA));
    stage.keys("Left");
    EXPECT_TRUE(hasText(stage.mHud, "+", 4, 42, 0xEEFFFFFF));
    EXPECT_TRUE(hasText(stage.mHud, "other", 11, 53, 0xEEFFFFFF));
    EXPECT_TRUE(hasText(stage.mHud, "No Callback", 114, 53, 0xCCFFFFFF));
    EXPECT_TRUE(hasText(stage.mHud, "known", 11, 65, 0xEE999999));
    EXPECT_TRUE(hasText(stage.mHud, "Inactive", 123, 65, 0xCCFFFFFF));
}

TEST(HudView, anyNumberOfFiringsIsMarkedAsIfOneByOne)
{
    const float infinite = std::numeric_limits<float>::infinity();
    const struct
    {
        float start;
        int repeat;
        float delay;
        int fired, part;
    } cases[] = {{1.0f, 100, 0.25f, 7, 9},    {-30.0f, 1000000, 0.001f, 40000, 3},
                 {60.0f, 300, -0.3f, 90, 95}, {-300.0f, 1000000, 0.01f, 30500, 31000},
                 {5.0f, 4, 0.0f, 2, 3},       {5.0f, 4, 0.0f, 4, 0},
                 {5.0f, 0, 1.0f, 0, 0},       {5.0f, -7, 1.0f, 0, 0},
                 {5.0f, 3, infinite, 0, 0},   {infinite, 3, 1.0f, 0, 0}};
    for (const auto& test : cases)
    {
        Stage stage(entryWith("<trigger/>"));
        Script::Trigger& trigger = stage.trigger(0);
        trigger.mStart = test.start;
        trigger.mRepeat = test.repeat;
        trigger.mDelay = test.delay;
        trigger.mFired = test.fired;
        stage.keys("Right Down Return");
        stage.mHud.mCurrentPart = test.part;
        stage.mHud.redraw();

        std::map<int, std::uint32_t> expected;
        for (int k = 0; k < test.repeat; ++k)
        {
            const float t = test.start + static_cast<float>(k) * test.delay;
            const std::uint32_t colour = k == test.part ? red : k < test.fired ? 0xFF777777 : white;
            if (t > 0.0f && t < 40.0f) expected[110 + static_cast<int>(t * 398.0f / 40.0f)] = colour;
        }
        for (int x = 111; x < 508; ++x) // the clock stands at 110
            EXPECT_EQ(pixel(stage.mHud, x, 45), expected.count(x) ? expected[x] : 0xEE002200)
                << x << " delay " << test.delay;
    }
    // The most there can be, far too many for one by one.
    Stage stage(entryWith("<trigger repeat='2147483647' delay='0.000001'/>"));
    stage.keys("Right Down");
    EXPECT_EQ(pixel(stage.mHud, 300, 45), white);
}

TEST(HudView, steepCurvesHaveNoGapsAndStayInTheList)
{
    Stage stage(entryWith("<spline type='square'><key time='0' value='-1'/><key time='20' value='1'/></spline>"));
    stage.keys("Right");
    for (int row = 43; row <= 86; ++row)
        EXPECT_NE(pixel(stage.mHud, 310, row) & 0x00FFFF, 0u) << row; // the first column past 20 s
    EXPECT_EQ(pixel(stage.mHud, 311, 60), 0xCC550000u);

    // A scale of 0 makes the largest value 1 row unit; an offset then throws the curve out of its row.
    stage.spline(0).mValueScale = 0.0f;
    for (const float offset : {1e30f, -1e30f, std::numeric_limits<float>::infinity(), std::nanf("")})
    {
        stage.spline(0).mValueOffset = offset;
        stage.mHud.redraw();
        EXPECT_EQ(pixel(stage.mHud, 300, 60), 0xCC550000u);
        EXPECT_EQ(pixel(stage.mHud, 300, 29), 0xFF000000u);
        EXPECT_EQ(pixel(stage.mHud, 300, 486), white);
    }
}

TEST(HudView, theStatusBoxTellsTheSelectedRow)
{
    Stage stage(entryWith("<trigger start='1.5' value='ab'/><trigger start='1' repeat='4' delay='0.5' value='cd'/>"
                          "<spline type='linear' valuescale='2'><key value='-1'/><key time='10' value='3'/></spline>",
                          "start='2' end='10'"));
    stage.time(7.0f);
    const struct
    {
        const char* keys;
        std::uint32_t background;
        const char* texts[5]; // two lines in the first two columns, one in the third
    } cases[] = {
        {"", 0xCC4477CC, {"start: 2.000", "end: 10.000", "triggers: 2", "splines: 1", ""}},
        {"Right Down", 0xCC003F00, {"start: 1.500", "", "", "", "value: ab"}},
        {"Down Return Right Right",
         0xCC003F00,
         {"start: 1.000", "current: 2.00", "repeat: 4", "delay: 0.50", "value: cd"}},
        // 5 s in: half way from -2 to 6
        {"Return Down", 0xCC550000, {"keys: 2", "current: 2.000", "max: 6.000", "min: -2.000", ""}},
        {"Return Right", 0xCC550000, {"keys: 2", "current: 2.000", "max: 6.000", "min: -2.000", "current key: 6.00"}},
    };
    for (const auto& test : cases)
    {
        stage.keys(test.keys);
        EXPECT_EQ(pixel(stage.mHud, 500, 508), test.background) << test.keys;
        for (int i = 0; i < 5; ++i)
        {
            const int x = 120 + 100 * (i / 2), y = 486 + 10 * (i % 2);
            const std::uint32_t colour = i == 4 && test.background == 0xCC003F00 ? 0xFFFFFF00 : white;
            EXPECT_TRUE(hasText(stage.mHud, test.texts[i], x, y, colour)) << test.texts[i];
            const std::uint32_t* line = &stage.mHud.mData[(y + 5) * 512 + x];
            EXPECT_TRUE(*test.texts[i] || std::count(line, line + 60, test.background) == 60) << test.keys;
        }
    }
    stage.trigger(0).mValue.assign(100000, 'w');
    stage.keys("Return Up Up");
    EXPECT_EQ(pixel(stage.mHud, 508, 495), 0xCC333344u); // a long value ends with the box
}

TEST(HudView, clockAndStartStandOnTheAxis)
{
    Stage stage("<script></script>");
    stage.time(125.5f, 110.0f, 59.99f);
    EXPECT_TRUE(hasText(stage.mHud, "time : 02:05.500", 15, 486, white));
    EXPECT_TRUE(hasText(stage.mHud, "fps : 59.99", 19, 496, white));
    EXPECT_EQ(row(stage, 30, 110), "44a1p154a1R200a2W"); // 4.5 and 20 s into the window
    stage.time(3.0f, 43.0f);
    EXPECT_EQ(row(stage, 30, 110), "29a1R370a2W"); // the start is past the window

    // The zoom moves the clock away until the next time event: past the axis it has no line, least of all on the frame.
    stage.time(15.1f);
    stage.keys("Plus Plus Plus Plus Plus");
    EXPECT_EQ(row(stage, 31, 110), "400a2W");
}

TEST(HudView, scrollsToTheSelectedRow)
{
    std::string script;
    for (int i = 0; i < 60; ++i) script += "<effect name='known' end='5'><trigger/><spline><key/></spline></effect>";
    Stage stage("<script>" + script + "</script>");
    stage.mHud.mDirty = false;
    for (int i = 0; i < 40; ++i) stage.keys("Down");
    EXPECT_TRUE(stage.mHud.mDirty);
    EXPECT_EQ(stage.mHud.mScroll, 41 * 12 - 456);
    EXPECT_TRUE(hasText(stage.mHud, "known", 11, 30 + 40 * 12 - 36 - 1, 0xEEEEBB33));
    stage.keys("Right Down");
    EXPECT_EQ(stage.mHud.mScroll, 42 * 12 - 456);
    stage.keys("Down");
    EXPECT_EQ(stage.mHud.mScroll, 42 * 12 + 48 - 456);
    for (int i = 0; i < 41; ++i) stage.keys("Up");
    EXPECT_EQ(stage.mHud.mCurrentEffect, 1);
    EXPECT_EQ(stage.mHud.mScroll, 12);
}
