#pragma once

#include "maril64k.h"
#include "tw_effect3d.h"
#include "tw_glinclude.h"

// A cube of 1728 glowing streaks that tumbles and twists, slice by slice.
//
// Triggers: "enlarge"    adds to the size of the streaks, which shrinks back by 3 a second
//           "expand"     adds to the size of the cube, likewise
//           "contract"   from now on the cube grows by 1 a second; the value does not matter
//           "end"        accepted; changes nothing one sees
class ParticlesScene : public Tidewheel::Effect3D
{
public:
    ~ParticlesScene() override;
    void setup(AM::ArchiveManager& archive) override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void update(float time, float delta, float position) override;

    float mEnlarge = 1.0f;        // size of each streak
    float mEnlargeTime = 0.0f;    // when it last shrank, in the entry's time
    float mContract = 0.0f;       // seconds since the trigger
    float mContractStart = -1.0f; // -1 for none
    float mExpand = 1.0f;         // size of the cube
    float mExpandTime = 0.0f;
    float mEndTime = -1.0f;                 // -1 for none
    GLuint mList = 0;                       // one streak; owned
    GLuint mTexture = 0;                    // the soft spot, 64 by 64; owned
    std::vector<maril64k::Point3D> mSource; // the cube at rest, 144 points a slice
    std::vector<maril64k::Point3D> mTarget;
    maril64k::Matrix mMatrix;

private:
    void makeSpot();
    void makePoints();
    void drawSlice(int slice, float time);
};
