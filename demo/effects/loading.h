#pragma once

#include "fe_texture.h"
#include "tw_effect3d.h"

// The loading screen: a line that is spelled out, in the font "font.png", while the effects are set up. The runtime
// drives it by itself; `position` is the share of the work done. It acts on no trigger.
class Loading : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager& archive) override;
    void update(float time, float delta, float position) override;

    Fennel::Texture mFont;
};
