#pragma once

#include "nvtristrip/NvEdgeInfo.h"
#include "nvtristrip/NvFaceInfo.h"

#include <array>
#include <cstddef>

namespace NVIDIA
{

// Faces joined by their edges.
class NvMesh
{
public:
    // Makes faces and edges from the indices, all of which are at most `maxIndex`. Drops degenerate and repeated faces,
    // and an end of one or two indices. Tells on standard output of every third face at an edge.
    void BuildStripifyInfo(const WordVec& indices, unsigned int maxIndex);

    // Edges of a face, 0 to 3, with another face behind; 0 for a fake one.
    int NumNeighbors(int face) const;

    NvFaceInfoVec m_faces; // first the real ones, then the fake ones of committed strips
    std::size_t m_numRealFaces = 0;
    std::size_t m_numVertices = 0;
    std::vector<NvEdgeInfo> m_edges;               // in the order in which they came up
    std::vector<std::array<int, 3>> m_edgesOfFace; // of real faces: m_v0 to m_v1, m_v1 to m_v2, m_v2 to m_v0
};

} // namespace NVIDIA
