// The effects that draw crowds of small quads.

#include "effect_testing.h"
#include "fire.h"
#include "particlesscene.h"
#include "sun.h"

#include <cmath>

using GLRecorder::gl;
using GLRecorder::Vertex;

namespace
{

// What the viewer sees halfway between two corners, along one axis.
float middle(const std::vector<Vertex>& corners, size_t a, size_t b, size_t axis)
{
    return (corners.at(a).eye[axis] + corners.at(b).eye[axis]) / 2;
}

} // namespace

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

TEST(ParticlesScene, growsFromTheContractTriggerOn)
{
    Stage stage;
    ParticlesScene particles;
    stage.setup(particles);
    stage.draw(particles, 3);
    EXPECT_EQ(particles.mContract, 0);
    trigger(particles, "contract", "", 4);
    for (float time : {4.0f, 7.0f, 5.0f, 50.0f})
    {
        stage.draw(particles, time);
        EXPECT_EQ(particles.mContract, time - 4);
    }
}

TEST(ParticlesScene, twistsItsSlicesAboutTheLineOfSight)
{
    Stage stage;
    ParticlesScene particles;
    stage.setup(particles);
    trigger(particles, "enlarge", "1");
    std::srand(3);
    stage.draw(particles, 0);
    const int next = std::rand();

    ASSERT_EQ(gl.primitives.size(), 1728u);
    std::srand(3);
    for (size_t i = 0; i < 1728; ++i)
    {
        const size_t slice = i / 144;
        const std::vector<Vertex>& streak = gl.primitives[i].vertices;
        const float x = -2.5f + 0.41666666f * (i % 12), y = 2.5f - 0.41666666f * (i / 12 % 12);
        const float angle = 4 * std::cos(std::sin(0.04f * slice));
        ASSERT_NEAR(middle(streak, 0, 3, 0), 2 * 3 * (x * std::cos(angle) - y * std::sin(angle)), 1e-3f);
        ASSERT_NEAR(middle(streak, 0, 3, 1), 3 * (x * std::sin(angle) + y * std::cos(angle)), 1e-3f);
        ASSERT_NEAR(streak[0].eye[2], 3 * (-2.5f + 0.41666666f * slice) - 25, 1e-3f);
        ASSERT_NEAR(streak[3].eye[0] - streak[0].eye[0], 2 * 0.4f * 10.8f, 1e-4f);
        ASSERT_NEAR(streak[0].eye[1] - streak[3].eye[1], 2 * 0.4f * 2.8f, 1e-4f);
        ASSERT_NEAR(streak[0].color[3], 1 - 0.2f * nextUnit(), 1e-6f);
    }
    EXPECT_EQ(std::rand(), next);
}

TEST(Crowds, areTheSameForTheSameRandomNumbers)
{
    Stage stage;
    Fire fire;
    Sun sun;
    std::srand(7);
    stage.setup(fire);
    stage.setup(sun);
    std::srand(7);
    float u[9];
    for (int i = 0; i < 2000; ++i)
        for (float& number : u) number = nextUnit(); // two of the nine are not used
    const Fire::Particle& particle = fire.mParticles.at(1999);
    EXPECT_FLOAT_EQ(particle.angle, 6.28f * u[0]);
    EXPECT_FLOAT_EQ(particle.distance, 2 * u[1]);
    EXPECT_FLOAT_EQ(particle.rotationX, 360 * u[4]);
    EXPECT_NEAR(particle.speed, 0.001f + 0.014f * u[7], 1e-8f);
    EXPECT_NEAR(particle.size, 0.09f + 0.09f * u[8], 1e-7f);
    for (int i = 0; i < 2000 * 3; ++i) u[i % 3] = nextUnit();
    const Sun::stardate& star = *sun.mStars.at(1999);
    EXPECT_NEAR(star.x, 2 * u[0] - 1, 1e-6f);
    EXPECT_NEAR(star.y, 2 * u[1] - 1, 1e-6f);
    EXPECT_NEAR(star.size, 0.025f + 0.05f * u[2], 1e-7f);
}

