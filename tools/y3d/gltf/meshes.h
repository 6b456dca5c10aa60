#pragma once

#include <map>
#include <string>
#include <vector>

#include "accessors.h"
#include "losses.h"
#include "materials.h"
#include "names.h"
#include "y3d_manager.h"

namespace gltf
{

// Makes the meshes of a scene as its nodes ask for them: a submesh for each material, triangles out of lists, strips
// and fans, flat normals where a lit surface has none, the inside too where it is to be seen, vertices and triangles in
// a good order, boxes.
class Meshes
{
public:
    // The new meshes go to `manager`, their vertices times `scale`. All must outlive this.
    Meshes(const Model& model, Accessors& accessors, Materials& materials, y3d::Manager& manager, double scale,
           Losses& losses)
        : mModel(model), mAccessors(accessors), mMaterials(materials), mManager(manager), mScale(scale), mLosses(losses)
    {
    }

    // The name of a mesh by its number in the model; empty when there is nothing of it to draw.
    const std::string& get(int mesh);

private:
    struct Part;

    std::string make(int mesh);
    bool readPart(const tinygltf::Primitive& primitive, const std::string& title, Part* part);
    void tellIgnored(const tinygltf::Primitive& primitive, const std::string& title, int uvSet);

    const Model& mModel;
    Accessors& mAccessors;
    Materials& mMaterials;
    y3d::Manager& mManager;
    const double mScale;
    Losses& mLosses;
    Names mNames;
    std::map<int, std::string> mMade;
};

} // namespace gltf
