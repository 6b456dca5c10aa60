#pragma once

#include "tw_effect3d.h"

// A coloured sheet over the picture that fades away over the length of its entry.
//
// Triggers: "r", "g", "b"   the colour, 0 to 1 each
class Flash : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager&) override {}
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void update(float time, float delta, float position) override;

    float mR = 0;
    float mG = 0;
    float mB = 0;
};
