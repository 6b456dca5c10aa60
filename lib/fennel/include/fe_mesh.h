#pragma once

#include "fe_submesh.h"

#include "mb_aabbpointsf.h"

#include <string>
#include <vector>

namespace y3d
{
class Mesh;
}

namespace Fennel
{

// A named piece of geometry, shared by all nodes that show it.
class Mesh
{
public:
    // Copies the frame of a mesh; the GL buffers are made later, from the source that the submeshes then point to.
    // Throws Fennel::Exception, naming the mesh, when it cannot be drawn: no submesh, no triangles or no vertices, no
    // bounding box, vertex data that is not positions with or without normals and one set of texture coordinates, lists
    // of different lengths, or indices that name no vertex.
    void load(y3d::Mesh* mesh);

    MathBase::AABBpointsf mBoundingBox;
    std::vector<std::string> mMaterialNames; // what the file gives, for each submesh
    std::vector<Submesh> mSubmeshes;
    std::string mName;
};

} // namespace Fennel
