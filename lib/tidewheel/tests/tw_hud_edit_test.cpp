#include "tw_hudfixture.h"

#include <cmath>
#include <random>
#include <vector>

using namespace HudTest;

namespace
{

const float step = 40.0f / 398.0f; // a pixel of the axis, in seconds

const char* const threeEntries = "<script><effect name='a' start='1' end='2'><trigger name='t0'/><trigger name='t1'/>"
                                 "<spline name='s0' type='linear'><key/><key time='1'/></spline></effect>"
                                 "<effect name='b' start='3' end='4'/><effect name='c' start='5' end='6'/></script>";
const char* const oneSpline = "<script><effect name='a' end='40'><spline type='linear'><key/><key time='4' value='2'/>"
                              "<key time='10' value='8'/></spline></effect></script>";

std::string names(const Stage& stage)
{
    std::string text;
    for (const Script::Effect* effect : stage.mEngine.mEffects) text += effect->mName + " ";
    return text;
}

void expectSelected(const Stage& stage, int effect, int row)
{
    EXPECT_EQ(stage.mHud.mCurrentEffect, effect);
    EXPECT_EQ(stage.mHud.mCurrentRow, row);
}

void type(Stage& stage, const std::string& text)
{
    for (const char character : text) stage.press(character);
}

} // namespace

TEST(HudBrowsing, walksThroughEntriesAndTheRowsOfExpandedOnes)
{
    Stage stage(threeEntries);
    stage.press({Up});
    expectSelected(stage, 0, 0);
    stage.press({Down, Up});
    expectSelected(stage, 0, 0);
    stage.press({Right, Down, Down, Down});
    expectSelected(stage, 0, 3);
    stage.press({Down, Down, Down});
    expectSelected(stage, 2, 0);
    stage.press({Up, Up});
    expectSelected(stage, 0, 3); // the last row of the expanded entry
    stage.press(Left);
    expectSelected(stage, 0, 0);
    EXPECT_FALSE(stage.mHud.mEffectStatus[0].mExpanded);
    stage.press({Down, Up});
    expectSelected(stage, 0, 0);
}

TEST(HudBrowsing, swapsEntriesAndGoesWithThem)
{
    Stage stage(threeEntries);
    stage.ctrl(Up);
    EXPECT_EQ(names(stage), "a b c ");
    stage.ctrl(Down);
    EXPECT_EQ(names(stage), "b a c ");
    expectSelected(stage, 1, 0);
    stage.ctrl(Down);
    stage.ctrl(Down);
    EXPECT_EQ(names(stage), "b c a ");
    stage.ctrl(Up);
    EXPECT_EQ(names(stage), "b a c ");
    expectSelected(stage, 1, 0);
    stage.press({Right, Down});
    stage.ctrl(Up); // on a trigger row it only moves
    EXPECT_EQ(names(stage), "b a c ");
    expectSelected(stage, 1, 0);
    stage.ctrl(Up); // the place stays expanded, not the entry
    EXPECT_EQ(names(stage), "a b c ");
    EXPECT_FALSE(stage.mHud.mEffectStatus[0].mExpanded);
    EXPECT_TRUE(stage.mHud.mEffectStatus[1].mExpanded);
}

