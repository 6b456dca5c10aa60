#include "fe_mesh.h"

#include "fe_exception.h"

#include "y3d_mesh.h"
#include "y3d_submesh.h"
#include "ytd_utils.h"

namespace Fennel
{

namespace
{

// The scene file comes from outside, so whatever would lead the buffers or the driver astray is refused here, by name.
void checkSubmesh(const std::string& mesh, int index, const y3d::Submesh& submesh)
{
    const char* name = mesh.c_str();
    const std::size_t numVertices = submesh.getNumVertices();
    if (submesh.getNumIndices() == 0 || numVertices == 0)
        throw Exception("Mesh::load, Submesh %d of mesh '%s' is empty (%d indices, %d vertices)", index, name,
                        submesh.getNumIndices(), submesh.getNumVertices());
    if (!submesh.hasBoundingBox())
        throw Exception("Mesh::load, Submesh %d of mesh '%s' has no bounding box", index, name);

    const unsigned int format = ytd::Utils::getFormat(&submesh);
    if (!ytd::canBeDrawn(format))
        throw Exception("Mesh::load, Submesh %d of mesh '%s' has a vertex format that cannot be drawn (%u): only "
                        "positions, normals and one set of texture coordinates can",
                        index, name, format);

    if ((format & ytd::FORMAT_NORMAL) && submesh.getNormals()->size() != numVertices)
        throw Exception("Mesh::load, Submesh %d of mesh '%s' has %zu normals for %zu vertices", index, name,
                        submesh.getNormals()->size(), numVertices);
    if ((format & ytd::FORMAT_UVW_0) && submesh.getUVW(0)->size() != numVertices)
        throw Exception("Mesh::load, Submesh %d of mesh '%s' has %zu texture coordinates for %zu vertices", index, name,
                        submesh.getUVW(0)->size(), numVertices);

    for (const y3d::Index vertex : *submesh.getIndices())
    {
        if (vertex >= numVertices)
            throw Exception("Mesh::load, Submesh %d of mesh '%s' has an index to vertex %u of %zu", index, name, vertex,
                            numVertices);
    }
}

} // namespace

void Mesh::load(y3d::Mesh* mesh)
{
    mName = mesh->getName();
    const int numSub = mesh->getNumSubmeshes();
    if (numSub == 0) throw Exception("Mesh::load, Mesh '%s' has no submesh", mName.c_str());
    if (!mesh->hasBoundingBox()) throw Exception("Mesh::load, Mesh '%s' has no bounding box", mName.c_str());
    mBoundingBox = mesh->getBoundingBox();

    mSubmeshes.resize(numSub);
    mMaterialNames.resize(numSub);
    for (int i = 0; i < numSub; ++i)
    {
        y3d::Submesh* original = mesh->getSubmesh(i);
        checkSubmesh(mName, i, *original);
        mSubmeshes[i].mSource = original;
        mSubmeshes[i].mBoundingBox = original->getBoundingBox();
        mMaterialNames[i] = original->getMaterialName();
    }
}

} // namespace Fennel
