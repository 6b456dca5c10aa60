// The effects of plain geometry: cubes, lines and lightning.

#include "cubes.h"
#include "effect_testing.h"
#include "infinity.h"
#include "lighting.h"

#include <cmath>
#include <limits>

using GLRecorder::gl;

TEST(Cubes, splitWithEveryTriggerOfAnEntry)
{
    Stage stage;
    Cubes cubes;
    stage.setup(cubes);
    for (size_t drawn : {1, 8, 64, 512, 4096, 0, 0})
    {
        stage.draw(cubes, 0);
        EXPECT_EQ(gl.primitives.size(), 7 * drawn);
        trigger(cubes, drawn % 2 ? "" : "any name");
    }
    cubes.resetTriggers();
    stage.draw(cubes, 0);
    EXPECT_EQ(gl.primitives.size(), 7u);
}

TEST(Infinity, fliesOnAndBackWithinOneLength)
{
    Stage stage;
    Infinity infinity;
    stage.setup(infinity);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct
    {
        float from, delta, to;
    } cases[] = {{0, 0, 0},       {3.4f, 0, 3.4f},   {3.4f, 0.01f, 0.03f}, {0.1f, -0.02f, 3.32f}, {0, 10, 2.16f},
                 {0, -10, 1.36f}, {3.52f, 0, 3.52f}, {1, nan, 0},          {1, INFINITY, 0.0f}};
    for (const auto& entry : cases)
    {
        Infinity::mytime = entry.from;
        stage.draw(infinity, 0, 0, entry.delta);
        EXPECT_NEAR(Infinity::mytime, entry.to, 1e-4f) << entry.from << " and " << entry.delta;
    }
    Infinity::mytime = 0;
}

TEST(Lighting, shiversWithTheClockBetweenItsEnds)
{
    Stage stage;
    Lighting lighting;
    stage.setup(lighting);
    const std::vector<Lighting::point> before = lighting.mFlashes[3].points;
    for (float delta : {0.25f, -0.25f, 0.0f, 0.5f}) stage.draw(lighting, 0, 0, delta);
    for (size_t i : {0, 1, 48, 49}) // the ends have no speed
        EXPECT_NEAR(lighting.mFlashes[3].points[i].phaseZ, before[i].phaseZ + 0.5f * before[i].speedZ, 1e-2f) << i;
}
