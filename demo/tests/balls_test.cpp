// The sphere before the landscape, and the tiles that build the landscape up.

#include "ball.h"
#include "effect_testing.h"
#include "preball.h"

#include <cmath>
#include <cstdlib>

using GLRecorder::gl;
using GLRecorder::Primitive;
using GLRecorder::Vertex;

TEST(Ball, movesItsParticlesInWholeStepsOnPathsOfTheirOwn)
{
    Stage stage;
    Ball ball;
    stage.setup(ball);
    trigger(ball, "count", "3");
    ball.updateSpline(0, "size", 16);
    const struct
    {
        float time;
        int places[3][2];
    } cases[] = {{0, {{0, 82}, {81, 91}, {-90, 55}}},
                 {-1, {{-80, -33}, {0, -13}, {-75, 86}}},
                 {2.5f, {{57, -94}, {-34, -95}, {91, -24}}}};
    for (const auto& entry : cases)
    {
        stage.draw(ball, entry.time);
        for (size_t i = 0; i < 3; ++i)
        {
            SCOPED_TRACE(testing::Message() << entry.time << ", particle " << i);
            const std::vector<Vertex>& corners = gl.primitives.at(i).vertices;
            for (size_t axis : {0, 1})
                EXPECT_EQ(128 * (corners[0].clip[axis] + corners[3].clip[axis]) / 2, entry.places[i][axis]);
            EXPECT_EQ(corners[3].clip[0] - corners[0].clip[0], 0.25f);
        }
        EXPECT_EQ(gl.primitives.at(3).texture, stage.name("ballbg.jpg"));
    }
}

TEST(Ball, beginsANewPictureAndKeepsTheMask)
{
    Stage stage;
    Ball ball;
    stage.setup(ball);
    gl.state.enabled[GL_STENCIL_TEST] = true;
    ball.update(0, 0, 0);
    EXPECT_EQ(gl.count("glClear"), 2);
    EXPECT_EQ(gl.last("glCopyTexImage2D"), "glCopyTexImage2D 3553 0 6407 0 0 128 128 0"); // GL_RGB
    EXPECT_EQ(gl.state.viewport, (std::array<int, 4>{0, 0, 800, 600}));
    EXPECT_TRUE(gl.on(GL_STENCIL_TEST));
}

TEST(Ball, approachesItsTargetWhileTheClockRunsForward)
{
    Stage stage;
    Ball ball;
    stage.setup(ball);
    const struct
    {
        const char* speed;
        float delta, x;
    } frames[] = {{"0", 1, 10}, {"500", 1, 5}, {"500", 1, 2.5f}, {"500", 0, 2.5f}, {"500", -1, 2.5f}};
    for (const auto& frame : frames)
    {
        trigger(ball, "speed", frame.speed);
        stage.draw(ball, 0, 0, frame.delta);
        EXPECT_FLOAT_EQ(ball.mPosition.x, frame.x);
    }
    ball.mTarget.set(1, 2, 3);
    ball.resetTriggers();
    EXPECT_TRUE(ball.mPosition == maril64k::Point3D(10, 0, 0));
    EXPECT_TRUE(ball.mTarget == maril64k::Point3D());
    EXPECT_EQ(ball.mSpeed, 500);
}

TEST(Ball, goesNowhereNear)
{
    Ball ball;
    std::srand(5);
    trigger(ball, "move");
    const maril64k::Point3D first = ball.mTarget;
    trigger(ball, "move");
    const maril64k::Point3D second = ball.mTarget;
    std::srand(5);
    for (const auto& [place, reach] : {std::pair(first.x, 4), {first.y, 4}, {first.z, 8}})
        EXPECT_NEAR(place, (2.0 * std::rand() / 2147483648.0 - 1) * reach, 1e-5);

    ball.mPosition.set(first.x + 1.1f, first.y + 1.1f, first.z + 1.1f); // 1.9 away
    std::srand(5);
    trigger(ball, "move");
    EXPECT_TRUE(ball.mTarget == second);
}

