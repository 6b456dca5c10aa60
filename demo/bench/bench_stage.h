#pragma once

#include "tw_effect3d.h"

// Where effects are measured: in front of a window, or of a GL that does nothing. A binary links one of the two.
class BenchStage
{
public:
    static BenchStage& get(); // made on first use
    static void close();

    // Sets the effect up; all pictures of the effects are there.
    void setup(Tidewheel::Effect3D& effect);
    void beginFrame();
    void endFrame();
};
