#pragma once

#include "nvtristrip/NvEdgeInfo.h"
#include "nvtristrip/NvFaceInfo.h"

#include <array>
#include <climits>
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

    // What took a face: an experiment's strip, by its number, or a real one. The numbers count up over all experiments,
    // so they tell the experiment too, and marks of earlier ones need not be wiped off.
    static constexpr int NOT_TAKEN = -1, TAKEN = INT_MAX;
    bool IsTaken(int face) const { return m_marks[face] == TAKEN; }

    // Whether the face is taken, really or by the experiment that began with the strip of this number.
    bool IsMarked(int face, int firstTestStrip) const { return m_marks[face] >= firstTestStrip; }

    NvFaceInfoVec m_faces; // first the real ones, then the fake ones of committed strips
    std::size_t m_numRealFaces = 0;
    std::size_t m_numVertices = 0;
    IntVec m_marks;                                // of real faces, and of two numbers more that are always taken
    std::vector<NvEdgeInfo> m_edges;               // in the order in which they came up
    std::vector<std::array<int, 3>> m_edgesOfFace; // of real faces: m_v0 to m_v1, m_v1 to m_v2, m_v2 to m_v0
};

} // namespace NVIDIA
