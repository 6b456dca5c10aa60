#pragma once

#include "tw_effect3d.h"

#include <string>

// Rings round the middle of the screen that swell on each beat.
//
// Triggers: "beat"    how far the rings swell, as a share of their size; dies away at half in a fifth of a second
// Splines:  "count"   how many rings
//           "alpha"   opacity, 0 to 1
class Rings : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager&) override {}
    void resetTriggers() override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    float mBeat = 0;     // how far the last beat swells the rings
    float mBeatTime = 0; // when it came, in seconds of the entry
    float mCount = 5;
    float mAlpha = 1;
};
