#include "meshorder.h"

#include "silentoutput.h"
#include "ytd_utils.h"

namespace
{

// What the order is made of.
struct Order
{
    explicit Order(const y3d::Submesh& submesh) : indices(*submesh.getIndices()), positions(*submesh.getPositions())
    {
        if (submesh.getNormals()) normals = *submesh.getNormals();
        for (const y3d::UVWList* list : submesh.mUVWs) uvws.push_back(*list);
    }

    void putBack(y3d::Submesh* submesh) const
    {
        *submesh->getIndices() = indices;
        *submesh->getPositions() = positions;
        if (submesh->getNormals()) *submesh->getNormals() = normals;
        for (std::size_t i = 0; i < uvws.size(); ++i) *submesh->mUVWs[i] = uvws[i];
    }

    y3d::StructList<y3d::Index> indices;
    y3d::StructList<MathBase::Vector3f> positions, normals;
    std::vector<y3d::UVWList> uvws;
};

} // namespace

std::size_t countMisses(const y3d::Submesh& submesh, std::size_t cacheSize)
{
    std::vector<std::size_t> loads(submesh.getNumVertices()); // the number of the last load of each vertex, 0 for none
    std::size_t misses = 0;
    for (const y3d::Index index : *submesh.getIndices())
    {
        if (loads[index] == 0 || misses - loads[index] >= cacheSize) loads[index] = ++misses;
    }
    return misses;
}

void improveOrder(y3d::Submesh* submesh, int cacheSize)
{
    ytd::Utils::mergeVertices(submesh);
    if (cacheSize == 0) return;
    const Order before(*submesh);
    const std::size_t misses = countMisses(*submesh, cacheSize);
    {
        const SilentOutput silence; // a line for each edge with more than two triangles
        ytd::Utils::cacheOptimize(submesh, cacheSize);
    }
    if (submesh->getNumIndices() == 0 || countMisses(*submesh, cacheSize) > misses) before.putBack(submesh);
}
