#pragma once

#include "tw_effect3d.h"

#include <vector>

// An endless flight through a lattice of 2197 brown cubes. It has neither triggers nor splines.
class Infinity : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager& archive) override;
    void update(float time, float delta, float position) override;

    std::vector<float> mPoints; // x, y, z of each cube

    static float mytime; // place in the flight, 0 to 3.52
};
