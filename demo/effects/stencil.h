#pragma once

#include "tw_effect3d.h"

// Opens a mask: what the next entries of the frame draw is not seen, it only counts up the stencil buffer. A
// StencilOp closes the mask and puts it to use.
class Stencil : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager&) override {}
    void update(float time, float delta, float position) override;
};
