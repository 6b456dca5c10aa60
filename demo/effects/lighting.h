#pragma once

#include "tw_effect3d.h"

#include <vector>

// Twenty shivering strokes of lightning from the left edge of the screen to the right.
//
// Splines: "alpha"   brightness, in tenths
//          "mod"     width of the shiver, in tenths: at 10 each stroke is one line, away from it it breaks into teeth
class Lighting : public Tidewheel::Effect3D
{
public:
    struct point
    {
        float phaseX, phaseY, phaseZ; // radians; of the two end points: the place itself
        float speedX, speedY, speedZ; // radians a second
        float radius;                 // of the circle that the point runs on
    };

    struct flash
    {
        std::vector<point> points;
        float r, g, b;
    };

    void setup(AM::ArchiveManager& archive) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    std::vector<flash> mFlashes;
    float mAlpha = 0;
    float mMod = 0;

private:
    void drawFlash(flash& stroke, float delta) const;
};
