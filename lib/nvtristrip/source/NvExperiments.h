#pragma once

#include "NvEdgeWalk.h"
#include "NvStraightWays.h"
#include "nvtristrip/NvStripList.h"

#include <cfloat>
#include <cstddef>
#include <vector>

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

    // Faces that a strip takes straight on along a way. Where it turns at the end, a fake face lies in front of the
    // last.
    struct StraightRun
    {
        int first; // place of a step
        int direction;
        int numFaces; // at least one
        bool turns;
    };

    struct Strip
    {
        int startFace;
        std::size_t forwardEnd; // of its runs those to one side end here, and then come those to the other
        std::size_t end;
    };

    // The strips of one experiment, of which each goes on to the beginning of the next.
    struct Result
    {
        std::vector<StraightRun> m_runs;
        std::vector<Strip> m_strips;
    };

    void BeginNumbersAgain();
    float Run(int start, NvStripStartInfo startInfo);
    std::size_t Build(const NvStripStartInfo& startInfo);
    std::size_t Grow(int place, int direction, bool onlyNew);
    bool FindTraversal(NvStripStartInfo& startInfo);
    bool SharesEdge(int face) const;
    bool IsInStrip(int face) const { return face >= 0 && m_mesh.m_marks[face] == m_stripId; }
    bool IsMarked(int face) const { return m_mesh.IsMarked(face, m_firstStripId); }
    bool IsAlone(const NvFaceInfo& face);
    bool IsRepeated(int start, int towards);
    void MeasureParts();
    void AppendFaces(const Result& result, std::size_t number, IntVec& faces, bool withFakes);
    void AppendRun(const StraightRun& run, IntVec& faces, bool withFakes);

    NvMesh& m_mesh; // must stay
    StraightWays m_ways;
    EdgeWalk m_walk;
    std::size_t m_numFreeFaces;
    float m_longest = FLT_MAX; // no strip has more real faces
    std::size_t m_work = 0;    // since that was measured
    Result m_best, m_current;
    float m_bestSize = 0.0f; // real faces for each strip of the best experiment, 0 for none
    int m_stripId = -1;      // the last strip begun; numbers count up over all experiments
    int m_firstStripId = 0;  // the first strip of the running experiment
    IntVec m_vertexMarks;    // by vertex: the last strip that had it
    IntVec m_firstStrips[6]; // by start: real faces of the first strip from the face that is tried
    int m_towards[6] = {};   // by start: the vertex that it goes towards
};

} // namespace NVIDIA
