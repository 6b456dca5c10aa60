#pragma once

#include "maril64k.h"
#include "tw_effect3d.h"

// Five stars of six tapering arms that wind and unwind, shaded in three flat bands.
//
// Splines: "speed"   motion, in tenths; 20 at the start
class TwisterScene : public Tidewheel::Effect3D
{
public:
    ~TwisterScene() override;
    void setup(AM::ArchiveManager& archive) override;
    void updateSpline(float time, const std::string& name, float value) override;
    void update(float time, float delta, float position) override;

    maril64k::Polyhedron mPolyhedron;
    maril64k::Matrix mMatrix;
    std::vector<maril64k::Point3D> mBaseVertices; // the star at rest
    std::vector<maril64k::Point3D> mBaseNormals;
    float mSpeed = 2.0f;

private:
    void makeStar();
    void makeCelTexture();
    void twist(float time);
};
