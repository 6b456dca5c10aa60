// The effects that work on the whole screen and on copies of it.

#include "clear.h"
#include "crashscene.h"
#include "effect_testing.h"
#include "radialblur.h"
#include "static.h"

#include <cstdlib>
#include <set>
#include <stdexcept>

using GLRecorder::gl;

TEST(Clear, readsThreeDigitsForEachColour)
{
    const struct
    {
        const char* value;
        int red, green, blue; // -1: not reached
    } cases[] = {{"255000000", 255, 0, 0},   {"001002255", 1, 2, 255}, {"255128", 255, 128, 0},
                 {"0990990999", 99, 99, 99}, {"12", 12, -1, -1},       {"1234", 123, 4, -1},
                 {"redredred", 0, 0, 0}};
    for (const auto& entry : cases)
    {
        SCOPED_TRACE(entry.value);
        Clear clear;
        clear.mR = clear.mG = clear.mB = -1 / 255.0f;
        if (entry.blue < 0)
            EXPECT_THROW(trigger(clear, "color", entry.value), std::out_of_range);
        else
            trigger(clear, "color", entry.value);
        EXPECT_FLOAT_EQ(clear.mR, entry.red / 255.0f);
        EXPECT_FLOAT_EQ(clear.mG, entry.green / 255.0f);
        EXPECT_FLOAT_EQ(clear.mB, entry.blue / 255.0f);
    }
}

TEST(Static, cyclesThroughSixteenViews)
{
    Stage stage;
    Static noise;
    stage.setup(noise);
    std::vector<std::vector<std::array<float, 2>>> views;
    for (int frame = 0; frame < 32; ++frame)
    {
        stage.draw(noise, 0);
        std::vector<std::array<float, 2>> view;
        for (const GLRecorder::Vertex& vertex : gl.primitives.at(0).vertices) view.push_back(vertex.texture);
        views.push_back(view);
    }
    EXPECT_EQ(std::set(views.begin(), views.begin() + 16).size(), 16u);
    EXPECT_TRUE(std::equal(views.begin(), views.begin() + 16, views.begin() + 16));
}

TEST(RadialBlur, zoomsByItsStepDownToTheLowStep)
{
    Stage stage;
    const struct
    {
        const char *step, *lowStep, *speed;
        float time, zoom;
    } cases[] = {
        {"1.05", "1", "0", 100, 2.05f}, // without a fall-off the step stays
        {"1.05", "1", "0.5", 5, 2.05f}, {"3", "1", "0.5", 6, 2.5f},   {"3", "1", "0.5", 9, 2},
        {"3", "0", "0.5", 9, 1},        {"0.2", "0.5", "1", 5, 1.5f}, {"1", "0", "0.5", 3, 3}, // before the trigger
    };
    for (const auto& entry : cases)
    {
        RadialBlur blur;
        stage.setup(blur);
        trigger(blur, "step", entry.step);
        trigger(blur, "lowstep", entry.lowStep);
        trigger(blur, "falloffspeed", entry.speed);
        trigger(blur, "falloff", "", 5);
        stage.draw(blur, entry.time);
        const GLRecorder::Vertex& upperRight = gl.primitives.at(0).vertices[2];
        EXPECT_NEAR(upperRight.clip[1], entry.zoom, 1e-3f); // the frame's edge, enlarged
    }
}

TEST(CrashScene, seedsTheRandomNumbersOfTheRun)
{
    Stage stage;
    CrashScene crash;
    stage.setup(crash);
    const int first = std::rand();
    std::srand(38912);
    EXPECT_EQ(std::rand(), first);
}
