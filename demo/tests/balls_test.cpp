// The sphere before the landscape, and the tiles that build the landscape up.

#include "ball.h"
#include "effect_testing.h"
#include "preball.h"

#include <cstdlib>

using GLRecorder::gl;
using GLRecorder::Primitive;
using GLRecorder::Vertex;

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
    for (int i = 0; i < 500; ++i)
    {
        trigger(ball, "move");
        const maril64k::Point3D way = ball.mTarget - ball.mPosition;
        EXPECT_GT(way.x * way.x + way.y * way.y + way.z * way.z, 4);
        ball.mPosition = ball.mTarget;
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