TEST(HudBrowsing, makesNewThings)
{
    Stage stage(threeEntries);
    stage.time(30.0f); // the window starts at 10
    stage.press({Right, Down, Down});
    stage.ctrl(F3);
    EXPECT_EQ(stage.trigger(0, 1).mName, "new");
    EXPECT_EQ(stage.trigger(0, 1).mStart, 29.0f);
    EXPECT_EQ(stage.effect(0).mTriggers.size(), 3u);
    stage.time(0.5f);
    stage.press({Down, Down});
    expectSelected(stage, 0, 4);
    stage.ctrl(F3); // from a spline row: ahead of the last trigger, and not before the entry
    EXPECT_EQ(stage.trigger(0, 2).mName, "new");
    EXPECT_EQ(stage.trigger(0, 2).mStart, 0.0f);
    EXPECT_EQ(stage.trigger(0, 3).mName, "t1");
    stage.press(Down);
    stage.ctrl(F4);
    const Script::Spline& spline = stage.spline(0, 0);
    EXPECT_EQ(spline.mName, "new");
    EXPECT_EQ(spline.mType, "smooth");
    EXPECT_EQ(spline.mKeys.at(1)->time, 0.5f);
    EXPECT_EQ(spline.mKeys.at(2)->time, 1.0f);
    EXPECT_EQ(spline.mMax, 1.0f);
    EXPECT_EQ(stage.spline(0, 1).mName, "s0");

    stage.time(30.0f);
    stage.ctrl(Insert);
    expectSelected(stage, 0, 0);
    EXPECT_EQ(names(stage), "new a b c ");
    EXPECT_EQ(stage.effect(0).mStart, 30.0f);
    EXPECT_EQ(stage.effect(0).mEnd, 40.0f);
    EXPECT_FALSE(stage.effect(0).mEnabled);
    EXPECT_FALSE(stage.mHud.mEffectStatus[0].mExpanded);
    EXPECT_TRUE(stage.mHud.mEffectStatus[1].mExpanded);
    stage.ctrl('o');
    EXPECT_TRUE(stage.effect(0).mEnabled);
    stage.ctrl(F4); // the first of its kind
    EXPECT_TRUE(stage.mHud.mEffectStatus[0].mExpanded);
    EXPECT_EQ(stage.spline(0, 0).mKeys.at(1)->time, 5.0f);
}

TEST(HudBrowsing, deletesKeysBeforeTheirSplineAndWhatIsSelected)
{
    Stage stage(threeEntries);
    stage.press({Right, Down, Down, Down});
    for (int i = 0; i < 2; ++i) stage.spline(0, 0).mKeys.push_back(new Script::Spline::Key{5.0f, 7.0f, 0.0f});
    stage.ctrl(Delete);
    EXPECT_EQ(stage.spline(0, 0).mKeys.size(), 3u);
    EXPECT_EQ(stage.spline(0, 0).mMax, 7.0f);
    stage.ctrl(Delete);
    EXPECT_TRUE(stage.effect(0).mSplines.empty());
    expectSelected(stage, 0, 2);
    stage.press(Up);
    stage.ctrl(Delete);
    EXPECT_EQ(stage.trigger(0, 0).mName, "t1");
    expectSelected(stage, 0, 1);
    stage.ctrl(Delete);
    expectSelected(stage, 0, 0);

    stage.press({Down, Down});
    stage.ctrl(Delete);
    EXPECT_EQ(names(stage), "a b ");
    expectSelected(stage, 1, 0);
    stage.press(Up);
    stage.ctrl(Delete);
    stage.ctrl(Delete);
    stage.ctrl(Delete);
    EXPECT_EQ(names(stage), "");
    expectSelected(stage, 0, 0);
    // Nothing is left to work on, but a new entry.
    for (const int key : {int(Return), int(Up), int(Down), int(Left), int(Right), int(Insert)}) stage.press(key);
    for (const int key : {int(F3), int(F4), int('o'), int('n'), int('t'), int('v'), int(Up), int(Down)}) stage.ctrl(key);
    EXPECT_FALSE(stage.mHud.mEditMode);
    EXPECT_EQ(stage.mHud.mTextField, nullptr);
    stage.ctrl(F2);
    EXPECT_EQ(names(stage), "new ");
}

TEST(HudBrowsing, splinesGoThroughTheirTypes)
{
    Stage stage(oneSpline);
    stage.ctrl('t');
    stage.press({Right, Down});
    for (const char* expected : {"bezier", "smooth", "square", "linear"})
    {
        stage.ctrl('t');
        EXPECT_EQ(stage.spline(0, 0).mType, expected);
    }
    stage.spline(0, 0).mType = "other";
    stage.ctrl('t');
    EXPECT_EQ(stage.spline(0, 0).mType, "other");
}

TEST(HudTextField, takesWhatIsTypedUntilReturn)
{
    Stage stage(threeEntries);
    stage.ctrl('v'); // not on an entry
    EXPECT_EQ(stage.mHud.mTextField, nullptr);
    stage.ctrl('n');
    EXPECT_EQ(stage.effect(0).mName, "a|");
    type(stage, "b c");
    stage.press({Backspace, 'X', 91, 96, 123, Up, F2, Delete, Left});
    EXPECT_EQ(stage.effect(0).mName, "ab X|");
    expectSelected(stage, 0, 0);
    stage.press({Backspace, Backspace, Backspace, Backspace, Backspace, Backspace});
    EXPECT_EQ(stage.effect(0).mName, "|");
    stage.press(300); // Num Lock: its low byte is a comma
    stage.press('"'); // scripts cannot hold it
    stage.press(Return);
    EXPECT_EQ(stage.effect(0).mName, ",'");
    EXPECT_EQ(stage.mHud.mTextField, nullptr);
    EXPECT_FALSE(stage.mHud.mEditMode);

    stage.press({Right, Down});
    stage.ctrl('v');
    type(stage, "255");
    stage.press(Return);
    EXPECT_EQ(stage.trigger(0, 0).mValue, "255");
    stage.press({Down, Down});
    stage.ctrl('n');
    stage.press(Return);
    EXPECT_EQ(stage.spline(0, 0).mName, "s0");
}

