#pragma once

#include <vector>

namespace NVIDIA
{

typedef std::vector<unsigned int> WordVec;
typedef std::vector<int> IntVec;

// One triangle. Faces know each other by their places in one array.
struct NvFaceInfo
{
    NvFaceInfo(int v0, int v1, int v2) : m_v0(v0), m_v1(v1), m_v2(v2) {}

    bool HasVertex(int vertex) const { return vertex == m_v0 || vertex == m_v1 || vertex == m_v2; }

    // True for the fake faces by which a strip turns, and for nothing else that gets into a strip.
    bool IsDegenerate() const { return m_v0 == m_v1 || m_v0 == m_v2 || m_v1 == m_v2; }

    // The third vertex of a face that has both of these.
    int OtherVertex(int a, int b) const { return m_v0 ^ m_v1 ^ m_v2 ^ a ^ b; }

    // 0, 1 or 2 for a vertex that it has.
    int CornerOf(int vertex) const { return vertex == m_v1 ? 1 : vertex == m_v2 ? 2 : 0; }

    // The face behind the edge between the two vertices that are not this one.
    int OppositeTo(int vertex) const { return m_opposite[CornerOf(vertex)]; }

    int m_v0, m_v1, m_v2;

    // By vertex: what lies behind the edge without it, -1 for nothing. Where more than two faces meet in an edge, it
    // joins the first two, and the others have none across it.
    int m_opposite[3] = {-1, -1, -1};
};

typedef std::vector<NvFaceInfo> NvFaceInfoVec;

} // namespace NVIDIA
