#include "tw_hudfixture.h"

#include <cmath>
#include <initializer_list>
#include <limits>
#include <map>
#include <string>

using namespace HudTest;

namespace
{

// The window shows 40 seconds on 398 columns from 110 on; so 10 seconds are 99.5 columns. Row i stands at 30 + 12 i.
const char* const oneEntry = "<script><effect name='known' start='2' end='10'/></script>";

std::string entryWith(const std::string& children, const char* times = "start='0' end='40'")
{
    return std::string("<script><effect name='known' ") + times + ">" + children + "</effect></script>";
}

struct Point
{
    int x, y;
    std::uint32_t colour;
};

void expectPixels(const Stage& stage, std::initializer_list<Point> points)
{
    for (const Point& point : points)
        EXPECT_EQ(pixel(stage.mHud, point.x, point.y), point.colour) << "at " << point.x << ", " << point.y;
}

} // namespace

TEST(HudView, standsInAFrameWithTheLogo)
{
    Stage stage("<script></script>");
    expectPixels(stage, {{0, 0, 0},
                         {0, 10, white},
                         {511, 511, white},
                         {40, 2, 0xFF000000},
                         {5, 28, white},
                         {5, 29, 0xFF000000},
                         {5, 486, white},
                         {109, 509, white},
                         {300, 300, 0xCC333344},
                         {300, 505, 0xCC333344},
                         {20, 508, 0xFF000000}});

    const AM::Image logo = stage.mArchive.loadImage("tidewheel_logo.png", -1, false);
    const unsigned char* data = logo->getData();
    const int left = 256 - logo->getWidth() / 2;
    for (int y = 0; y < logo->getHeight(); ++y)
        for (int x = 0; x < logo->getWidth(); ++x, data += 4)
            ASSERT_EQ(pixel(stage.mHud, left + x, 2 + y),
                      0xFF000000u | static_cast<unsigned>(data[2] << 16 | data[1] << 8 | data[0]));
}

TEST(HudView, anEntrysBarTellsItsState)
{
    const struct
    {
        const char* name;
        const char* effect;
        bool enabled;
        float time;
        const char* edit;
        std::uint32_t bar, inner, left, right;
    } cases[] = {
        {"waiting", "known", true, 1.9f, "", 0xCC4477CC, 0xCC4477CC, 0xCCFFFFFF, 0xCCFFFFFF},
        {"running", "known", true, 2.0f, "", 0xCC4477CC, 0xCC99BBFF, 0xCCFFFFFF, 0xCCFFFFFF},
        {"over", "known", true, 10.0f, "", 0xCC4477CC, 0xCC4477CC, 0xCCFFFFFF, 0xCCFFFFFF},
        {"disabled", "known", false, 5.0f, "", 0xCC000000, 0xCC000000, 0xCCFFFFFF, 0xCCFFFFFF},
        {"unknown", "other", true, 5.0f, "", 0xCC550000, 0xCC550000, 0xCCFFFFFF, 0xCCFFFFFF},
        {"start picked", "known", true, 5.0f, "Return", 0xEE002277, 0xEE002277, red, 0xCCFFFFFF},
        {"whole picked", "known", true, 5.0f, "Return Right", red, red, 0xCCFFFFFF, 0xCCFFFFFF},
        {"end picked", "known", true, 5.0f, "Return Right Right", 0xEE002277, 0xEE002277, 0xCCFFFFFF, red},
        {"disabled, picked", "known", false, 5.0f, "Return Right", red, red, 0xCCFFFFFF, 0xCCFFFFFF},
        {"disabled, edited", "known", false, 5.0f, "Return", 0xCC000000, 0xCC000000, red, 0xCCFFFFFF},
    };
    for (const auto& test : cases)
    {
        Stage stage(oneEntry);
        stage.effect(0).mName = test.effect;
        stage.effect(0).mEnabled = test.enabled;
        stage.keys(test.edit);
        stage.time(test.time);
        EXPECT_EQ(pixel(stage.mHud, 205, 32), test.bar) << test.name; // beside the text in the bar
        EXPECT_EQ(pixel(stage.mHud, 205, 35), test.inner) << test.name;
        EXPECT_EQ(pixel(stage.mHud, 129, 32), test.left) << test.name;  // 2 s: 19.9 columns
        EXPECT_EQ(pixel(stage.mHud, 209, 38), test.right) << test.name; // 10 s: 99.5 columns
        EXPECT_EQ(pixel(stage.mHud, 208, 35), *test.edit ? 0xEE000000 : 0xEE004466) << test.name;
        EXPECT_EQ(pixel(stage.mHud, 205, 30), pixel(stage.mHud, 208, 35)) << test.name;
    }
}