TEST(HudEditing, movesTheEndsOfAnEntry)
{
    Stage stage(threeEntries);
    Script::Effect& effect = stage.effect(0);
    stage.press(Return);
    stage.ctrl(Right);
    EXPECT_EQ(effect.mStart, 1.0f + step);
    EXPECT_EQ(effect.mEnd, 2.0f);
    for (int i = 0; i < 30; ++i) stage.ctrl(Right);
    EXPECT_LE(effect.mStart, 2.0f);
    EXPECT_GT(effect.mStart, 2.0f - step);

    effect.mStart = 1.5f * step;
    effect.mEnd = 1.0f;
    stage.press({Right, Left, Right}); // the whole
    stage.ctrl(Right);
    EXPECT_EQ(effect.mEnd, 1.0f + step);
    for (int i = 0; i < 3; ++i) stage.ctrl(Left);
    EXPECT_EQ(effect.mStart, 0.0f);
    EXPECT_NEAR(effect.mEnd, 1.0f - 2 * step, 1e-6f); // it shrinks at the show's start

    stage.press({Right, Right, Insert, Delete, Up});
    EXPECT_EQ(stage.mHud.mCurrentPart, 2);
    for (int i = 0; i < 20; ++i) stage.ctrl(Left);
    EXPECT_GE(effect.mEnd, 0.0f);
    EXPECT_LT(effect.mEnd, step);
    EXPECT_EQ(effect.mStart, 0.0f);
    expectSelected(stage, 0, 0);
    stage.press(Return);
    EXPECT_EQ(stage.mHud.mCurrentPart, 0);
}

TEST(HudEditing, repeatsATriggerAndMovesItsFirings)
{
    Stage stage(threeEntries);
    Script::Trigger& trigger = stage.trigger(0, 0);
    stage.press({Right, Down, Return, Delete, Right});
    EXPECT_EQ(trigger.mRepeat, 1);
    EXPECT_EQ(stage.mHud.mCurrentPart, 0);
    stage.ctrl(Right);
    EXPECT_EQ(trigger.mStart, step);
    stage.ctrl(Left);
    stage.ctrl(Left);
    EXPECT_EQ(trigger.mStart, 0.0f);

    stage.press(Insert);
    EXPECT_EQ(trigger.mDelay, 5.0f * step);
    stage.press({Insert, Right, Right, Right});
    EXPECT_EQ(trigger.mRepeat, 3);
    EXPECT_EQ(stage.mHud.mCurrentPart, 2);
    stage.ctrl(Right);
    EXPECT_EQ(trigger.mDelay, 5.0f * step + step / 2.0f);
    for (int i = 0; i < 20; ++i) stage.ctrl(Left);
    EXPECT_EQ(trigger.mDelay, step / 2.0f); // never all at once
    stage.press(Delete);
    EXPECT_EQ(trigger.mRepeat, 2);
    EXPECT_EQ(stage.mHud.mCurrentPart, 1);

    trigger.mRepeat = 2147483647;
    stage.press(Insert);
    EXPECT_EQ(trigger.mRepeat, 2147483647);
    trigger.mRepeat = 0;
    stage.press(Right);
    EXPECT_EQ(stage.mHud.mCurrentPart, 0);
}

