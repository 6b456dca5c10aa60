#include "meshfaults.h"

std::string faultOfTriangles(const y3d::Submesh& submesh)
{
    const std::size_t numVertices = submesh.getNumVertices();
    if (submesh.getNumIndices() == 0) return "has no triangles";
    if (submesh.getNumIndices() % 3 != 0) return "has indices that are no whole triangles";
    for (const y3d::Index index : *submesh.getIndices())
    {
        if (index >= numVertices)
            return "has " + std::to_string(numVertices) + " vertices and the index " + std::to_string(index);
    }
    return "";
}

std::string faultOfSubmesh(const y3d::Submesh& submesh)
{
    const std::string fault = faultOfTriangles(submesh);
    if (!fault.empty()) return fault;

    const std::size_t numVertices = submesh.getNumVertices();
    if (submesh.getNormals() && submesh.getNormals()->size() != numVertices)
        return "has not one normal for each vertex";
    for (const y3d::UVWList* uvw : submesh.mUVWs)
    {
        if (uvw->size() != numVertices) return "has not one texture coordinate for each vertex";
    }
    if (submesh.getNumUVWs() > 2) return "has more than two texture channels";
    if (!submesh.mColors.empty()) return "has vertex colours";
    if (!submesh.mBoneGroups.empty()) return "has bone groups";
    return "";
}
