#pragma once

#include "tw_effect3d.h"
#include "tw_glinclude.h"

// The lower left 72 by 72 pixels of the frame on the whole screen: each as a soft round dot of its colour, on black.
class Pixels : public Tidewheel::Effect3D
{
public:
    ~Pixels() override;
    void setup(AM::ArchiveManager& archive) override;
    void update(float time, float delta, float position) override;

    GLuint mTexture = 0; // the soft spot, 64 by 64; owned
};