TEST(HudView, entriesHaveNamesMarkersAndStripes)
{
    Stage stage("<script><effect name='known' end='3'/><effect name='known' end='3'><trigger/></effect>"
                "<effect name='other' end='30'/><effect name='known' state='off' start='1' end='30'/>"
                "<effect name='known' start='50' end='60'/></script>");
    stage.time(1.0f);
    EXPECT_TRUE(hasText(stage.mHud, "known", 11, 29, 0xEEEEBB33));
    EXPECT_TRUE(hasText(stage.mHud, "+", 4, 42, 0xEEFFFFFF));
    EXPECT_TRUE(hasText(stage.mHud, "other", 11, 53, 0xEEFFFFFF));
    EXPECT_TRUE(hasText(stage.mHud, "No Callback", 114, 53, 0xCCFFFFFF));
    EXPECT_TRUE(hasText(stage.mHud, "known", 11, 65, 0xEE999999));
    EXPECT_TRUE(hasText(stage.mHud, "Inactive", 123, 65, 0xCCFFFFFF));
    EXPECT_TRUE(hasText(stage.mHud, "known", 11, 77, 0xEEFFFFFF));
    expectPixels(stage, {{400, 43, 0xCC333344}, {450, 55, 0xCC383849}});
    for (int x = 110; x < 508; ++x) EXPECT_TRUE(x == 119 || pixel(stage.mHud, x, 83) == 0xCC383849u) << x; // no bar

    stage.keys("Down Right");
    EXPECT_TRUE(hasText(stage.mHud, "-", 4, 42, 0xEEFFFFFF));
    EXPECT_TRUE(hasText(stage.mHud, "other", 11, 65, 0xEEFFFFFF));
}

TEST(HudView, aTriggersRowMarksItsFirings)
{
    Stage stage(entryWith("<trigger name='beat' start='1' repeat='3' delay='2'/>", "start='2' end='10'"));
    stage.keys("Right");
    stage.trigger(0).mFired = 1;
    stage.time(0.5f);
    EXPECT_TRUE(hasText(stage.mHud, "beat", 20, 41, white));
    expectPixels(stage, {{5, 45, 0xCC003F00}, {129, 42, 0xCC003F00}, {207, 52, 0xCC003F00}, {207, 53, 0xCC383849}});
    const int columns[] = {139, 159, 179}; // 3, 5 and 7 s
    for (int k = 0; k < 3; ++k)
        for (int row = 43; row < 53; ++row)
            EXPECT_EQ(pixel(stage.mHud, columns[k], row), k == 0 ? 0xFF777777 : white) << k;
    EXPECT_EQ(pixel(stage.mHud, 139, 42), 0xCC003F00u);

    stage.keys("Down Return Right Right");
    expectPixels(stage, {{columns[2], 43, red},
                         {columns[1], 43, white},
                         {5, 45, 0xEE000000},
                         {150, 45, 0xEE002200},
                         {300, 45, 0xEE000000}});

    stage.trigger(0).mStart = 3.0f; // 5 s, the left end of the window
    stage.time(25.0f);
    EXPECT_EQ(pixel(stage.mHud, 110, 45), 0xEE002200u);
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
    } cases[] = {{1.0f, 100, 0.25f, 7, 9},
                 {-30.0f, 1000000, 0.001f, 40000, 3},
                 {-300.0f, 1000000, 0.01f, 30500, 31000},
                 {60.0f, 300, -0.3f, 90, 95},
                 {5.0f, 4, 0.0f, 2, 3},
                 {5.0f, 4, 0.0f, 4, 0},
                 {1e9f, 1000, -1e6f, 0, 0},
                 {5.0f, 0, 1.0f, 0, 0},
                 {5.0f, -7, 1.0f, 0, 0},
                 {5.0f, 3, infinite, 0, 0},
                 {infinite, 3, 1.0f, 0, 0},
                 {20.0f, 1000000, 1e-30f, 0, 999999}};
    for (const auto& test : cases)
    {
        Stage stage(entryWith("<trigger/>"));
        Script::Trigger& trigger = stage.trigger(0);
        trigger.mStart = test.start;
        trigger.mRepeat = test.repeat;
        trigger.mDelay = test.delay;
        trigger.mFired = test.fired;
        stage.keys("Right Down");
        stage.keys("Return");
        stage.mHud.mCurrentPart = test.part;
        stage.mHud.redraw();

        std::map<int, std::uint32_t> expected;
        for (int k = 0; k < test.repeat; ++k)
        {
            const float t = 0.0f + test.start + static_cast<float>(k) * test.delay - 0.0f;
            if (t > 0.0f && t < 40.0f)
                expected[110 + static_cast<int>(t * 398.0f / 40.0f)] = k == test.part   ? red
                                                                       : k < test.fired ? 0xFF777777
                                                                                        : white;
        }
        for (int x = 111; x < 508; ++x) // the clock stands at 110
        {
            const auto mark = expected.find(x);
            EXPECT_EQ(pixel(stage.mHud, x, 45), mark == expected.end() ? 0xEE002200 : mark->second)
                << x << " delay " << test.delay;
        }
    }
    // The most there can be, far too many for one by one.
    Stage stage(entryWith("<trigger repeat='2147483647' delay='0.000001'/>"));
    stage.keys("Right Down");
    EXPECT_EQ(pixel(stage.mHud, 300, 45), white);
}

