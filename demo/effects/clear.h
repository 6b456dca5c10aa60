#pragma once

#include "tw_effect3d.h"

// Starts a picture: one colour everywhere, with the depth and stencil buffers emptied.
//
// Triggers: "color"   nine decimal digits RRRGGGBBB, 000 to 255 each. Fewer than six throw std::out_of_range.
class Clear : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager&) override {}
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void update(float time, float delta, float position) override;

    float mR = 0; // 0 to 1 each
    float mG = 0;
    float mB = 0;
};
