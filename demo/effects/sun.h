#pragma once

#include "fe_texture.h"
#include "tw_effect3d.h"

#include <memory>
#include <vector>

// A cloud of two thousand spinning sparks that climb; its outline can be bent into a cone.
//
// Splines: "width"    leans the cloud sideways along its height, in tenths
//          "base"     widens it as a whole, in tenths
//          "cone"     widens it in proportion to the height, in tenths
//          "alpha"    brightness of the flicker, in tenths
//          "rotate"   degrees
class Sun : public Tidewheel::Effect3D
{
public:
    struct stardate
    {
        float x, y, z; // -1 to 1
        float size;    // half the width of the spark; also how fast it climbs
    };

    void setup(AM::ArchiveManager& archive) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    Fennel::Texture mTexture;
    float mWidth = 0;
    float mCone = 0;
    float mAlpha = 0;
    float mBase = 0;
    float mRotate = 0;
    std::vector<std::unique_ptr<stardate>> mStars;
};
