#pragma once

#include <vector>

#include "linear.h"

namespace gltf
{

// An animated value with one component, three (translation, scale) or four (rotation: w, x, y, z, unlike in a file).
// Before its first key and behind its last one it stays.
struct Sampler
{
    enum Mode
    {
        STEP,
        LINEAR, // a rotation turns at a constant speed along the shortest way
        CUBIC   // Hermite's curve, component by component; a rotation is normalised afterwards
    };

    struct Key
    {
        double time;
        std::vector<double> value;
        std::vector<double> in, out; // for CUBIC: change of value a second, before and behind the key
    };

    // Rotations come out with length 1.
    std::vector<double> getValue(double time) const;
    Vec3 getVector(double time) const;
    Quat getRotation(double time) const;

    // True when all keys have one value and nothing happens between them.
    bool isConstant() const;

    // The samplers of a value that is always a map of this one's.
    Sampler moved(const Affine& map) const;                       // of a point
    Sampler turned(const Quat& before, const Quat& behind) const; // before * rotation * behind

    Mode mode = LINEAR;
    std::vector<Key> keys; // at least one, ascending in time
};

// The keys of a linear or STEP rotation as numbers that the component-wise way of Y3D takes within `tolerance` radians:
// signs are brought to the shortest way, and keys are added where the turn from one to the next is wide.
Sampler refinedRotation(const Sampler& sampler, double tolerance);

} // namespace gltf
