#include "tw_hudfixture.h"

#include <initializer_list>
#include <sstream>
#include <string>

using namespace HudTest;

namespace
{

const char* const threeEntries = "<script><effect name='a' start='1' end='9'><trigger name='t'/><trigger name='u'/>"
                                 "<spline name='s' type='linear'><key/><key time='4' value='2'/></spline></effect>"
                                 "<effect name='b' start='3' end='4'/><effect name='c' start='5' end='6'/></script>";
const char* const onlyNames = "<script><effect name='a'/><effect name='b'/><effect name='c'/></script>";

// The timeline in a line. A "-" stands ahead of expanded entries, a "!" behind those that are off.
std::string timeline(Stage& stage)
{
    std::ostringstream text;
    for (std::size_t i = 0; i < stage.mEngine.mEffects.size(); ++i)
    {
        const Script::Effect& effect = stage.effect(i);
        text << (stage.mHud.mEffectStatus.at(i).mExpanded ? "-" : "") << effect.mName << (effect.mEnabled ? "" : "!");
        if (effect.mEnd != 0.0f) text << " " << effect.mStart << ".." << effect.mEnd;
        for (const Script::Trigger* trigger : effect.mTriggers)
        {
            text << " [" << trigger->mName << " " << trigger->mStart;
            if (trigger->mRepeat != 1) text << " x" << trigger->mRepeat << " +" << trigger->mDelay;
            text << (trigger->mValue.empty() ? "]" : " = " + trigger->mValue + "]");
        }
        for (const Script::Spline* spline : effect.mSplines)
        {
            text << " <" << spline->mName << " " << spline->mType;
            for (const Script::Spline::Key* key : spline->mKeys) text << " " << key->time << ":" << key->value;
            text << ">";
        }
        text << "; ";
    }
    return text.str();
}

// Keys, and what they make of the timeline and of the selection: entry, row, part.
struct Step
{
    const char* keys;
    const char* timeline;
    const char* selection;
};

void follow(Stage& stage, std::initializer_list<Step> steps)
{
    for (const Step& step : steps)
    {
        stage.keys(step.keys);
        EXPECT_EQ(timeline(stage), step.timeline) << step.keys;
        std::ostringstream selection;
        selection << stage.mHud.mCurrentEffect << stage.mHud.mCurrentRow << stage.mHud.mCurrentPart;
        EXPECT_EQ(selection.str(), step.selection) << step.keys;
    }
}

// A second for each pixel of the axis.
void zoomToSeconds(Stage& stage)
{
    stage.mHud.mWindowLength = 398.0f;
}

std::string splineOf(const char* keys)
{
    return "<script><effect name='a' end='40'><spline type='linear'>" + std::string(keys) +
           "</spline></effect></script>";
}

} // namespace

TEST(HudBrowsing, swapsEntriesAndGoesWithThem)
{
    Stage stage(onlyNames);
    follow(stage, {{"^Up", "a; b; c; ", "000"},
                   {"^Down", "b; a; c; ", "100"},
                   {"^Down ^Down", "b; c; a; ", "200"},
                   {"^Up", "b; a; c; ", "100"},
                   {"Right ^Up", "a; -b; c; ", "000"},                 // the place stays expanded, not the entry
                   {"^F3 Down ^Down", "-a [new 0]; -b; c; ", "100"}}); // on a trigger row it only moves
}

TEST(HudBrowsing, makesNewThingsAtTheClock)
{
    Stage stage(threeEntries);
    stage.time(30.0f); // the window starts at 10
    follow(stage, {{"Right Down ^F3", "-a 1..9 [new 29] [t 0] [u 0] <s linear 0:0 4:2>; b 3..4; c 5..6; ", "010"}});
    stage.time(0.5f); // before the entry; from a spline row, ahead of the last trigger
    follow(stage,
           {{"Down Down Down ^F3", "-a 1..9 [new 29] [t 0] [new 0] [u 0] <s linear 0:0 4:2>; b 3..4; c 5..6; ", "040"},
            {"Down ^F4",
             "-a 1..9 [new 29] [t 0] [new 0] [u 0] <new smooth 0:0 4:1 8:0> <s linear 0:0 4:2>; "
             "b 3..4; c 5..6; ",
             "050"}});
    EXPECT_EQ(stage.spline(0).mMax, 1.0f);

    Stage empty("<script></script>");
    empty.time(30.0f);
    follow(empty, {{"Return Up Down Left Right Insert ^F3 ^F4 ^o ^n ^t ^v ^Delete ^Up ^Down", "", "000"},
                   {"^F2", "new! 30..40; ", "000"},
                   {"^o ^F4", "-new 30..40 <new smooth 0:0 5:1 10:0>; ", "000"},
                   {"^Insert", "new! 30..40; -new 30..40 <new smooth 0:0 5:1 10:0>; ", "000"}});
}

