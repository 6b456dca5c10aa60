#pragma once

#include "tw_effect3d.h"
#include "tw_glinclude.h"

#include <vector>

// A zoom trail: the frame before, enlarged and translucent, lies over the present one, and what comes of it is taken
// for the next frame. The trail feeds on itself, so its strength depends on the frame rate.
//
// Triggers: "amount"         opacity of the trail, 0 to 1
//           "step"           enlargement of the trail at full strength: the frame before is drawn 1 + step times as
//                            large
//           "lowstep"        the enlargement that remains when the zoom has died away
//           "falloffspeed"   share of the step that is lost a second
//           "falloff"        the zoom begins to die away now; the value does not matter
class RadialBlur : public Tidewheel::Effect3D
{
public:
    ~RadialBlur() override;
    void setup(AM::ArchiveManager& archive) override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void update(float time, float delta, float position) override;

    GLuint mTexture = 0;                 // the last frame in the lower left 800 by 600 of 1024 by 1024; owned
    std::vector<unsigned char> mScratch; // what the texture is created from: black
    GLuint mList = 0;                    // the quad that fills the screen; owned
    float mAlpha = 0;
    float mStep = 0;
    float mFalloffSpeed = 0; // a second
    float mFalloffStart = 0; // seconds, in the entry's time
    float mLowStep = 0;
};
