#pragma once

#include "tw_effect3d.h"

// Bands of white light that flood the screen: they begin at the top and grow one after the other down it, over the
// length of the entry.
class Blood : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager&) override {}
    void update(float time, float delta, float position) override;
};
