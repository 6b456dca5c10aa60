#pragma once

#include "tw_effect3d.h"
#include "tw_glinclude.h"

// The picture that Render2Texture last took: a texture of 1024 by 1024 whose lower left corner of 800 by 600 it fills.
// 0 before its setup.
extern GLuint render_texture;

// Shows nothing: takes what the entries before it have drawn into `render_texture`, for CrashScene.
class Render2Texture : public Tidewheel::Effect3D
{
public:
    ~Render2Texture() override;
    void setup(AM::ArchiveManager& archive) override;
    void update(float time, float delta, float position) override;
};
