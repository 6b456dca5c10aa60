#pragma once

#include "motion.h"
#include "y3d_light.h"

namespace gltf
{

// Makes the lights of a model, which all shine from a point. Colour and energy go into the colour: full is a lamp of
// one candela or a sun of one lux, or the strongest one of its kind if that has more, so that the strengths among each
// other stay. The range becomes the distance of half the brightness.
class Lights
{
public:
    // `scale` is that of the whole scene. All must outlive this.
    Lights(const Model& model, const Motions& motions, double scale, Losses& losses);

    // A light without a place. `number` is that in the model. Owned by the caller; throws y3d::Exception where there is
    // none.
    y3d::Light* make(int number, const std::string& name) const;

    // How far behind its node a light of that number stands, along the z axis: a sun far away, all others not at all.
    double getBackset(int number) const;

private:
    const tinygltf::Light& find(int number) const;
    double getFullIntensity(const tinygltf::Light& light) const;
    void setColor(y3d::Light* light, const tinygltf::Light& source, int number) const;

    const Model& mModel;
    const Motions& mMotions;
    const double mScale;
    Losses& mLosses;
    double mFullLamp = 1.0, mFullSun = 1.0;
};

} // namespace gltf
