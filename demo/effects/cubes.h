#pragma once

#include "tw_effect3d.h"

#include <vector>

// A glowing cube that splits into eight, into 64, and so on, once for each trigger.
//
// Triggers: any name   one level deeper; from the fifth on there is nothing left to see
// Splines:  "explode"  distance of the cubes from the middle, in tenths: 0 all in one place, 10 touching
//           "zoom"     towards the viewer, in units
//           "alpha"    opacity, in tenths
//           "bounce"   downwards, in units
class Cubes : public Tidewheel::Effect3D
{
public:
    struct cube
    {
        float x = 0;
        float y = 0;
        float z = 0;
        cube* children = nullptr; // eight of them, owned; null at the deepest level
    };

    Cubes() = default;
    ~Cubes() override;
    Cubes(const Cubes&) = delete;
    Cubes& operator=(const Cubes&) = delete;

    void setup(AM::ArchiveManager& archive) override;
    void resetTriggers() override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    cube mRoot;
    float mAlpha = 0;
    int mLevel = 0;
    float mSize = 1.0f;
    float mExplode = 0;
    float mZoom = 0;
    float mBounce = 0;

private:
    static void setupCube(cube& parent, int depth);
    static void freeCube(cube& parent);
    void drawCube(const cube& parent, int depth) const;
};
