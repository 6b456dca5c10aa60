// The effects that work on the whole screen and on copies of it.

#include "blood.h"
#include "circle.h"
#include "clear.h"
#include "crashscene.h"
#include "effect_testing.h"
#include "flash.h"
#include "radialblur.h"
#include "render2texture.h"
#include "static.h"
#include "stencilop.h"

#include <cmath>
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

TEST(Flash, fadesOverItsEntryInTheColourOfItsTriggers)
{
    Stage stage;
    Flash flash;
    trigger(flash, "r", "1");
    trigger(flash, "g", "0.5");
    flash.resetTriggers(); // the colour stays
    stage.draw(flash, 3, 0.75f);
    ASSERT_EQ(gl.primitives.size(), 1u);
    for (const GLRecorder::Vertex& vertex : gl.primitives[0].vertices)
        EXPECT_EQ(vertex.color, (std::array<float, 4>{1, 0.5f, 0, 0.25f}));
}

TEST(StencilOp, comparesAsItsModeSays)
{
    Stage stage;
    StencilOp operation;
    const struct
    {
        const char* mode;
        GLenum comparison;
    } cases[] = {{"unknown", GL_NOTEQUAL}, {"exclude", GL_EQUAL}, {"Include", GL_EQUAL},
                 {"normal", GL_ALWAYS},    {"", GL_ALWAYS},       {"include", GL_NOTEQUAL}};
    for (const auto& entry : cases)
    {
        SCOPED_TRACE(entry.mode);
        trigger(operation, "mode", entry.mode);
        stage.draw(operation, 0);
        EXPECT_EQ(gl.state.stencilFunction, (std::array<GLuint, 3>{entry.comparison, 0, ~0u}));
    }
}

TEST(Circle, shrinksToNothingOverItsEntry)
{
    Stage stage;
    Circle circle;
    stage.setup(circle);
    for (float position : {0.0f, 0.25f, 1.0f})
    {
        stage.draw(circle, 0, position);
        float radius = 0;
        for (const GLRecorder::Primitive& primitive : gl.primitives)
            for (const GLRecorder::Vertex& vertex : primitive.vertices) radius = std::max(radius, vertex.eye[0]);
        EXPECT_NEAR(radius, 1 - position, 1e-6f);
    }
}

TEST(Static, fillsItsNoiseInMemoryOrder)
{
    Stage stage;
    Static noise;
    std::srand(7);
    stage.setup(noise);
    const std::vector<unsigned char>& texels = gl.textures[noise.mTexture];
    ASSERT_EQ(texels.size(), 512u * 512u);
    std::srand(7);
    for (unsigned char texel : texels) ASSERT_EQ(texel, std::rand() % 255);
}

TEST(Static, cyclesThroughSixteenViewsOfOneQuadrantEach)
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
        EXPECT_NEAR(std::abs(view[0][0] - view[3][0]) * std::abs(view[0][1] - view[3][1]), 0.25f, 1e-6f);
        views.push_back(view);
    }
    EXPECT_EQ(std::set(views.begin(), views.begin() + 16).size(), 16u);
    EXPECT_TRUE(std::equal(views.begin(), views.begin() + 16, views.begin() + 16));
}

TEST(Static, stopsWhereItsOpacityFallsBelowZero)
{
    Stage stage;
    Static noise;
    stage.setup(noise);
    trigger(noise, "falloffspeed", "0.5");
    trigger(noise, "falloff", "ignored", 10);
    const struct
    {
        float time, alpha; // below 0: nothing is drawn
    } cases[] = {{8, 2}, {10, 1}, {11, 0.5f}, {12, 0}, {12.5f, -1}};
    for (const auto& entry : cases)
    {
        const int frame = noise.mFrame;
        stage.draw(noise, entry.time);
        ASSERT_EQ(gl.primitives.size(), entry.alpha < 0 ? 0u : 1u) << entry.time;
        EXPECT_EQ(noise.mFrame == frame, entry.alpha < 0);
        for (const GLRecorder::Primitive& drawn : gl.primitives)
            EXPECT_FLOAT_EQ(drawn.vertices[0].color[3], entry.alpha);
    }
}

