#pragma once

#include "tw_effect3d.h"

#include <vector>

// Two thousand black squares that tumble outwards from the middle of the screen, fade, and begin again.
//
// Splines: "intensity"   opacity, in hundredths
//          "size"        how far they fly, in tenths
class Fire : public Tidewheel::Effect3D
{
public:
    // Distances from the middle: 0 to 2; visible up to 1. Angles of the rotation in degrees.
    struct Particle
    {
        float angle; // radians
        float distance;
        float speed;
        float red, green, blue;
        float rotationX, rotationY, rotationZ;
        float size;
    };

    void setup(AM::ArchiveManager& archive) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    float mIntensity = 0;
    float mSize = 0;
    std::vector<Particle> mParticles;

private:
    void move(float delta);
    void draw() const;
};