TEST(HudEditing, movesKeysUpToTheirNeighbours)
{
    Stage stage(oneSpline);
    Script::Spline& spline = stage.spline(0, 0);
    spline.mTimeScale = 2.0f;
    spline.mTimeOffset = 1.0f;
    spline.mValueScale = 4.0f;
    stage.press({Right, Down, Return, Right});
    stage.ctrl(Up);
    stage.ctrl(Up);
    stage.ctrl(Down);
    EXPECT_EQ(stage.key(1).value, 2.25f);
    stage.ctrl(Right);
    EXPECT_EQ(stage.key(1).time, 4.0f + step / 2.0f);

    stage.key(1).time = 10.0f;
    stage.ctrl(Right);
    EXPECT_NEAR(stage.key(1).time, 10.0f, 1e-5f);
    EXPECT_EQ(stage.mHud.mCurrentPart, 2); // the pick jumps over
    stage.ctrl(Right);
    EXPECT_EQ(stage.key(2).time, 10.0f + step / 2.0f); // nothing behind the last
    stage.key(2).time = 10.0f;
    stage.ctrl(Left);
    EXPECT_EQ(stage.mHud.mCurrentPart, 1);
    stage.press(Left);
    for (int i = 0; i < 20; ++i) stage.ctrl(Left);
    EXPECT_EQ(stage.key(0).time, -0.5f); // 0 on the axis
    EXPECT_EQ(stage.mHud.mCurrentPart, 0);
    stage.key(1).value = 100.0f;
    stage.press(Left);
    EXPECT_EQ(spline.mMax, 100.0f); // worked out again after every key
}

TEST(HudEditing, insertsAndDeletesKeys)
{
    Stage stage(oneSpline);
    Script::Spline& spline = stage.spline(0, 0);
    stage.press({Right, Down, Return, Right, Insert});
    EXPECT_EQ(stage.mHud.mCurrentPart, 2);
    EXPECT_EQ(stage.key(2).time, 7.0f);
    EXPECT_EQ(stage.key(2).value, 5.0f);
    stage.press({Right, Right, Insert});
    EXPECT_EQ(stage.mHud.mCurrentPart, 4);
    EXPECT_EQ(stage.key(4).time, 10.0f + 5.0f * step);
    EXPECT_EQ(stage.key(4).value, 8.0f);
    stage.press({Delete, Delete, Delete, Delete, Delete});
    EXPECT_EQ(spline.mKeys.size(), 2u);
    EXPECT_EQ(stage.key(1).time, 4.0f);
    EXPECT_EQ(stage.mHud.mCurrentPart, 1);
    stage.press({Left, Insert, Left, Delete, Delete});
    EXPECT_EQ(stage.key(0).time, 2.0f);
    EXPECT_EQ(stage.mHud.mCurrentPart, 0);
}

TEST(HudTime, centresTheWindowAndZoomsByFiveSeconds)
{
    Stage stage(threeEntries);
    stage.time(100.0f, 7.0f, 30.0f);
    EXPECT_EQ(stage.mHud.mWindowStart, 80.0f);
    EXPECT_EQ(stage.mHud.mCursor, 20.0f);
    EXPECT_EQ(stage.mHud.mStartTime, 7.0f);
    stage.time(5.0f);
    EXPECT_EQ(stage.mHud.mWindowStart, 0.0f);
    EXPECT_EQ(stage.mHud.mCursor, 5.0f);
    stage.press(Minus);
    EXPECT_EQ(stage.mHud.mWindowLength, 45.0f);
    stage.press(Return);
    for (int i = 0; i < 20; ++i) stage.press(Plus);
    EXPECT_EQ(stage.mHud.mWindowLength, 5.0f);
    EXPECT_EQ(stage.mHud.getTimePerPixel(), 5.0f / 398.0f);
}

TEST(HudSaving, writesWhatWasEdited)
{
    Stage stage("<script><effect name='known' start='1' end='2'/></script>");
    stage.mHud.mWindowLength = 398.0f; // a second a pixel
    stage.time(12.0f);
    stage.ctrl(F2);
    stage.ctrl('n');
    type(stage, "er");
    stage.press(Return);
    stage.ctrl(F3);
    stage.press({Down, Return, Insert, Return});
    stage.ctrl('v');
    type(stage, "000000255");
    stage.press({Return, Up});
    stage.ctrl('o');
    stage.ctrl(F4);
    stage.press({Down, Down, Return, Right});
    stage.ctrl(Up);
    stage.ctrl(Right);
    EXPECT_EQ(stage.saved(), "<script>\n"
                             "\t<effect name=\"newer\" start=\"12\" end=\"22\">\n"
                             "\t\t<trigger start=\"0\" name=\"new\" value=\"000000255\" repeat=\"2\" delay=\"5\"/>\n"
                             "\t\t<spline name=\"new\" type=\"smooth\" timescale=\"1\" timeoffset=\"0\" valuescale=\"1\""
                             " valueoffset=\"0\">\n"
                             "\t\t\t<key time=\"0\" value=\"0\"/>\n"
                             "\t\t\t<key time=\"6\" value=\"2\"/>\n"
                             "\t\t\t<key time=\"10\" value=\"0\"/>\n"
                             "\t\t</spline>\n"
                             "\t</effect>\n"
                             "\t<effect name=\"known\" start=\"1\" end=\"2\"/>\n"
                             "</script>\n");
}

