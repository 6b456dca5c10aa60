#pragma once

#include <map>
#include <string>
#include <vector>

#include "glb.h"
#include "losses.h"
#include "y3d_manager.h"
#include "y3d_mesh.h"
#include "y3d_meshinstance.h"

namespace gltf
{

// Writes meshes and materials of a Y3D file to a GLB file as the nodes ask for them.
class Surfaces
{
public:
    // `pictures` is the folder that the materials' pictures lie in. All must outlive this.
    Surfaces(const y3d::Manager& manager, const std::string& pictures, Glb& glb, Losses& losses)
        : mManager(manager), mPictures(pictures), mGlb(glb), mLosses(losses)
    {
    }

    // The number of the mesh of an instance with the instance's own materials; -1, and told, where it cannot be drawn.
    int addMesh(const y3d::MeshInstance& instance);

private:
    int makeMesh(const y3d::Mesh& mesh, const std::vector<std::string>& materials);
    Glb::Json makeGeometry(const y3d::Submesh& submesh);
    int addMaterial(const std::string& name);
    int addTexture(const std::string& image, const std::string& title);

    const y3d::Manager& mManager;
    const std::string mPictures;
    Glb& mGlb;
    Losses& mLosses;
    std::map<std::pair<const y3d::Mesh*, std::vector<std::string>>, int> mMeshes;
    std::map<const y3d::Submesh*, Glb::Json> mGeometry; // shared by meshes that differ in their materials
    std::map<std::string, int> mMaterials, mTextures;
};

} // namespace gltf
