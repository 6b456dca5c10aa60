#pragma once

#include <string>
#include <vector>

#include "losses.h"
#include "model.h"
#include "pictures.h"
#include "y3d_manager.h"

namespace gltf
{

struct ImportOptions
{
    int scene = -1;        // -1 for the one that the file shows first
    std::string animation; // name or number; empty for all
    double fps = 30.0;     // for what must be sampled
    double scale = 1.0;    // of everything
};

struct Imported
{
    std::string sceneName;
    std::vector<Pictures::File> pictures; // that the materials name
};

// Turns a scene of a model into the objects of a Y3D file, which go to the empty `manager`. `folder` is where the
// model's pictures lie, empty for none. What Y3D cannot hold goes to `losses`. Throws y3d::Exception.
Imported importScene(const Model& model, const std::string& folder, const ImportOptions& options, y3d::Manager& manager,
                     Losses& losses);

} // namespace gltf
