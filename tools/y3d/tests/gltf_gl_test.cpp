#include "fe_camera.h"
#include "fe_scenes.h"
#include "fe_sorrel.h"
#include "gltf/export.h"
#include "gltf/import.h"

#include "tw_glinclude.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

// A scene that goes to glTF and comes back looks as before.

namespace
{

const int WIDTH = 160, HEIGHT = 120;

using Picture = std::vector<unsigned char>;

std::vector<Picture> draw(Archives& archives, const std::vector<float>& times)
{
    Fennel::Sorrel::Engine engine;
    engine.load(archives, "scene.xml");
    std::vector<Picture> pictures;
    for (const float time : times)
    {
        glViewport(0, 0, WIDTH, HEIGHT);
        glClearColor(0, 0, 0.2f, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        engine.updateKeyframing(time);
        engine.draw();
        pictures.emplace_back(WIDTH * HEIGHT * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, WIDTH, HEIGHT, GL_RGB, GL_UNSIGNED_BYTE, pictures.back().data());
    }
    return pictures;
}

std::size_t countOthers(const Picture& a, const Picture& b, int tolerance)
{
    std::size_t others = 0;
    for (std::size_t i = 0; i < a.size(); ++i) others += std::abs(a[i] - b[i]) > tolerance;
    return others;
}

// Keys with handles that are no third of the way, so that nothing but samples can follow them.
void ease(y3d::TrackBlenderFloat& curve, float from, float to)
{
    curve.mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_BEZIER;
    curve.mKeys = {{{-4, from}, {0, from}, {4, from}}, {{4, to}, {10, to}, {16, to}}};
}

void fill(SceneFile& file)
{
    file.texture(file.material("checks", 0.9f, 1, 0.8f, false), "image", "a.png");
    file.attribute(file.manager.mMaterials.back(), "ambient", {0.7f, 0.2f, 0.1f, 1});
    file.attribute(file.manager.mMaterials.back(), "specular", {0.1f, 0.9f, 0.3f, 1});
    file.attribute(file.manager.mMaterials.back(), "hardness", {60, 0, 0, 0});
    file.material("plain", 0.2f, 0.5f, 1.3f, true);
    file.quad("quad", "checks");

    ease(file.camera(nullptr, "eye", {0, 0.3f, 5})->mFov.mCurve, 1.2f, 1.6f);
    y3d::Light* light = file.light(nullptr, {1, 2, 3}, {1.4f, 0.3f, 0.2f}, 4);
    ease(light->mLightColor.mG, 0.1f, 1.7f);
    animate(light->mDistance.mCurve, 2, 9);

    // Turns by angles below a stretch that moves, and carries a mirrored one in another material.
    y3d::MeshInstance* stretched = file.instance(nullptr, "stretched", "quad", {-2, 0, 0});
    stretched->mRotation.mEuler = true;
    ease(stretched->mRotation.mZ, 0.2f, 4);
    animate(stretched->mScale.mX, 0.5f, 2);
    y3d::MeshInstance* mirrored = file.instance(stretched, "mirrored", "quad", {1, 0, 0.5f});
    setVector(mirrored->mScale, {-0.5f, 0.7f, 0.5f});
    mirrored->mMaterialReferences[0] = "plain";

    // Turns through the components of a quaternion, in rounds of two seconds.
    y3d::MeshInstance* wheel = file.instance(nullptr, "wheel", "quad", {2, 0, 0});
    y3d::TrackBlenderFloat* parts[] = {&wheel->mRotation.mW, &wheel->mRotation.mZ};
    for (int i = 0; i < 2; ++i)
    {
        parts[i]->mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_LINEAR;
        parts[i]->mExtrapolation = y3d::TrackBlenderFloat::EXTRAPOLATION_CYCLIC;
        const float end = i == 0 ? 0.5f : 0.866f;
        parts[i]->mKeys = {{{0, 0}, {0, i == 0 ? 1.0f : 0.0f}, {0, 0}}, {{2, 0}, {2, end}, {2, 0}}};
    }
    wheel->mPosition.mY.mExtrapolation = y3d::TrackBlenderFloat::EXTRAPOLATION_LINEAR;
    animate(wheel->mPosition.mY, -1, 1);
}

} // namespace

TEST(GltfGLTest, aSceneComesBackAsItWent)
{
    if (SDL_Init(SDL_INIT_VIDEO) != 0 || !SDL_SetVideoMode(WIDTH, HEIGHT, 32, SDL_OPENGL))
        GTEST_SKIP() << "no display: " << SDL_GetError();
    SceneFile file;
    fill(file);
    Archives before;
    before.addPicture("a.png", makeImage(2, 2, {0, 0, 255, 255, 0, 255, 0, 255, 255, 0, 0, 255, 255, 255, 255, 255}));
    file.store(before);

    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "gltf_gl_test";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "a.png", std::ios::binary) << before["a.png"];
    y3d::Manager source; // names are found in what was loaded
    source.load(reinterpret_cast<const unsigned char*>(before["scene.y3d"].data()),
                static_cast<int>(before["scene.y3d"].size()));
    gltf::Losses losses;
    gltf::ExportOptions options;
    options.fps = 60;
    const gltf::Model model =
        gltf::readModel(gltf::exportScenes(source, folder.string(), options, losses), "scene.glb", "");
    SceneFile back;
    delete back.scene;
    back.manager.mScenes.clear();
    const gltf::Imported imported = gltf::importScene(model, "", {}, back.manager, losses);
    ASSERT_EQ(imported.pictures.size(), 1u);
    Archives after;
    after["a.png"].assign(imported.pictures[0].bytes.begin(), imported.pictures[0].bytes.end());
    back.store(after);
    std::filesystem::remove_all(folder);

    const std::vector<float> times = {0, 0.7f, 1.9f, 3.3f, 5, 7.77f, 9.9f};
    const std::vector<Picture> pictures = draw(before, times), again = draw(after, times);
    for (std::size_t i = 0; i < times.size(); ++i)
    {
        EXPECT_LT(countOthers(pictures[i], again[i], 8), 60u) << "at " << times[i]; // rims of half a pixel
        if (i == 0) continue;
        EXPECT_GT(countOthers(pictures[i], pictures[0], 8), 1000u) << "nothing moves at " << times[i];
    }
    SDL_Quit();
}