TEST(HudView, aSplinesRowShowsTheCurve)
{
    Stage stage(entryWith("<spline name='height' type='linear'><key time='0' value='0'/><key time='20' value='0.5'/>"
                          "<key time='40' value='0'/></spline>"));
    stage.keys("Right");
    const int y = 42;
    EXPECT_TRUE(hasText(stage.mHud, "height", 20, y - 1, 0xEEFFFFFF));
    EXPECT_TRUE(hasText(stage.mHud, "linear", 25, y + 11, 0xFFAAAAAA));
    expectPixels(stage, {{5, y + 47, 0xCC550000}, {400, y + 46, 0xCC550000}, {400, y + 47, 0xCC333344}});
    expectPixels(stage, {{400, y + 23, 0xFFFF2222}, {401, y + 23, 0xCC550000}}); // zero line, every fifth column
    expectPixels(stage, {{210, y + 18, 0xEE776666}, {210, y + 17, 0xCC550000}}); // 10.05 s: 5.5 rows up
    expectPixels(stage, {{308, y + 12, white},
                         {309, y + 12, white},
                         {310, y + 12, white},
                         {309, y + 11, white},
                         {309, y + 13, white}});      // the key at 20 s, 11 rows up
    expectPixels(stage, {{507, y + 23, 0xEE776666}}); // the last key lies at the end of the window, and so past it

    stage.keys("Down Return Right");
    expectPixels(stage,
                 {{309, y + 12, 0xFFFF6666}, {309, y + 11, red}, {130, y + 40, 0xEE440000}, {5, y + 40, 0xEE000000}});
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
    const auto status = [&](const char* text, int x, int y) { return hasText(stage.mHud, text, x, y, white); };
    stage.time(7.0f);
    EXPECT_EQ(pixel(stage.mHud, 500, 500), 0xCC4477CCu);
    EXPECT_TRUE(status("start: 2.000", 120, 486) && status("end: 10.000", 120, 496));
    EXPECT_TRUE(status("triggers: 2", 220, 486) && status("splines: 1", 220, 496));

    stage.keys("Right Down");
    EXPECT_EQ(pixel(stage.mHud, 500, 500), 0xCC003F00u);
    EXPECT_TRUE(status("start: 1.500", 120, 486));
    EXPECT_EQ(pixel(stage.mHud, 220, 490), 0xCC003F00u); // no repeat
    EXPECT_TRUE(hasText(stage.mHud, "value: ab", 320, 486, 0xFFFFFF00));

    stage.keys("Down Return Right Right");
    EXPECT_TRUE(status("start: 1.000", 120, 486) && status("current: 2.00", 120, 496));
    EXPECT_TRUE(status("repeat: 4", 220, 486) && status("delay: 0.50", 220, 496));

    stage.keys("Return Down");
    EXPECT_EQ(pixel(stage.mHud, 500, 500), 0xCC550000u);
    EXPECT_TRUE(status("keys: 2", 120, 486) && status("current: 2.000", 120, 496)); // 5 s in: half way from -2 to 6
    EXPECT_TRUE(status("max: 6.000", 220, 486) && status("min: -2.000", 220, 496));
    EXPECT_EQ(pixel(stage.mHud, 320, 490), 0xCC550000u);
    stage.keys("Return Right");
    EXPECT_TRUE(status("current key: 6.00", 320, 486));

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
    for (int row = 30; row < 486; ++row)
    {
        EXPECT_EQ(pixel(stage.mHud, 309, row), row % 3 == 2 ? 0xCC333344 : red);        // 20 s into the window
        EXPECT_EQ(pixel(stage.mHud, 154, row), row % 5 == 0 ? 0xFF7777FF : 0xCC333344); // 4.5 s into it
    }
    stage.time(3.0f, 43.0f); // near the start the clock runs in from the left; the start line is past the window
    expectPixels(stage, {{139, 30, red}, {508, 30, 0xCC333344}});

    // The zoom moves the clock away until the next time event: past the axis it has no line, least of all on the frame.
    stage.time(15.1f);
    stage.keys("Plus Plus Plus Plus Plus");
    for (int x = 508; x < 512; ++x) EXPECT_EQ(pixel(stage.mHud, x, 30), x < 510 ? 0xCC333344 : white) << x;
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
