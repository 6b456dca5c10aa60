#pragma once

#include "tw_effect3d.h"
#include "tw_glinclude.h"

// Closes a mask that Stencil has opened and clips what comes after it in the frame by the mask.
//
// Triggers: "mode"   "include": draw only where the mask is; "exclude": only where it is not; "normal": everywhere
class StencilOp : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager&) override {}
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void update(float time, float delta, float position) override;

    GLenum mComparison = GL_NOTEQUAL; // of the stencil buffer with 0
};
