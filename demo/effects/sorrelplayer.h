#pragma once

#include "fe_sorrel.h"
#include "tw_effect3d.h"

// A keyframed 3D scene, played by the time of the entry. It draws over the picture that is there, with a depth buffer
// of its own, and leaves the view of its camera behind for what comes after it.
//
// Splines: "y"   height added to the camera, in tenths of a scene unit
class SorrelPlayer : public Tidewheel::Effect3D
{
public:
    using Effect3D::setup;

    // `sceneFile` names the scene description in the archives. Needs the GL context.
    explicit SorrelPlayer(const std::string& sceneFile);

    // Loads the scene, and throws what Fennel::Sorrel::Engine::load does.
    void setup(AM::ArchiveManager& archive) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    // For effects derived from this one; nothing calls it.
    virtual void trigger(float time, const std::string& name, const std::string& value);

    float mYOffset = 0;
    Fennel::Sorrel::Engine mEngine;
    std::string mSceneFile;
    float mFarPlane = 2000.0f;
};

// Shows where a box is: its eight corners as points, x changing fastest. For a look while working on a scene.
void drawBox(const MathBase::AABBpointsf& box);