TEST(HudBrowsing, deletesKeysBeforeTheirSplineAndWhatIsSelected)
{
    Stage stage("<script><effect name='a'><trigger name='t'/><trigger name='u'/><spline name='s'><key value='1'/>"
                "<key time='1'/><key time='2'/><key time='3' value='9'/></spline></effect><effect name='b'/></script>");
    follow(stage, {{"Right Down Down Down ^Delete", "-a [t 0] [u 0] <s  0:1 1:0 2:0>; b; ", "030"}});
    EXPECT_EQ(stage.spline(0).mMax, 1.0f);
    follow(stage, {{"^Delete", "-a [t 0] [u 0]; b; ", "020"},
                   {"Up ^Delete", "-a [u 0]; b; ", "010"},
                   {"^Delete", "-a; b; ", "000"},
                   {"Down ^Delete", "-a; ", "000"},
                   {"^Delete ^Delete", "", "000"}});
}

TEST(HudBrowsing, walksThroughTheRowsOfExpandedEntriesAndSplineTypes)
{
    const std::string row = "a 1..9 [t 0] [u 0] <s ", rest = " 0:0 4:2>; b 3..4; c 5..6; ";
    const std::string closed = row + "linear" + rest, open = "-" + closed;
    Stage stage(threeEntries);
    follow(stage, {{"Up Down Up ^t", closed.c_str(), "000"},
                   {"Right Down Down Down", open.c_str(), "030"},
                   {"Down Down Down", open.c_str(), "200"},
                   {"Up Up", open.c_str(), "030"},
                   {"^t", ("-" + row + "bezier" + rest).c_str(), "030"},
                   {"^t ^t", ("-" + row + "square" + rest).c_str(), "030"},
                   {"^t Left", closed.c_str(), "000"},
                   {"Down Up", closed.c_str(), "000"}});
    stage.spline(0).mType = "other";
    stage.spline(0).mMax = 99.0f;
    stage.keys("Right Down Down Down ^t");
    EXPECT_EQ(stage.spline(0).mType, "other");
    EXPECT_GT(3.0f, stage.spline(0).mMax); // worked out again
}

TEST(HudTextField, takesWhatIsTypedUntilReturn)
{
    Stage stage(threeEntries);
    const std::string rest = " 1..9 [t 0] [u 0] <s linear 0:0 4:2>; b 3..4; c 5..6; ";
    follow(stage, {{"^v", ("a" + rest).c_str(), "000"}, // an entry has no value
                   {"^n", ("a|" + rest).c_str(), "000"},
                   {"b Blank c Backspace X [ Caret ` { Up F2 Delete Left ^o", ("ab Xo|" + rest).c_str(), "000"},
                   {"Backspace Backspace Backspace Backspace Backspace Backspace", ("|" + rest).c_str(), "000"},
                   {"NumLock Quote Return Up", (",\"" + rest).c_str(), "000"}, // 300 types the sign of its low byte
                   {"Right Down ^v 2 5 Return Down Down ^n Return",
                    "-,\" 1..9 [t 0 = 25] [u 0] <s linear 0:0 4:2>; b 3..4; c 5..6; ", "030"}});
    EXPECT_EQ(stage.mHud.mTextField, nullptr);
    EXPECT_FALSE(stage.mHud.mEditMode);
}

