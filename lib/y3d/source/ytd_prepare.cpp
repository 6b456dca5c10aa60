#include "ytd_utils.h"

#include "y3d_exception.h"
#include "y3d_mesh.h"
#include "y3d_submesh.h"

#include "nvtristrip/NvTriStrip.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>
#include <memory>
#include <unordered_map>

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
          uvw0(submesh.getNumUVWs() > 0 ? submesh.getUVW(0) : nullptr),
          uvw1(submesh.getNumUVWs() > 1 ? submesh.getUVW(1) : nullptr)
    {
    }

    VectorList* positions;
    VectorList* normals;
    y3d::UVWList* uvw0;
    y3d::UVWList* uvw1;
};

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
           nearlySame(attributes.normals, a, b) && nearlySame(attributes.uvw0, a, b) &&
           nearlySame(attributes.uvw1, a, b);
}

// The vertices kept so far, in cells of space that are wider than twice the tolerance: what equals a vertex lies in its
// cell or, near to a border, in the one behind.
class KeptVertices
{
public:
    KeptVertices(const Attributes& attributes, std::size_t number) : m_attributes(attributes)
    {
        m_cells.reserve(number);
    }

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
            Cell cell;
            bool again = false; // this corner has the cell of another one
            for (int i = 0; i < 3; ++i)
            {
                const bool isHigh = corner >> i & 1;
                cell.at[i] = isHigh ? high[i] : low[i];
                again = again || (isHigh && high[i] == low[i]);
            }
            if (!again) first = std::min(first, findIn(cell, vertex, first));
        }
        return first;
    }

    void keep(std::size_t vertex)
    {
        const Vector3f& p = (*m_attributes.positions)[vertex];
        std::size_t next = NONE;
        if (isFinite(p))
        {
            std::size_t& head = m_cells.emplace(Cell{{cellAt(p.x), cellAt(p.y), cellAt(p.z)}}, NONE).first->second;
            next = head;
            head = m_kept.size();
        }
        m_kept.push_back({vertex, next});
    }

    std::size_t size() const { return m_kept.size(); }

private:
    struct Cell
    {
        double at[3];

        bool operator==(const Cell& other) const
        {
            return at[0] == other.at[0] && at[1] == other.at[1] && at[2] == other.at[2];
        }
    };

    struct CellHash
    {
        std::size_t operator()(const Cell& cell) const
        {
            std::size_t hash = 0;
            for (const double value : cell.at) hash = (hash ^ std::hash<double>()(value)) * 0x9E3779B97F4A7C15u;
            return hash ^ (hash >> 32);
        }
    };

    struct Kept
    {
        std::size_t vertex;
        std::size_t next; // an earlier one in the same cell
    };

    static constexpr std::size_t NONE = static_cast<std::size_t>(-1);
    static constexpr double MARGIN = 2e-6; // rounding of the difference has room in it
    static constexpr double CELL_SIZE = 1e-5;

    static double cellAt(double coordinate) { return std::floor(coordinate / CELL_SIZE); }
    static bool isFinite(const Vector3f& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

    std::size_t findIn(const Cell& cell, std::size_t vertex, std::size_t first) const
    {
        const auto found = m_cells.find(cell);
        if (found == m_cells.end()) return first;
        for (std::size_t place = found->second; place != NONE; place = m_kept[place].next)
        {
            if (place < first && sameVertex(m_attributes, vertex, m_kept[place].vertex)) first = place;
        }
        return first;
    }

    const Attributes& m_attributes;
    std::vector<Kept> m_kept;
    std::unordered_map<Cell, std::size_t, CellHash> m_cells; // the last one kept in each
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
    const VectorList* posList = submesh->getPositions();
    const VectorList* p = posList;
    assert(p);
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
    const VectorList* posList = attributes.positions;
    const VectorList* norList = attributes.normals;
    const y3d::UVWList* uv0 = attributes.uvw0;
    const y3d::UVWList* uv1 = attributes.uvw1;
    assert(posList);
    assert(norList==0 || norList->size()==posList->size());
    assert(uv0==0 || uv0->size()==posList->size());
    assert(uv1==0 || uv1->size()==posList->size());
    checkIndices(*submesh, "mergeVertices");

    std::vector<char> used(posList->size());
    if (submesh->getIndices())
    {
        for (const y3d::Index index : *submesh->getIndices()) used[index] = true;
    }

    KeptVertices kept(attributes, posList->size());
    std::vector<char> removed(posList->size());
    std::vector<y3d::Index> numbers(posList->size()); // without meaning for vertices that are not used
    for (std::size_t i = 0; i < posList->size(); ++i)
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
    compact(attributes.uvw0, removed, kept.size());
    compact(attributes.uvw1, removed, kept.size());
    if (!submesh->getIndices()) return;
    for (y3d::Index& index : *submesh->getIndices()) index = numbers[index];
}

void Utils::cacheOptimize(y3d::Submesh* submesh, int cacheSize)
{
    assert(cacheSize>0);
    const Attributes attributes(*submesh);
    const VectorList* pos = attributes.positions;
    const VectorList* nor = attributes.normals;
    const y3d::UVWList* uv0 = attributes.uvw0;
    const y3d::UVWList* uv1 = attributes.uvw1;
    assert(pos);
    assert(nor==0 || nor->size()==pos->size());
    assert(uv0==0 || uv0->size()==pos->size());
    assert(uv1==0 || uv1->size()==pos->size());
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
    NVIDIA::RemapIndices(primGroups, numPrimGroups, static_cast<unsigned int>(pos->size()), &primGroupsRemapped);
    const std::unique_ptr<NVIDIA::PrimitiveGroup[]> ownerRemapped(primGroupsRemapped);
    assert(primGroupsRemapped!=0);
    assert(primGroups[0].numIndices==primGroupsRemapped[0].numIndices);

    const NVIDIA::PrimitiveGroup& from = primGroups[0];
    const NVIDIA::PrimitiveGroup& to = primGroupsRemapped[0];
    if (submesh->getIndices()) submesh->getIndices()->assign(to.indices, to.indices + to.numIndices);
    submesh->setPositions(moved(pos, from, to).release());
    if (nor) submesh->setNormals(moved(nor, from, to).release());
    if (uv0) submesh->setUVW(0, moved(uv0, from, to).release());
    if (uv1) submesh->setUVW(1, moved(uv1, from, to).release());
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
