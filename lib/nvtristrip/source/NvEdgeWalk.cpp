#include "NvEdgeWalk.h"

#include <utility>

namespace NVIDIA
{

EdgeWalk::EdgeWalk(const NvMesh& mesh) : m_mesh(mesh), m_first(mesh.m_numVertices + 1)
{
    for (const NvEdgeInfo& edge : mesh.m_edges)
    {
        if (edge.m_face1 < 0) continue; // goes nowhere
        ++m_first[edge.m_v0];
        ++m_first[edge.m_v1];
    }
    // Each vertex begins where its last edge comes to lie, once all have been put in from the back.
    for (std::size_t i = 1; i < m_first.size(); ++i) m_first[i] += m_first[i - 1];
    m_places.resize(m_first.back());
    for (std::size_t i = 0; i < mesh.m_edges.size(); ++i)
    {
        const NvEdgeInfo& edge = mesh.m_edges[i];
        if (edge.m_face1 < 0) continue;
        for (const int vertex : {edge.m_v0, edge.m_v1})
        {
            const int place = --m_first[vertex];
            m_places[place] = {static_cast<int>(i), edge.m_face0, edge.m_face1, place + 1, 0, -1};
        }
    }
}

void EdgeWalk::ForgetExperiments()
{
    for (Place& place : m_places) place.experiment = -1;
}

int EdgeWalk::Find(int place, int end, int experiment)
{
    const auto isTaken = [this, experiment](const Place& at) {
        return m_mesh.IsMarked(at.face0, experiment) && m_mesh.IsMarked(at.face1, experiment);
    };
    place = FindOpen(place, end);
    int found = place;
    while (found < end && isTaken(m_places[found]))
    {
        const Place& taken = m_places[found];
        found = FindOpen(taken.experiment == experiment ? taken.testSkipTo : found + 1, end);
    }
    while (place < found)
    {
        Place& taken = m_places[place];
        const int next = taken.experiment == experiment ? taken.testSkipTo : place + 1;
        taken.experiment = experiment;
        taken.testSkipTo = found;
        place = FindOpen(next, end);
    }
    return found;
}

int EdgeWalk::FindOpen(int place, int end)
{
    const auto isOver = [this](const Place& at) { return m_mesh.IsTaken(at.face0) && m_mesh.IsTaken(at.face1); };
    int found = place;
    while (found < end && isOver(m_places[found])) found = m_places[found].skipTo;
    while (place < found) place = std::exchange(m_places[place].skipTo, found);
    return found;
}

} // namespace NVIDIA
