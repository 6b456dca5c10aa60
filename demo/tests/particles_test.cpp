// The effects that draw crowds of small quads.

#include "effect_testing.h"
#include "fire.h"
#include "particlesscene.h"
#include "sun.h"

TEST(ParticlesScene, letsPulsesDieAwayByThreeASecond)
{
    Stage stage;
    ParticlesScene particles;
    stage.setup(particles);
    struct Pulse
    {
        const char* name;
        float& size;
    };
    for (const Pulse& pulse : {Pulse{"enlarge", particles.mEnlarge}, Pulse{"expand", particles.mExpand}})
    {
        SCOPED_TRACE(pulse.name);
        auto after = [&](float time) {
            stage.draw(particles, time);
            return pulse.size;
        };
        EXPECT_EQ(after(5), 1);
        trigger(particles, pulse.name, "2", 10);
        EXPECT_FLOAT_EQ(after(10.5f), 1.5f);
        trigger(particles, pulse.name, "1.5", 10.5f); // on top of what is left
        EXPECT_FLOAT_EQ(after(10.75f), 2.25f);
        EXPECT_FLOAT_EQ(after(10.25f), 3.75f); // the clock was set back
        EXPECT_EQ(after(20), 1);
        trigger(particles, pulse.name, "-0.5", 20);
        EXPECT_FLOAT_EQ(after(30), 0.5f);
    }
}

TEST(Fire, throwsItsSquaresOutwardAgainAndAgain)
{
    Stage stage;
    Fire fire;
    const std::array<float, 3> ways[] = {
        {0.5f, 0, 0.5f}, {0.5f, 0.02f, 0.52f}, {1.99f, 0.02f, 0.01f}, {0.01f, -0.02f, 1.99f}};
    for (const auto& [from, delta, to] : ways)
    {
        fire.mParticles = {{0, from, 0.01f, 0, 0, 0, 10, 20, 30, 0.14f}};
        stage.draw(fire, 0, 0, delta);
        EXPECT_NEAR(fire.mParticles[0].distance, to, 1e-5f);
    }
}

TEST(Sun, wrapsItsSparksAtTheTopAlone)
{
    Stage stage;
    Sun sun;
    stage.setup(sun); // with alpha 0 they move all the same
    const std::array<float, 3> ways[] = {
        {0.5f, 2, 0.6f}, {0.99f, 1, -0.96f}, {-0.99f, -1, -1.04f}, {-1.04f, -1, -1.09f}};
    for (const auto& [from, delta, to] : ways)
    {
        *sun.mStars[0] = {0, from, 0, 0.05f};
        stage.draw(sun, 0, 0, delta);
        EXPECT_NEAR(sun.mStars[0]->y, to, 1e-5f);
    }
}
