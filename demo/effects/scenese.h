#pragma once

#include "fe_texture.h"
#include "tw_effect3d.h"

// A wide banner, "scenese.png", that crosses the screen from right to left once in the length of its entry and jumps.
//
// Triggers: "jump"         a jump begins now, up and down in turn; the value does not matter
//           "jumpspeed"    radians a second along the half wave of a jump: at 1 a jump takes 3.14 seconds
//           "jumpheight"   units; each jump turns the sign first, so after a positive height the next one goes down
// Splines:  "alpha"        brightness in tenths, 0 to 10
//           "offset"       height of the banner's rest in tenths of a unit
//           "zoom"         towards the viewer in tenths of a unit; below 0 away
class Scenese : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager& archive) override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    float mJumpStart = 0; // seconds, in the entry's time
    float mJumpSpeed = 1; // radians a second
    float mJumpHeight = 2;
    Fennel::Texture mPicture;
    float mAlpha = 0;
    float mOffset = 0;
    float mZoom = 0;
};
