#pragma once

#include "fe_texture.h"
#include "maril64k.h"
#include "tw_effect3d.h"
#include "tw_glinclude.h"

// A sphere before a panning landscape. It wears a texture of moving soft particles, drawn anew each frame, and up to
// forty ever larger, ever fainter shells of itself, which make a halo. It begins a new picture: what stood in the frame
// is gone.
//
// Triggers: "speed"       motion towards the target, a second, in thousandths of the distance left
//           "move"        a new random place to go to; the value does not matter
//           "layers"      number of shells, 40 at the start
//           "count"       number of particles, 10 at the start
// Splines:  "alphastep"   opacity lost a shell, in hundredths
//           "step"        growth a shell, in hundredths
//           "size"        particle size in texels of the 128 wide texture
class Ball : public Tidewheel::Effect3D
{
public:
    Ball();
    ~Ball() override;
    void setup(AM::ArchiveManager& archive) override;
    void resetTriggers() override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    // Renders the particles into the corner of the frame and copies them into the sphere's texture; clears the frame.
    void drawParticles(float time);

    Fennel::Texture mBackground;
    GLUquadric* mQuadric = nullptr; // owned
    GLuint mParticle = 0;           // the soft spot, 32 by 32; owned
    GLuint mSphereTexture = 0;      // owned
    float mSize = 24.0f;
    float mSpeed = 0.0f;
    float mAlphaStep = 0.025f;
    float mStep = 0.035f;
    int mCount = 10;
    int mLayers = 40;
    maril64k::Point3D mPosition;
    maril64k::Point3D mTarget;

private:
    void chooseTarget();
    void drawBackground(float position) const;
    void drawSphere(float time) const;
};
