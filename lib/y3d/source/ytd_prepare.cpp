#include "ytd_utils.h"

#include "y3d_exception.h"
#include "y3d_mesh.h"
#include "y3d_submesh.h"

#include "nvtristrip/NvTriStrip.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

// The preparation functions. They have a library of their own, so that what only draws meshes links no stripifier.

namespace ytd
{

using MathBase::Vector3f;

namespace
{

typedef y3d::StructList<Vector3f> VectorList;

const float TOLERANCE = 1e-6f;

// The lists that are merged and sorted together; null for what the submesh lacks.
struct Attributes
{
    explicit Attributes(const y3d::Submesh& submesh)
        : positions(submesh.getPositions()), normals(submesh.getNormals()),
          uv0(submesh.getNumUVWs() > 0 ? submesh.getUVW(0) : nullptr),
          uv1(submesh.getNumUVWs() > 1 ? submesh.getUVW(1) : nullptr)
    {
    }

    VectorList* positions;
    VectorList* normals;
    y3d::UVWList* uv0;
    y3d::UVWList* uv1;
};

// What the two operations ask of the lists: as many entries in each as there are positions.
void checkMergedLists(const VectorList* posList, const VectorList* norList, const y3d::UVWList* uv0,
                      const y3d::UVWList* uv1)
{
    assert(posList);
    assert(norList==0 || norList->size()==posList->size());
    assert(uv0==0 || uv0->size()==posList->size());
    assert(uv1==0 || uv1->size()==posList->size());
}

void checkMovedLists(const VectorList* pos, const VectorList* nor, const y3d::UVWList* uv0, const y3d::UVWList* uv1)
{
    assert(pos);
    assert(nor==0 || nor->size()==pos->size());
    assert(uv0==0 || uv0->size()==pos->size());
    assert(uv1==0 || uv1->size()==pos->size());
}

const VectorList* positionsOf(const y3d::Submesh& submesh)
{
    const VectorList* p = submesh.getPositions();
    assert(p);
    return p;
}

void checkIndices(const y3d::Submesh& submesh, const char* operation)
{
    const std::size_t numVertices = submesh.getPositions()->size();
    if (!submesh.getIndices()) return;
    for (const y3d::Index index : *submesh.getIndices())
    {
        if (index >= numVertices)
            throw y3d::Exception("ytd::Utils::%s, There is no vertex %u (the list has %zu)", operation, index,
                                 numVertices);
    }
}

bool nearlySame(const VectorList* list, std::size_t a, std::size_t b)
{
    if (!list) return true;
    const Vector3f& p = (*list)[a];
    const Vector3f& q = (*list)[b];
    return std::fabs(p.x - q.x) <= TOLERANCE && std::fabs(p.y - q.y) <= TOLERANCE && std::fabs(p.z - q.z) <= TOLERANCE;
}

// Positions differ by less than the tolerance, all else by no more than it.
bool sameVertex(const Attributes& attributes, std::size_t a, std::size_t b)
{
    const Vector3f& p = (*attributes.positions)[a];
    const Vector3f& q = (*attributes.positions)[b];
    return std::fabs(p.x - q.x) < TOLERANCE && std::fabs(p.y - q.y) < TOLERANCE && std::fabs(p.z - q.z) < TOLERANCE &&
           nearlySame(attributes.normals, a, b) && nearlySame(attributes.uv0, a, b) && nearlySame(attributes.uv1, a, b);
}

// The vertices kept so far, in cells of space that are wider than twice the tolerance: what equals a vertex lies in its
// cell or, near to a border, in the one behind. Cells are told apart by a hash: those that have the same one are
// searched together.
class KeptVertices
{
public:
    explicit KeptVertices(const Attributes& attributes) : m_attributes(attributes), m_cells(16, {0, NONE}) {}

    // The place of the first kept vertex that equals one; the number of kept ones when none does.
    std::size_t find(std::size_t vertex) const
    {
        const Vector3f& p = (*m_attributes.positions)[vertex];
        std::size_t first = m_kept.size();
        if (!isFinite(p)) return first; // equals not even itself
        double low[3], high[3];
        for (int i = 0; i < 3; ++i)
        {
            low[i] = cellAt(p[i] - MARGIN);
            high[i] = cellAt(p[i] + MARGIN);
        }
        for (int corner = 0; corner < 8; ++corner)
        {
            double at[3];
            bool again = false; // this corner has the cell of another one
            for (int i = 0; i < 3; ++i)
            {
                const bool isHigh = corner >> i & 1;
                at[i] = isHigh ? high[i] : low[i];
                again = again || (isHigh && high[i] == low[i]);
            }
            if (!again) first = std::min(first, findIn(m_cells[slotOf(hashOf(at))].last, vertex, first));
        }
        return first;
    }