// Whatever is pressed, on whatever script, the editor stands on something and what it saves is read again.
TEST(HudSaving, noSequenceOfKeysBreaksTheTimeline)
{
    const std::string longName(3000, 'm');
    const std::string scripts[] = {
        "<script></script>",
        threeEntries,
        oneSpline,
        "<script><effect name='" + longName + "' start='9' end='3'><trigger name='" + longName + "' value='" + longName +
            "' repeat='1000000' delay='0.0001'/><trigger start='-inf' repeat='-3'/><trigger repeat='5' delay='nan'/>"
            "<spline timescale='0' valuescale='0'><key/><key time='1' value='1'/></spline>"
            "<spline name='" + longName + "' type='bezier' valuescale='1e38'><key time='nan' value='inf'/><key value='nan'/>"
            "<key value='-1e38'/></spline><spline type='linear' timeoffset='inf'><key/></spline></effect>"
            "<effect name='known' start='-inf' end='inf'><spline timescale='1e-40'><key value='5'/></spline></effect>"
            "<effect name='known' start='nan' end='nan'><trigger/><effect name='known'/></effect></script>"};
    const int keys[] = {Return, Return, Up, Up, Down, Down, Down, Left, Right, Right, Right, Insert, Insert, Delete,
                        F2, F3, F4, Plus, Minus, 'n', 'o', 't', 'v', Backspace, '"', '<', '|', 304};
    const float times[] = {0.0f, 3.0f, 33.0f, 1e9f, -50.0f, 3e38f, -INFINITY, NAN};
    std::mt19937 random(7);
    const auto pick = [&](std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(random); };
    for (const std::string& script : scripts)
    {
        Stage stage(script);
        std::vector<Tidewheel::Event> records(10);
        Tidewheel::Events events;
        events.events = records.data();
        for (int frame = 0; frame < 1500; ++frame)
        {
            events.count = static_cast<int>(pick(10)) + 1;
            for (Tidewheel::Event& event : records)
            {
                event = Tidewheel::Event();
                event.type = pick(12) == 0 ? Tidewheel::EVENT_TIME : Tidewheel::EVENT_KEYDOWN;
                event.time = times[pick(8)];
                event.key = keys[pick(sizeof(keys) / sizeof(keys[0]))];
                event.ctrl = pick(2) == 0;
            }
            stage.mHud.processEvents(events);

            ASSERT_EQ(stage.mHud.mEffectStatus.size(), stage.mEngine.mEffects.size());
            const int entries = static_cast<int>(stage.mEngine.mEffects.size());
            ASSERT_TRUE(stage.mHud.mCurrentEffect == 0 || stage.mHud.mCurrentEffect < entries);
            int rows = 0;
            if (entries > 0)
            {
                const Script::Effect& current = stage.effect(static_cast<std::size_t>(stage.mHud.mCurrentEffect));
                rows = static_cast<int>(current.mTriggers.size() + current.mSplines.size());
            }
            ASSERT_TRUE(stage.mHud.mCurrentRow >= 0 && stage.mHud.mCurrentRow <= rows);
            ASSERT_GE(stage.mHud.mCurrentPart, 0);
            if (frame % 100 != 0) continue;

            // The edges of the canvas are never painted over.
            for (int y = 29; y < 486; y += 76) ASSERT_EQ(pixel(stage.mHud, 511, y), white);
            ASSERT_EQ(pixel(stage.mHud, 300, 486), white);
            const std::string saved = stage.saved();
            Stage again(saved);
            ASSERT_EQ(again.mEngine.mEffects.size(), stage.mEngine.mEffects.size());
            // Reading lowers a repeat below 2 to one firing, so the text is stable from here on.
            ASSERT_EQ(again.saved(), saved);
        }
    }
}