TEST(Fire, throwsItsSquaresOutwardAgainAndAgain)
{
    Stage stage;
    Fire fire;
    stage.setup(fire);
    fire.updateSpline(0, "intensity", 40);
    fire.updateSpline(0, "size", 7.1f);
    const struct
    {
        float from, delta, to;
    } cases[] = {{0.5f, 0, 0.5f}, {0.5f, 0.02f, 0.52f}, {1.99f, 0.02f, 0.01f}, {0.01f, -0.02f, 1.99f}};
    for (const auto& entry : cases)
    {
        SCOPED_TRACE(entry.to);
        const float right = static_cast<float>(M_PI) / 2;
        fire.mParticles = {{right, entry.from, 0.01f, 0, 0, 0, 10, 20, 30, 0.14f}};
        stage.draw(fire, 0, 0, entry.delta);
        EXPECT_NEAR(fire.mParticles[0].distance, entry.to, 1e-5f);
        EXPECT_NEAR(fire.mParticles[0].rotationZ, 30 + 105.5f * entry.delta, 1e-4f);

        const std::vector<Vertex>& corners = gl.primitives.at(0).vertices;
        EXPECT_NEAR((corners[0].clip[0] + corners[2].clip[0]) / 2, entry.to / 2, 1e-5f);
        EXPECT_NEAR((corners[0].clip[1] + corners[2].clip[1]) / 2, 0, 1e-5f);
        EXPECT_FLOAT_EQ(corners[0].eye[0], 0.1f); // places and turns are all in the projection
        EXPECT_NEAR(corners[0].color[3], 2 * (1 - entry.to) * 0.4f, 1e-5f);
    }
}

TEST(Sun, bendsItsCloudAndSpinsItsSparks)
{
    Stage stage;
    Sun sun;
    stage.setup(sun);
    sun.updateSpline(0, "width", 10);
    sun.updateSpline(0, "base", 5);
    sun.updateSpline(0, "cone", 20);
    sun.updateSpline(0, "alpha", 20);
    sun.mStars.resize(1);
    *sun.mStars[0] = {0.1f, 0.5f, 0, 0.05f};
    std::srand(2);
    stage.draw(sun, 0.9f); // a quarter turn clockwise
    std::srand(2);
    const std::vector<Vertex> corners = gl.primitives.at(0).vertices;
    EXPECT_NEAR(corners[0].color[3], 2 * (0.1f * nextUnit() + 0.2f), 1e-6f);
    const float x = 0.9f + 0.5f * 2 * 0.9f; // (0.5 + 0.1) and half as much again
    EXPECT_NEAR(corners[0].eye[0], x + 0.05f, 1e-5f);
    EXPECT_NEAR(corners[0].eye[1], 0.5f + 0.05f, 1e-5f);
    EXPECT_NEAR(corners[2].eye[0], x - 0.05f, 1e-5f);
    EXPECT_EQ(corners[0].eye[2], -1.5f);

    sun.updateSpline(0, "rotate", 90);
    stage.draw(sun, 0);
    EXPECT_NEAR(middle(gl.primitives.at(0).vertices, 0, 2, 0), -0.5f, 1e-5f);
    EXPECT_NEAR(middle(gl.primitives.at(0).vertices, 0, 2, 1), x, 1e-5f);
}

TEST(Sun, wrapsItsSparksAtTheTopAlone)
{
    Stage stage;
    Sun sun;
    stage.setup(sun); // with alpha 0 they move all the same
    sun.mStars.resize(1);
    const struct
    {
        float from, delta, to;
    } cases[] = {{0.5f, 2, 0.6f}, {0.99f, 1, -0.96f}, {-0.99f, -1, -1.04f}, {-1.04f, -1, -1.09f}};
    for (const auto& entry : cases)
    {
        *sun.mStars[0] = {0, entry.from, 0, 0.05f};
        stage.draw(sun, 0, 0, entry.delta);
        EXPECT_NEAR(sun.mStars[0]->y, entry.to, 1e-5f);
        EXPECT_EQ(gl.primitives.at(0).vertices[0].color[3], 0);
    }
}