    void keep(std::size_t vertex)
    {
        const Vector3f& p = (*m_attributes.positions)[vertex];
        std::size_t next = NONE;
        if (isFinite(p))
        {
            const double at[3] = {cellAt(p.x), cellAt(p.y), cellAt(p.z)};
            const std::uint64_t hash = hashOf(at);
            Cell& cell = m_cells[slotOf(hash)];
            next = cell.last;
            cell = {hash, m_kept.size()};
        }
        m_kept.push_back({vertex, next});
        if (2 * m_kept.size() > m_cells.size()) doubleCells();
    }

    std::size_t size() const { return m_kept.size(); }

private:
    struct Cell
    {
        std::uint64_t hash;
        std::size_t last; // the place of the last vertex kept in it, NONE for a free slot
    };

    struct Kept
    {
        std::size_t vertex;
        std::size_t next; // an earlier one in the same cell
    };

    static constexpr std::size_t NONE = static_cast<std::size_t>(-1);
    static constexpr double MARGIN = 2e-6; // rounding of the difference has room in it
    static constexpr double CELL_SIZE = 1e-5;

    static double cellAt(double coordinate) { return std::floor(coordinate / CELL_SIZE) + 0.0; } // never -0
    static bool isFinite(const Vector3f& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

    static std::uint64_t hashOf(const double* cell)
    {
        std::uint64_t hash = 0;
        for (int i = 0; i < 3; ++i)
        {
            std::uint64_t bits;
            std::memcpy(&bits, cell + i, sizeof bits);
            hash = (hash ^ bits) * 0x9E3779B97F4A7C15u;
            hash ^= hash >> 32;
        }
        return hash;
    }

    // The slot of a cell, or the free one where it is to be put. At most half of the slots are in use.
    std::size_t slotOf(std::uint64_t hash) const
    {
        std::size_t slot = hash & (m_cells.size() - 1);
        while (m_cells[slot].last != NONE && m_cells[slot].hash != hash) slot = (slot + 1) & (m_cells.size() - 1);
        return slot;
    }

    // No more slots than what is kept needs stay in the processor's cache longer.
    void doubleCells()
    {
        std::vector<Cell> before(2 * m_cells.size(), {0, NONE});
        before.swap(m_cells);
        for (const Cell& cell : before)
        {
            if (cell.last != NONE) m_cells[slotOf(cell.hash)] = cell;
        }
    }

    std::size_t findIn(std::size_t place, std::size_t vertex, std::size_t first) const
    {
        for (; place != NONE; place = m_kept[place].next)
        {
            if (place < first && sameVertex(m_attributes, vertex, m_kept[place].vertex)) first = place;
        }
        return first;
    }

    const Attributes& m_attributes;
    std::vector<Kept> m_kept;
    std::vector<Cell> m_cells;
};

void compact(VectorList* list, const std::vector<char>& removed, std::size_t numKept)
{
    if (!list) return;
    std::size_t place = 0;
    for (std::size_t i = 0; i < list->size(); ++i)
    {
        if (!removed[i]) (*list)[place++] = (*list)[i];
    }
    list->resize(numKept);
}

// A list of the same size, zero but for the vertices that `from` names, which go to where `to` has them.
std::unique_ptr<VectorList> moved(const VectorList* list, const NVIDIA::PrimitiveGroup& from,
                                  const NVIDIA::PrimitiveGroup& to)
{
    if (!list) return nullptr;
    std::unique_ptr<VectorList> result(new VectorList(list->size(), Vector3f(0, 0, 0)));
    for (unsigned int i = 0; i < from.numIndices; ++i) (*result)[to.indices[i]] = (*list)[from.indices[i]];
    return result;
}

} // namespace

void Utils::updateBoundingBox(y3d::Submesh* submesh, bool force)
{
    assert(submesh);
    if (submesh->getNumIndices() == 0) throw y3d::Exception("Tool::updateBoundingbox; 0 indices!");
    if (!force && submesh->hasBoundingBox()) return;

    const y3d::StructList<y3d::Index>* indexList = submesh->getIndices();
    const VectorList* posList = positionsOf(*submesh);
    assert(indexList->size()>0);
    MathBase::AABBpointsf box;
    bool isFirst = true;
    for (const y3d::Index pos : *indexList)
    {
        assert(pos<posList->size());
        if (isFirst) box = MathBase::AABBpointsf((*posList)[pos], (*posList)[pos]);
        isFirst = false;
        box.includePoint((*posList)[pos]);
    }
    submesh->mBoundingBox = box;
    submesh->mHasBoundingBox = true;
}

void Utils::updateBoundingBoxes(y3d::Mesh* mesh, bool force)
{
    assert(mesh);
    if (mesh->getNumSubmeshes() == 0) throw y3d::Exception("Tool::updateBoundingbox; 0 indices!");
    if (!force && mesh->hasBoundingBox()) return;

    MathBase::AABBpointsf box;
    for (int i = 0; i < mesh->getNumSubmeshes(); ++i)
    {
        y3d::Submesh* submesh = mesh->getSubmesh(i);
        assert(submesh);
        updateBoundingBox(submesh, force);
        if (i == 0) box = submesh->getBoundingBox();
        box.includePoint(submesh->getBoundingBox().mMin);
        box.includePoint(submesh->getBoundingBox().mMax);
    }
    mesh->mBoundingBox = box;
    mesh->mHasBoundingBox = true;
}

void Utils::mergeVertices(y3d::Submesh* submesh)
{
    const Attributes attributes(*submesh);
    checkMergedLists(attributes.positions, attributes.normals, attributes.uv0, attributes.uv1);
    checkIndices(*submesh, "mergeVertices");

    const std::size_t numVertices = attributes.positions->size();
    std::vector<char> used(numVertices);
    if (submesh->getIndices())
    {
        for (const y3d::Index index : *submesh->getIndices()) used[index] = true;
    }

    KeptVertices kept(attributes);
    std::vector<char> removed(numVertices);
    std::vector<y3d::Index> numbers(numVertices); // without meaning for vertices that are not used
    for (std::size_t i = 0; i < numVertices; ++i)
    {
        removed[i] = true;
        if (!used[i]) continue;
        const std::size_t place = kept.find(i);
        numbers[i] = static_cast<y3d::Index>(place);
        if (place < kept.size()) continue;
        kept.keep(i);
        removed[i] = false;
    }

    compact(attributes.positions, removed, kept.size());
    compact(attributes.normals, removed, kept.size());
    compact(attributes.uv0, removed, kept.size());
    compact(attributes.uv1, removed, kept.size());
    if (!submesh->getIndices()) return;
    for (y3d::Index& index : *submesh->getIndices()) index = numbers[index];
}

void Utils::cacheOptimize(y3d::Submesh* submesh, int cacheSize)
{
    assert(cacheSize>0);
    const Attributes attributes(*submesh);
    checkMovedLists(attributes.positions, attributes.normals, attributes.uv0, attributes.uv1);
    checkIndices(*submesh, "cacheOptimize");

    NVIDIA::SetCacheSize(static_cast<unsigned int>(cacheSize));
    NVIDIA::SetListsOnly(true);
    std::vector<unsigned int> indices;
    if (submesh->getIndices()) indices.assign(submesh->getIndices()->begin(), submesh->getIndices()->end());
    NVIDIA::PrimitiveGroup* primGroups = nullptr;
    NVIDIA::PrimitiveGroup* primGroupsRemapped = nullptr;
    unsigned int numPrimGroups = 0;
    NVIDIA::GenerateStrips(indices.data(), static_cast<unsigned int>(indices.size()), &primGroups, &numPrimGroups,
                           false);
    const std::unique_ptr<NVIDIA::PrimitiveGroup[]> owner(primGroups);
    assert(primGroups!=0);
    assert(numPrimGroups==1);
    NVIDIA::RemapIndices(primGroups, numPrimGroups, static_cast<unsigned int>(attributes.positions->size()),
                         &primGroupsRemapped);
    const std::unique_ptr<NVIDIA::PrimitiveGroup[]> ownerRemapped(primGroupsRemapped);
    assert(primGroupsRemapped!=0);
    assert(primGroups[0].numIndices==primGroupsRemapped[0].numIndices);

    const NVIDIA::PrimitiveGroup& from = primGroups[0];
    const NVIDIA::PrimitiveGroup& to = primGroupsRemapped[0];
    if (submesh->getIndices()) submesh->getIndices()->assign(to.indices, to.indices + to.numIndices);
    submesh->setPositions(moved(attributes.positions, from, to).release());
    if (attributes.normals) submesh->setNormals(moved(attributes.normals, from, to).release());
    if (attributes.uv0) submesh->setUVW(0, moved(attributes.uv0, from, to).release());
    if (attributes.uv1) submesh->setUVW(1, moved(attributes.uv1, from, to).release());
}

void Utils::optimizeSubmesh(y3d::Submesh* submesh, int cacheSize)
{
    assert(submesh!=0);
    assert(cacheSize>=0);
    mergeVertices(submesh);
    if (cacheSize > 0) cacheOptimize(submesh, cacheSize);
}

void Utils::optimizeMesh(y3d::Mesh* mesh, int cacheSize)
{
    assert(mesh!=0);
    for (int i = 0; i < mesh->getNumSubmeshes(); ++i) optimizeSubmesh(mesh->getSubmesh(i), cacheSize);
}

} // namespace ytd
