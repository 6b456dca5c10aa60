#pragma once

#include "NvEdgeWalk.h"
#include "nvtristrip/NvStripList.h"

#include <utility>

namespace NVIDIA
{

// Tries strips: an experiment grows one from a start, finds from there the start of the next, and so on until there is
// none. What its strips take is marked for this experiment only, so that the next one finds the faces free again. Of
// all experiments the one with the longest strips is kept until it is made real.
class NvExperiments
{
public:
    explicit NvExperiments(NvMesh& mesh);

    // Makes six experiments that begin at a face without a strip: at each of its edges, in both directions.
    void Try(int face);

    // Appends the strips of the best experiment since the last call to the list and marks their faces as taken. There
    // must have been one.
    void CommitStrips(NvStripList& strips);

private:
    // Where a strip begins: on this face, along this edge, towards its m_v1 or its m_v0.
    struct NvStripStartInfo
    {
        int m_startFace;
        int m_startEdge;
        bool m_toV1;
    };

    // The strips of one experiment, of which each goes on to the beginning of the next.
    struct Result
    {
        void Clear();

        IntVec m_faces;                           // real faces by their places, fake ones as -1 - place in m_fakes
        std::vector<std::pair<int, int>> m_fakes; // the two vertices of the edge that each stands for
        std::vector<std::size_t> m_ends;          // where each strip ends in m_faces
    };

    void BeginNumbersAgain();
    float Run(int start, NvStripStartInfo startInfo);
    std::size_t Build(const NvStripStartInfo& startInfo);
    std::size_t Grow(IntVec& faces, const NvFaceInfo& from, int e0, int e1, bool onlyNew);
    bool FindTraversal(NvStripStartInfo& startInfo);
    bool SharesEdge(int face) const;
    bool IsInStrip(int face) const { return face >= 0 && m_mesh.m_faces[face].m_testStripId == m_stripId; }
    bool IsMarked(int face) const { return m_mesh.m_faces[face].IsMarked(m_firstStripId); }
    bool IsAlone(const NvFaceInfo& face);
    bool IsRepeated(int start, int towards);

    NvMesh& m_mesh; // must stay
    EdgeWalk m_walk;
    std::size_t m_numFreeFaces;
    Result m_best, m_current;
    float m_bestSize = 0.0f;                // real faces for each strip of the best experiment, 0 for none
    int m_stripId = -1;                     // the last strip begun; numbers count up over all experiments
    int m_firstStripId = 0;                 // the first strip of the running experiment
    IntVec m_forwardFaces, m_backwardFaces; // the strip that grows, to both sides of its first face
    IntVec m_vertexMarks;                   // by vertex: the last strip that looked for new vertices and had it
    IntVec m_firstStrips[6];                // by start: real faces of the first strip from the face that is tried
    int m_towards[6] = {};                  // by start: the vertex that it goes towards
};

} // namespace NVIDIA
