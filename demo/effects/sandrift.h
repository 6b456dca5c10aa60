#pragma once

#include "fe_texture.h"
#include "tw_effect3d.h"

// The group's logo across the screen: "sandrift_ghost.png" first, "sandrift.png" after the trigger. A new entry begins
// with the ghost again. The pictures are three times as wide as high.
//
// Triggers: "change"   from the ghost to the logo; the value does not matter
// Splines:  "alpha"    opacity in tenths, 0 to 10
class Sandrift : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager& archive) override;
    void resetTriggers() override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    Fennel::Texture mPictures[2]; // the ghost, the logo
    int mWhich = 0;
    float mAlpha = 0;
};
