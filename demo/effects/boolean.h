#pragma once

#include "tw_effect3d.h"

// Two turning cubes and what is inside both of them, solved pixel by pixel with the stencil buffer, in the lower left
// 72 by 72 pixels of the frame. The viewport stays at this square: Pixels, after it, shows it on the whole screen.
class Boolean : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager&) override {}
    void update(float time, float delta, float position) override;

    // A cube of side 1 about the origin, with normals.
    void drawPoly1();

private:
    void drawMarkedFaces();
};
