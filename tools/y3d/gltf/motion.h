#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "accessors.h"
#include "losses.h"
#include "sampler.h"

namespace gltf
{

// How a node stands below its parent, and how it moves. Values that have keys are not read at rest.
struct Motion
{
    bool moves() const { return translationKeys || rotationKeys || scaleKeys; }
    bool turns() const;        // ever
    bool scalesEvenly() const; // always by one factor in all directions

    Affine getMatrix(double time) const;

    Vec3 translation = {0, 0, 0};
    Quat rotation;
    Vec3 scale = {1, 1, 1};
    std::optional<Sampler> translationKeys, rotationKeys, scaleKeys;
    std::optional<Mat3> matrix; // in place of rotation and scale, for one that is no product of the two
};

struct Motions
{
    std::vector<Motion> nodes; // one for each of the model
    // What else moves, by the JSON pointer to the property ("/cameras/0/perspective/yfov"): up to four numbers a key,
    // the ones that are missing 0.
    std::map<std::string, Sampler> properties;
};

// Reads how the nodes stand and move. `animation` is the name or number of the one to take; when it is empty all are
// taken, each in its own nodes, as exporters write one for each object. Throws y3d::Exception for data that is broken
// and for an animation that is not there.
Motions readMotions(const Model& model, Accessors& accessors, const std::string& animation, double scale,
                    Losses& losses);

} // namespace gltf
