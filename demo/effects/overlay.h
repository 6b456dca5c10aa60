#pragma once

#include "fe_texture.h"
#include "tw_effect3d.h"

// The picture "overlay.png" over the whole screen.
//
// Splines: "alpha"   opacity in hundredths, 0 to 100
class Overlay : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager& archive) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    Fennel::Texture mPicture;
    float mAlpha = 0; // 0 to 1
};
