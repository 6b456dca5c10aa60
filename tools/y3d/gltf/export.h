#pragma once

#include <string>
#include <vector>

#include "losses.h"
#include "y3d_manager.h"

namespace gltf
{

struct ExportOptions
{
    double fps = 30.0;    // for what must be sampled
    double length = -1.0; // seconds of animation; below 0 to the last key of each scene
};

// A GLB file of all scenes of a Y3D file, with the pictures out of a folder in it. What glTF cannot hold goes to
// `losses`. Throws y3d::Exception.
std::vector<unsigned char> exportScenes(const y3d::Manager& manager, const std::string& pictures,
                                        const ExportOptions& options, Losses& losses);

} // namespace gltf