TEST(HudEditing, movesTheEndsOfAnEntry)
{
    Stage stage("<script><effect name='a' start='2' end='4'/></script>");
    zoomToSeconds(stage);
    follow(stage, {{"Return Up Insert Delete ^Right", "a 3..4; ", "000"},
                   {"^Right ^Right ^Right", "a 4..4; ", "000"}, // up to the end
                   {"Right ^Right", "a 4..5; ", "001"},
                   {"^Left ^Left ^Left ^Left", "a 0..1; ", "001"},
                   {"Right Right ^Right ^Right", "a 0..3; ", "002"},
                   {"Left ^Left", "a 0..2; ", "001"}, // at the show's start the whole shrinks
                   {"Right ^Left ^Left ^Left", "a; ", "002"},
                   {"Return", "a; ", "000"}});
}

TEST(HudEditing, repeatsATriggerAndMovesItsFirings)
{
    Stage stage("<script><effect name='a'><trigger name='t'/></effect></script>");
    zoomToSeconds(stage);
    follow(stage, {{"Right Down Return Delete Right ^Right", "-a [t 1]; ", "010"},
                   {"^Left ^Left", "-a [t 0]; ", "010"},
                   {"Insert", "-a [t 0 x2 +5]; ", "010"},
                   {"Insert Right Right Right ^Right", "-a [t 0 x3 +5.5]; ", "012"},
                   {"^Left ^Left ^Left ^Left", "-a [t 0 x3 +3.5]; ", "012"},
                   {"^Left ^Left ^Left ^Left ^Left ^Left ^Left", "-a [t 0 x3 +0.5]; ", "012"}, // never all at once
                   {"Delete", "-a [t 0 x2 +0.5]; ", "011"}});
    stage.trigger(0).mRepeat = 2147483647;
    stage.trigger(0).mDelay = 2.25f;
    follow(stage, {{"Right Insert ^Left ^Left ^Left", "-a [t 0 x2147483647 +0.75]; ", "012"}});
    stage.trigger(0).mRepeat = 0;
    follow(stage, {{"Right", "-a [t 0 x0 +0.75]; ", "010"}});
}

TEST(HudEditing, movesKeysUpToTheirNeighbours)
{
    Stage stage(splineOf("<key/><key time='4' value='2'/><key time='10' value='8'/>"));
    zoomToSeconds(stage);
    stage.spline(0).mTimeScale = 2.0f;
    stage.spline(0).mTimeOffset = 1.0f;
    stage.spline(0).mValueScale = 4.0f;
    follow(stage, {{"Right Down Return Right ^Up ^Up ^Down ^Right", "-a 0..40 < linear 0:0 4.5:2.25 10:8>; ", "011"}});
    stage.spline(0).mKeys[1]->time = 9.5f;
    follow(stage, {{"^Right ^Right", "-a 0..40 < linear 0:0 10:2.25 10:8>; ", "012"}, // the pick jumps over
                   {"^Right", "-a 0..40 < linear 0:0 10:2.25 10.5:8>; ", "012"},
                   {"^Left ^Left", "-a 0..40 < linear 0:0 10:2.25 10:8>; ", "011"},
                   {"Left ^Left ^Left", "-a 0..40 < linear -0.5:0 10:2.25 10:8>; ", "010"}, // 0 on the axis
                   {"^Up ^Up", "-a 0..40 < linear -0.5:0.5 10:2.25 10:8>; ", "010"}});
    EXPECT_EQ(stage.spline(0).mMin, 0.5f); // worked out again after every key
}

TEST(HudEditing, insertsAndDeletesKeys)
{
    Stage stage(splineOf("<key/><key time='4' value='2'/><key time='10' value='8'/>"));
    zoomToSeconds(stage);
    follow(stage, {{"Right Down Return Right Insert", "-a 0..40 < linear 0:0 4:2 7:5 10:8>; ", "012"},
                   {"Right Right Insert", "-a 0..40 < linear 0:0 4:2 7:5 10:8 15:8>; ", "014"},
                   {"Delete Delete Delete Delete", "-a 0..40 < linear 0:0 4:2>; ", "011"},
                   {"Left Insert Left Delete Delete", "-a 0..40 < linear 2:1 4:2>; ", "010"}});
}

TEST(HudEditing, zoomsByFiveSecondsInBothModes)
{
    Stage stage(threeEntries);
    stage.keys("Minus");
    EXPECT_EQ(stage.mHud.mWindowLength, 45.0f);
    stage.keys("Return Plus Plus Plus Plus Plus Plus Plus Plus Plus Plus");
    EXPECT_EQ(stage.mHud.getTimePerPixel(), 5.0f / 398.0f);
}