TEST(Ball, wearsShellsThatGrowAndFade)
{
    Stage stage;
    Ball ball;
    stage.setup(ball);
    trigger(ball, "count", "0");
    trigger(ball, "layers", "3");
    ball.updateSpline(0, "step", 10);
    ball.updateSpline(0, "alphastep", 40);
    ball.mPosition.set(1, 2, 3);
    stage.draw(ball, 0.7f, 1);

    EXPECT_NEAR(gl.primitives.at(0).vertices[3].texture[0], 1, 1e-6f); // the window is at the picture's right edge
    ASSERT_EQ(gl.primitives.size(), 1u + 4 * 32);
    const float alphas[4] = {1, 1, 0.6f, 0.2f};
    for (int sphere = 0; sphere < 4; ++sphere)
    {
        const Primitive& drawn = gl.primitives[1 + 32 * sphere];
        const std::array<float, 3>& corner = drawn.vertices[0].eye;
        const float radius = std::hypot(corner[0] - 1, corner[1] - 2, corner[2] + 7);
        EXPECT_NEAR(radius, 1.3f * std::pow(1.1f, sphere + 1), 1e-4f);
        EXPECT_NEAR(drawn.vertices[0].color[3], alphas[sphere], 1e-6f);
        EXPECT_EQ(drawn.blended, sphere > 0);
        EXPECT_EQ(drawn.texture, ball.mSphereTexture);
    }
}

TEST(PreBall, growsATileFromItsUpperLeftCorner)
{
    Stage stage;
    PreBall preball;
    stage.setup(preball);
    stage.draw(preball, 0, 0.25f);
    ASSERT_EQ(gl.primitives.size(), 302u);

    const std::vector<Vertex>& half = gl.primitives[20 * 10 + 8].vertices; // 2.5 - 80 / 40
    EXPECT_FLOAT_EQ(half[0].color[3], 0.5f);
    EXPECT_NEAR(half[0].eye[0], 1.333f * -0.2f, 1e-5f);
    EXPECT_NEAR(half[0].eye[1], 0.8453039f * -1 / 3, 1e-5f);
    EXPECT_NEAR(half[2].eye[0] - half[0].eye[0], 1.333f * 0.05f, 1e-5f);
    EXPECT_NEAR(half[0].eye[1] - half[2].eye[1], 0.8453039f / 15, 1e-5f);
    EXPECT_NEAR(half[0].texture[0], 0.353515625f * 0.4f, 1e-6f);
    EXPECT_NEAR(half[0].texture[1], 0.896484375f * 2 / 3 + 0.05f, 1e-6f);
    EXPECT_FLOAT_EQ(gl.primitives[299].vertices[0].color[3], -4.15f); // 2.5 - 266 / 40

    for (size_t bar : {300, 301})
    {
        const Vertex& lowerLeft = gl.primitives[bar].vertices[0];
        EXPECT_EQ(gl.primitives[bar].texture, 0u);
        EXPECT_EQ(lowerLeft.color, (std::array<float, 4>{0, 0, 0, 0.25f}));
        EXPECT_NEAR(lowerLeft.eye[1], 0.8453039f * (bar == 300 ? -3 : 1), 1e-5f);
    }
}

TEST(PreBall, endsWithThePictureThatBallBeginsWith)
{
    Stage stage;
    PreBall preball;
    Ball ball;
    stage.setup(preball);
    stage.setup(ball);
    stage.draw(preball, 0, 1);
    const std::vector<Primitive> tiles = gl.primitives;
    stage.draw(ball, 0, 0);
    const std::vector<Vertex>& strip = gl.primitives.at(10).vertices;
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_NEAR(tiles[0].vertices[0].eye[i], strip[0].eye[i], 1e-5f);
        EXPECT_NEAR(tiles[299].vertices[2].eye[i], strip[3].eye[i], 1e-5f);
        EXPECT_NEAR(tiles[0].vertices[0].texture[i], strip[0].texture[i], 1e-5f);
        EXPECT_NEAR(tiles[299].vertices[2].texture[i], strip[3].texture[i], 1e-5f);
        EXPECT_NEAR(tiles[147].vertices[2].eye[i], tiles[168].vertices[0].eye[i], 1e-5f); // no gap between tiles
    }
}
