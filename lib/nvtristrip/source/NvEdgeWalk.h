#pragma once

#include "nvtristrip/NvMesh.h"

namespace NVIDIA
{

// Walks over the edges around a vertex, those that came up last in front, without those that no strip can go on from,
// since a side is missing or both are taken. What is really taken stays so, and what an experiment took does until the
// next one: the walk keeps links over both. Experiments are named by the number of their first strip.
class EdgeWalk
{
public:
    explicit EdgeWalk(const NvMesh& mesh);

    // Places of the edges around a vertex that are left for an experiment. Both return End(vertex) when there is none.
    int First(int vertex, int experiment) { return Find(m_first[vertex], End(vertex), experiment); }
    int Next(int place, int vertex, int experiment) { return Find(place + 1, End(vertex), experiment); }
    int End(int vertex) const { return m_first[vertex + 1]; }
    const NvEdgeInfo& At(int place) const { return m_mesh.m_edges[m_places[place].edge]; }

    // Makes the numbers of experiments free to be given again.
    void ForgetExperiments();

    // Whether no strip can ever go on from an edge around a vertex.
    bool IsOver(int vertex) { return FindOpen(m_first[vertex], End(vertex)) == End(vertex); }

private:
    struct Place
    {
        int edge;
        int face0, face1; // on its sides
        int skipTo;       // used where the edge is really over: a later place, all between being over too
        int testSkipTo;   // the same for the experiment with the number below
        int experiment;
    };

    int Find(int place, int end, int experiment);
    int FindOpen(int place, int end);

    const NvMesh& m_mesh; // must stay
    IntVec m_first;       // by vertex, and one more: where its places begin
    std::vector<Place> m_places;
};

} // namespace NVIDIA
