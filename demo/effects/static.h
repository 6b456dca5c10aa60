#pragma once

#include "tw_effect3d.h"
#include "tw_glinclude.h"

// Black noise over the picture, as of a detuned receiver, that flickers from frame to frame.
//
// Triggers: "falloff"        the noise begins to fade now; the value does not matter
//           "falloffspeed"   opacity lost a second
//           "size"           1 covers the screen; more makes the grains coarser, less leaves a border
class Static : public Tidewheel::Effect3D
{
public:
    ~Static() override;
    void setup(AM::ArchiveManager& archive) override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void update(float time, float delta, float position) override;

    GLuint mTexture = 0;     // the noise, 512 by 512 alpha values; owned
    int mFrame = 0;          // where in the table of mappings the next frame begins, in coordinate pairs
    float mFalloffSpeed = 0; // a second
    float mFalloffStart = 0; // seconds, in the entry's time
    float mSize = 1;
};
