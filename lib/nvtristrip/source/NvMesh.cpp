#include "nvtristrip/NvMesh.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace NVIDIA
{

namespace
{

std::uint64_t mixed(std::uint64_t bits)
{
    bits = (bits ^ (bits >> 31)) * 0x9E3779B97F4A7C15u;
    return bits ^ (bits >> 29);
}

std::uint64_t hashOf(int v0, int v1)
{
    return mixed(static_cast<std::uint64_t>(v0) << 32 | static_cast<unsigned int>(v1));
}

// Places of things in an array, found by what they are. At most half of the slots are in use.
class PlaceTable
{
public:
    explicit PlaceTable(std::size_t highestNumber)
    {
        std::size_t size = 16;
        while (size < 2 * highestNumber) size *= 2;
        m_slots.assign(size, -1);
    }

    // The slot with the place that `isWanted` accepts, or the free one, with -1, where it is to be put.
    template <class Test> int& find(std::uint64_t hash, Test isWanted)
    {
        std::size_t slot = hash & (m_slots.size() - 1);
        while (m_slots[slot] >= 0 && !isWanted(m_slots[slot])) slot = (slot + 1) & (m_slots.size() - 1);
        return m_slots[slot];
    }

private:
    IntVec m_slots;
};

} // namespace

void NvMesh::BuildStripifyInfo(const WordVec& indices, unsigned int maxIndex)
{
    const std::size_t numTriples = indices.size() / 3;
    m_numVertices = static_cast<std::size_t>(maxIndex) + 1;
    m_faces.reserve(numTriples);
    m_edges.reserve(numTriples * 3 / 2);
    m_edgesOfFace.reserve(numTriples);
    PlaceTable edgeTable(3 * numTriples), faceTable(numTriples);

    for (std::size_t i = 0; i < numTriples; ++i)
    {
        const NvFaceInfo face(static_cast<int>(indices[3 * i]), static_cast<int>(indices[3 * i + 1]),
                              static_cast<int>(indices[3 * i + 2]));
        if (face.IsDegenerate()) continue;

        const int place = static_cast<int>(m_faces.size());
        const int corners[4] = {face.m_v0, face.m_v1, face.m_v2, face.m_v0};
        std::array<int, 3> edges;
        bool joined[3] = {}; // edges that had a second side to give
        for (int side = 0; side < 3; ++side)
        {
            const int v0 = corners[side], v1 = corners[side + 1];
            int& number = edgeTable.find(hashOf(std::min(v0, v1), std::max(v0, v1)), [this, v0, v1](int known) {
                const NvEdgeInfo& edge = m_edges[known];
                return (edge.m_v0 == v0 && edge.m_v1 == v1) || (edge.m_v0 == v1 && edge.m_v1 == v0);
            });
            if (number < 0)
            {
                number = static_cast<int>(m_edges.size());
                m_edges.push_back({v0, v1, place, -1});
            }
            else if (m_edges[number].m_face1 < 0)
            {
                m_edges[number].m_face1 = place;
                joined[side] = true;
            }
            else
                std::puts("BuildStripifyInfo: > 2 triangles on an edge... uncertain consequences");
            edges[side] = number;
        }

        int& same = faceTable.find(
            mixed(hashOf(face.m_v0, face.m_v1) + static_cast<unsigned int>(face.m_v2)), [this, &face](int known) {
                const NvFaceInfo& other = m_faces[known];
                return other.m_v0 == face.m_v0 && other.m_v1 == face.m_v1 && other.m_v2 == face.m_v2;
            });
        if (same >= 0) // a repetition, which has brought no edge
        {
            for (int side = 0; side < 3; ++side)
            {
                if (joined[side]) m_edges[edges[side]].m_face1 = -1;
            }
            continue;
        }
        same = place;
        m_faces.push_back(face);
        m_edgesOfFace.push_back(edges);
    }

    m_numRealFaces = m_faces.size();
    m_marks.assign(m_numRealFaces, NOT_TAKEN);
    m_marks.resize(m_numRealFaces + 2, TAKEN);
    for (std::size_t place = 0; place < m_numRealFaces; ++place)
    {
        for (int side = 0; side < 3; ++side)
            m_faces[place].m_opposite[(side + 2) % 3] =
                m_edges[m_edgesOfFace[place][side]].OtherFace(static_cast<int>(place));
    }
}

int NvMesh::NumNeighbors(int face) const
{
    const int* opposite = m_faces[face].m_opposite;
    return static_cast<int>(std::count_if(opposite, opposite + 3, [](int other) { return other >= 0; }));
}

} // namespace NVIDIA
