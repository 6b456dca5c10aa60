#pragma once

#include <vector>

#include "losses.h"
#include "motion.h"
#include "y3d_camera.h"

namespace gltf
{

// The nodes from the top of a tree down to one of them.
using Chain = std::vector<int>;

// The world transform of the last node of a chain.
Affine getWorldMatrix(const Motions& motions, const Chain& chain, double time);

// Makes a camera at the top of the tree out of one that may hang anywhere in it, with its whole movement. Below nodes
// that stand still that is exact; below others the way is sampled `fps` times a second and at all keys, which is told.
// `property` is the JSON pointer of the camera. Owned by the caller.
y3d::Camera* makeCamera(const tinygltf::Camera& source, const std::string& property, const Motions& motions,
                        const Chain& chain, const std::string& name, double fps, Losses& losses);

} // namespace gltf
