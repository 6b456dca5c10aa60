#include "fe_light.h"
#include "fe_scenes.h"
#include "fe_sorrel.h"

#include "tw_glinclude.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>

// Pictures of scenes whose pixels can be worked out, by the real OpenGL. The camera stands at z = 5 and sees the plane
// z = 0 from -5 to 5 in y, in a window of 80 by 60: 6 pixels for a unit.

using Fennel::Sorrel::Engine;

namespace
{

using Color = std::array<int, 3>;

class SorrelGLTest : public testing::Test
{
protected:
    SorrelGLTest()
    {
        hasDisplay = SDL_Init(SDL_INIT_VIDEO) == 0 && setMode(0);
        file.camera(nullptr, "camera", {0, 0, 5});
    }
    ~SorrelGLTest() override { SDL_Quit(); }

    void SetUp() override
    {
        if (!hasDisplay) GTEST_SKIP() << "no display: " << SDL_GetError();
    }

    static bool setMode(Uint32 flags)
    {
        SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
        return SDL_SetVideoMode(80, 60, 32, SDL_OPENGL | flags) != nullptr;
    }

    std::unique_ptr<Engine> load()
    {
        file.store(archives);
        std::unique_ptr<Engine> engine(new Engine);
        engine->load(archives, "scene.xml");
        draw(*engine, 0);
        return engine;
    }

    static void draw(Engine& engine, float time)
    {
        glViewport(0, 0, 80, 60);
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        engine.updateKeyframing(time);
        engine.draw();
    }

    // The colour at a point of the plane z = 0.
    static Color at(float x, float y)
    {
        unsigned char rgb[4];
        glReadPixels(static_cast<int>(std::floor(40 + 6 * x)), static_cast<int>(std::floor(30 + 6 * y)), 1, 1, GL_RGB,
                     GL_UNSIGNED_BYTE, rgb);
        return {rgb[0], rgb[1], rgb[2]};
    }

    static void expectNear(const Color& color, const Color& expected)
    {
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(color[i], expected[i], 2) << "channel " << i;
    }

    bool hasDisplay;
    Archives archives;
    SceneFile file;
};

const Color black = {0, 0, 0}, red = {255, 0, 0}, green = {0, 255, 0}, blue = {0, 0, 255};

} // namespace

// The lights hang sqrt(2) in front of the quad's middle: 2 from each corner, at an angle of 45 degrees. With a distance
// of 2 half of a light is left there, so a corner gets 0.7071 / 2 of its colour, and with all four alike the whole
// quad.
TEST_F(SorrelGLTest, aLitQuadHasTheColourThatEightLightsLeaveAtItsCorners)
{
    file.material("m", 1, 1, 0.5f, false);
    file.quad("quad", "m");
    file.instance(nullptr, "quad", "quad", {});
    y3d::Dummy* holder = file.add<y3d::Dummy>(nullptr, "holder", {0, 0, 1});
    for (int i = 0; i < 7; ++i) file.light(holder, {0, 0, 0.41421356f}, {i == 0 ? 1.0f : 0.0f, 0, 0}, 2);
    file.light(holder, {0, 0, 0.41421356f}, {0, 0.5f, 1}, 2);
    file.light(holder, {0, 0, 0.41421356f}, {0, 1, 0}, 2); // the ninth: does not shine, but is brought up to date
    const std::unique_ptr<Engine> engine = load();
    expectNear(at(0, 0), {90, 45, 45});
    expectNear(at(0.8f, -0.8f), {90, 45, 45});
    EXPECT_EQ(at(1.3f, 0), black);
    EXPECT_FLOAT_EQ(engine->mLights[8]->mColor[1], 1);
}

TEST_F(SorrelGLTest, aMirroredCubeStillShowsItsOutside)
{
    file.material("front", 1, 0, 0, true);
    file.material("back", 0, 1, 0, true);
    addSubmesh(file.quad("cube", "front", 1), quadAt(-1), {0, 2, 1, 0, 3, 2}, "back");
    file.instance(nullptr, "plain", "cube", {-3, 0, 0});
    y3d::MeshInstance* mirrored = file.instance(nullptr, "mirrored", "cube", {0, 0, 0});
    mirrored->mScale.mX.mBaseValue = -1;
    file.instance(mirrored, "twice", "cube", {-3, 0, 0})->mScale.mY.mBaseValue = -1;
    file.instance(nullptr, "turned", "cube", {0, 3, 0})->mScale.mZ.mBaseValue = -1; // its back comes to the front
    load();
    EXPECT_EQ(at(-3, 0), red);
    EXPECT_EQ(at(0, 0), red);
    EXPECT_EQ(at(3, 0), red);
    EXPECT_EQ(at(0, 3), green);
}

// The top row of a picture lies at t = 0, which the quad has at its lower edge; across modes the picture stays.
TEST_F(SorrelGLTest, texturesLieByRowsAndOutlastFullscreen)
{
    archives.addPicture("a.png", makeImage(2, 2, {0, 0, 255, 255, 0, 0, 255, 255, 255, 0, 0, 255, 255, 0, 0, 255}));
    file.texture(file.material("m", 1, 1, 1, true), "image", "a.png");
    for (Vector3f& uv : *file.quad("quad", "m")->mSubmeshes[0]->mUVWs[0]) uv = Vector3f(0.25f, 0.5f + 0.25f * uv.y, 0);
    file.instance(nullptr, "quad", "quad", {});
    const std::unique_ptr<Engine> engine = load();
    for (const Uint32 flags : {0u, Uint32(SDL_FULLSCREEN), 0u})
    {
        ASSERT_TRUE(setMode(flags));
        draw(*engine, 0);
        expectNear(at(0, -0.9f), {244, 0, 11});
        expectNear(at(0, 0.9f), {11, 0, 244});
    }
}

TEST_F(SorrelGLTest, theFarPlaneCullsAndTheViewStaysForTheNextEffect)
{
    file.material("m", 1, 0, 0, true);
    file.quad("quad", "m");
    animate(file.instance(nullptr, "quad", "quad", {})->mPosition.mZ, 0, -2100);
    const std::unique_ptr<Engine> engine = load();
    EXPECT_EQ(at(0, 0), red);
    draw(*engine, 10);
    EXPECT_TRUE(engine->mRenderManager.mJobs.empty());
    EXPECT_EQ(at(0, 0), black);

    glColor3f(0, 0, 1);
    glRectf(-1, -1, 1, 1); // in the scene's world space
    EXPECT_EQ(at(0.9f, 0), blue);
    EXPECT_EQ(at(1.1f, 0), black);
}
