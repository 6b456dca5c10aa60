#pragma once

#include "tw_effect3d.h"
#include "tw_glinclude.h"

// Thin black vertical lines at random places, new in each frame, like scratches on film.
//
// Triggers: "count"   number of lines, 100 at the start
// Splines:  "alpha"   opacity, in tenths
class LinesScene : public Tidewheel::Effect3D
{
public:
    ~LinesScene() override;
    void setup(AM::ArchiveManager& archive) override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    GLuint mList = 0; // one line; owned
    int mCount = 100;
    float mAlpha = 1.0f;
};
