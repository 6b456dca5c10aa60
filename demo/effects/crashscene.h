#pragma once

#include "tw_effect3d.h"

// The axis of the next crash: 0 to 3, counting on over all entries of a run.
extern int crashType;

// The picture that Render2Texture has taken is put together again from 10 by 10 tiles that fly in, turning, over what
// the frame shows; at the end of the transition nothing is left of them.
//
// Triggers: "speed"   of the transition: crashes a second, so 0.5 takes two seconds
//           "crash"   the transition begins now, about the next axis; the value does not matter
//           "color"   "white" or anything else; without effect on the picture
class CrashScene : public Tidewheel::Effect3D
{
public:
    void setup(AM::ArchiveManager& archive) override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void update(float time, float delta, float position) override;

    float mCrashTime = 0; // seconds, in the entry's time
    float mSpeed = 0;     // a second
    float mColor = 0;     // 1 for white, else 0

private:
    void drawTiles(float v);
};
