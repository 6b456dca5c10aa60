#include "follow.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>

using Scenes::Hit;
using Scenes::Showing;

namespace
{

const std::vector<Music::Voice> BEAT = {Music::Voice::Heart, Music::Voice::Kick};

// A script that shows the scene in the given entries.
Showing showing(const std::string& entries)
{
    const std::string path = testing::TempDir() + "follow_test.xml";
    std::ofstream(path) << "<script>\n" << entries << "\n</script>\n";
    return Showing(path, "podium");
}

std::vector<float> times(const std::vector<Hit>& hits)
{
    std::vector<float> found;
    for (const Hit& hit : hits) found.push_back(hit.time);
    return found;
}

} // namespace

TEST(Showing, HitsLieOnTheClockOfTheScene)
{
    // The first bars of the heart: two strokes each.
    EXPECT_EQ(std::vector<float>({1.0f, 1.25f, 3.0f, 3.25f}),
              times(showing("<effect name=\"podium\" start=\"79\" end=\"83\"/>").hits({Music::Voice::Heart})));
}

TEST(Showing, WhatIsSeenTwiceMovesOnlyWithWhatIsHeardBothTimes)
{
    // The heart at 0 and 0.25 of a bar, and drums at 0, 0.75 and 1.25.
    const Showing twice = showing("<effect name=\"podium\" start=\"80\" end=\"82\"/>"
                                  "<effect name=\"podium\" start=\"48\" end=\"52\"/>");
    EXPECT_EQ(std::vector<float>({0.0f, 2.0f, 2.75f, 3.25f}), times(twice.hits(BEAT)));
}

TEST(Showing, AnEntryFarAboveTheSceneDoesNotShowIt)
{
    const Showing late = showing("<effect name=\"podium\" start=\"78\" end=\"84\"><spline name=\"y\" type=\"square\">"
                                 "<key time=\"0\" value=\"100000\"/><key time=\"4\" value=\"0\"/></spline></effect>");
    EXPECT_EQ(std::vector<float>({4.0f, 4.25f}), times(late.hits({Music::Voice::Heart})));
    EXPECT_THROW(showing(""), std::runtime_error);
}

TEST(Showing, SharpChordsLieAboveFlatOnes)
{
    const Showing heart = showing("<effect name=\"podium\" start=\"80\" end=\"96\"/>"); // Gm Dm Bb Asus Gm Dm Bb A7
    EXPECT_FLOAT_EQ(-1.4f, heart.harmony(0.5f));
    EXPECT_FLOAT_EQ(-0.4f, heart.harmony(2.0f));
    EXPECT_FLOAT_EQ(1.8f, heart.harmony(15.9f));
}

TEST(Swell, RisesAtOnceAndFallsSlowlyAlsoAsACurve)
{
    const Scenes::Swell swell({{1.0f, 1.0f, 0.0f}, {1.25f, 0.6f, 0.0f}, {4.0f, 0.5f, 0.0f}}, 0.05f, 0.3f);
    EXPECT_EQ(0.0f, swell.at(1.0f));
    EXPECT_NEAR(1.0f, swell.at(1.05f), 1e-4f);
    EXPECT_NEAR(0.6f, swell.at(1.3f), 1e-4f); // the second tops what is left of the first
    y3d::TrackBlenderFloat curve;
    Scenes::setLines(curve, swell.times(), [&](float time) { return swell.at(time); });
    for (float time : swell.times()) EXPECT_NEAR(swell.at(time), curve.getValue(time), 0.016f) << time;
    EXPECT_EQ(0.0f, curve.getValue(0.0f));
}
