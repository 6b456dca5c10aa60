#include "meshcheck.h"

#include "text.h"
#include "ytd_format.h"
#include "ytd_utils.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

namespace
{

using MathBase::AABBpointsf;
using MathBase::Vector3f;

const std::size_t MIN_TRIANGLES = 4; // fewer enclose nothing

bool isFinite(const Vector3f& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool isWild(const y3d::StructList<Vector3f>* list)
{
    return list && !std::all_of(list->begin(), list->end(), isFinite);
}

// With room for the rounding of who has made it.
bool holds(const AABBpointsf& box, const Vector3f& point)
{
    for (int i = 0; i < 3; ++i)
    {
        const float room = 1e-5f * (std::fabs(box.mMin[i]) + std::fabs(box.mMax[i]) + 1.0f);
        if (point[i] < box.mMin[i] - room || point[i] > box.mMax[i] + room) return false;
    }
    return true;
}

Vector3f cross(const Vector3f& a, const Vector3f& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// True when the surface has no rim: each edge is passed once in either direction.
bool isClosed(const y3d::Submesh& submesh)
{
    using Point = std::tuple<float, float, float>;
    std::map<std::pair<Point, Point>, int> edges;
    const auto pointOf = [&](int i) {
        const Vector3f& p = (*submesh.getPositions())[(*submesh.getIndices())[i]];
        return Point(p.x, p.y, p.z);
    };
    for (int i = 0; i + 2 < submesh.getNumIndices(); i += 3)
    {
        for (int corner = 0; corner < 3; ++corner)
        {
            const Point a = pointOf(i + corner), b = pointOf(i + (corner + 1) % 3);
            edges[std::minmax(a, b)] += a < b ? 1 : -1;
        }
    }
    return std::all_of(edges.begin(), edges.end(), [](const auto& edge) { return edge.second == 0; });
}

// Triangles that are seen from the side their normals point away from, or, without normals, from inside.
bool isInsideOut(const y3d::Submesh& submesh)
{
    const std::size_t numTriangles = submesh.getNumIndices() / 3;
    if (numTriangles < MIN_TRIANGLES) return false;
    std::size_t numAgainst = 0;
    double volume = 0.0;
    for (std::size_t i = 0; i < numTriangles; ++i)
    {
        const y3d::Index* corners = &(*submesh.getIndices())[3 * i];
        const Vector3f& a = (*submesh.getPositions())[corners[0]];
        const Vector3f& b = (*submesh.getPositions())[corners[1]];
        const Vector3f& c = (*submesh.getPositions())[corners[2]];
        volume += dot(a, cross(b, c));
        if (!submesh.getNormals()) continue;
        const auto& normals = *submesh.getNormals();
        numAgainst += dot(cross(b - a, c - a), normals[corners[0]] + normals[corners[1]] + normals[corners[2]]) < 0;
    }
    if (submesh.getNormals()) return 2 * numAgainst > numTriangles;
    return volume < 0 && isClosed(submesh);
}

} // namespace

std::vector<std::string> faultsOf(const y3d::Submesh& submesh)
{
    std::vector<std::string> faults;
    const std::size_t vertices = submesh.getNumVertices();
    if (vertices == 0) faults.push_back("is empty: it has no vertices");
    if (submesh.getNumIndices() == 0) faults.push_back("is empty: it has no indices");
    if (!submesh.hasBoundingBox()) faults.push_back("has no bounding box");

    const unsigned int format = ytd::Utils::getFormat(&submesh);
    if (format & ytd::FORMAT_UVW_1) faults.push_back("has a second texture channel");
    if (format & (ytd::FORMAT_COLOR_0 | ytd::FORMAT_COLOR_1)) faults.push_back("has vertex colours");
    if ((format & ytd::FORMAT_NORMAL) && submesh.getNormals()->size() != vertices)
    {
        faults.push_back("has " + counted(submesh.getNormals()->size(), "normal", "normals") + " for " +
                         counted(vertices, "vertex", "vertices"));
    }
    if ((format & ytd::FORMAT_UVW_0) && submesh.getUVW(0)->size() != vertices)
    {
        faults.push_back("has " + counted(submesh.getUVW(0)->size(), "texture coordinate", "texture coordinates") +
                         " for " + counted(vertices, "vertex", "vertices"));
    }
    std::size_t wild = 0;
    for (int i = 0; i < submesh.getNumIndices(); ++i) wild += (*submesh.getIndices())[i] >= vertices;
    if (wild != 0) faults.push_back("has " + counted(wild, "index", "indices") + " without a vertex");
    return faults;
}

std::vector<std::string> oddsOf(const y3d::Submesh& submesh)
{
    std::vector<std::string> odds;
    if (submesh.getNumIndices() % 3 != 0) odds.push_back("has indices that make no whole triangle");
    if (submesh.getNumUVWs() > 2) odds.push_back("has texture channels behind the second, which are ignored");
    if (!submesh.mBoneGroups.empty()) odds.push_back("has bone groups, which are ignored");

    if (hasWildNumbers(submesh)) odds.push_back("has values that are no numbers");
    if (!faultsOf(submesh).empty()) return odds; // the triangles cannot be looked at

    const auto isOutside = [&](const y3d::Index index) {
        return !holds(submesh.getBoundingBox(), (*submesh.getPositions())[index]);
    };
    if (std::any_of(submesh.getIndices()->begin(), submesh.getIndices()->end(), isOutside))
        odds.push_back("has a bounding box that does not hold its vertices");
    if (isInsideOut(submesh)) odds.push_back("has triangles that mostly face inward");
    return odds;
}

bool hasWildNumbers(const y3d::Submesh& submesh)
{
    return isWild(submesh.getPositions()) || isWild(submesh.getNormals()) ||
           std::any_of(submesh.mUVWs.begin(), submesh.mUVWs.end(), isWild);
}

bool holdsSubmeshes(const y3d::Mesh& mesh)
{
    return std::all_of(mesh.mSubmeshes.begin(), mesh.mSubmeshes.end(), [&](const y3d::Submesh* submesh) {
        const AABBpointsf& box = submesh->getBoundingBox();
        return !submesh->hasBoundingBox() ||
               (holds(mesh.getBoundingBox(), box.mMin) && holds(mesh.getBoundingBox(), box.mMax));
    });
}