TEST(Blood, growsUpwardBandAfterBand)
{
    Stage stage;
    Blood blood;
    for (float position : {0.0f, 0.1f, 19 / 30.0f, 1.0f})
    {
        stage.draw(blood, 0, position);
        ASSERT_EQ(gl.primitives.size(), 20u);
        for (int i = 0; i < 20; ++i)
        {
            const std::vector<GLRecorder::Vertex>& corners = gl.primitives[i].vertices;
            EXPECT_NEAR(corners[2].eye[1], 0.95f - 0.15f * i, 1e-5f);
            const float grown = std::min(std::max(1.2f * position - 0.04f * i, 0.0f), 1.0f);
            EXPECT_NEAR(corners[0].eye[1] - corners[2].eye[1], grown / 2, 1e-5f);
        }
    }
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
        ASSERT_EQ(gl.primitives.size(), 1u);
        const GLRecorder::Vertex& upperRight = gl.primitives[0].vertices[2];
        EXPECT_NEAR(upperRight.eye[1], entry.zoom, 1e-5f);
        EXPECT_NEAR(upperRight.clip[1], entry.zoom, 1e-3f); // the frame's edge, enlarged
        EXPECT_EQ(upperRight.texture, (std::array<float, 2>{0.78125f, 0.5859375f}));
        EXPECT_FLOAT_EQ(upperRight.color[3], 0.9f);
        EXPECT_EQ(gl.calls.back(), "glCopyTexSubImage2D 3553 0 0 0 0 0 800 600"); // the trail is part of the copy
    }
}

TEST(CrashScene, putsTheTilesTogetherAboutFourAxesInTurn)
{
    Stage stage;
    CrashScene crash;
    stage.setup(crash);
    trigger(crash, "speed", "0.5");
    const struct
    {
        float time, v;
    } times[] = {{10, 1}, {11, 0.5f}, {8, 2}};
    // Where the turn takes the 4 v that a tile stands nearer: share of x and of y at the sine of the angle.
    const float directions[4][2] = {{1, 0}, {0, -1}, {-1, 0}, {0, 1}};
    crashType = 0;
    for (int type : {1, 2, 3, 0, 1})
    {
        trigger(crash, "crash", "", 10);
        EXPECT_EQ(crashType, type);
        for (const auto& entry : times)
        {
            stage.draw(crash, entry.time);
            ASSERT_EQ(gl.primitives.size(), 1u + 200u);
            const float angle = entry.v * static_cast<float>(M_PI) / 2;
            for (int tile : {0, 9, 47, 99})
            {
                const GLRecorder::Vertex& corner = gl.primitives[1 + 2 * tile].vertices[1]; // lower left
                const float apart = 1 + 0.5f * entry.v;
                const float x = (-6.66665f + 1.33333f * (tile % 10)) * apart;
                const float y = (-5.0f + tile / 10) * apart;
                const float near = 4 * entry.v;
                EXPECT_NEAR(corner.eye[0], x + directions[type][0] * near * std::sin(angle), 1e-3f);
                EXPECT_NEAR(corner.eye[1], y + directions[type][1] * near * std::sin(angle), 1e-3f);
                EXPECT_NEAR(corner.eye[2], -11.5f + near * std::cos(angle), 1e-3f);
                EXPECT_NEAR(corner.texture[0], 0.078125f * (tile % 10), 1e-6f);
                EXPECT_NEAR(corner.texture[1], 0.05859375f * (tile / 10), 1e-6f);
            }
        }
    }
    stage.draw(crash, 12); // v is 0: nothing is left but the state
    EXPECT_TRUE(gl.primitives.empty());
    EXPECT_EQ(gl.count("glPushMatrix"), 100);
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
