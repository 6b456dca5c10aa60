#pragma once

#include "nvtristrip/NvMesh.h"

#include <array>
#include <vector>

namespace NVIDIA
{

// The ways that strips take as long as they go straight on. A strip comes into a face over one edge and leaves it over
// another; the vertex that both edges have is the pivot. Face and pivot decide the next face and the next pivot, in
// either direction. So a face lies on up to three ways, once with each vertex as the pivot, and a way has two ends or
// goes round. The steps of all ways lie one behind the other, which is read several times faster than faces are
// followed from each to the next.
class StraightWays
{
public:
    // A step on a face, or a mark in front of the steps of a way and behind them. A mark has the number of a face that
    // is always taken, and the pivot that would come next. Where the way goes round there is a second one outside of
    // it, with the place of the step at the other end.
    struct Step
    {
        int face;
        int pivot;
    };

    explicit StraightWays(const NvMesh& mesh);

    const Step* Steps() const { return m_steps.data(); }

    // The place of the step with this pivot, one of the face's vertices; -1 when nothing is joined to it.
    int PlaceOf(int face, int pivot) const { return m_places[face][m_mesh.m_faces[face].CornerOf(pivot)]; }

    // 1 or -1: where the pivot behind the one at `place` is `vertex`.
    int DirectionTo(int place, int vertex) const { return m_steps[place + 1].pivot == vertex ? 1 : -1; }

    // Where a way goes on that has come to this place: another one only at a mark of a way that goes round.
    int GoRound(int place, int direction) const
    {
        return m_steps[place].face == Round() ? m_steps[place + direction].pivot : place;
    }

private:
    void AddWay(int face, int older, int pivot, int newer);
    bool Follow(int face, int older, int pivot, int newer);
    int End() const { return static_cast<int>(m_mesh.m_numRealFaces); }
    int Round() const { return End() + 1; }

    const NvMesh& m_mesh; // must stay
    std::vector<Step> m_steps;
    std::vector<std::array<int, 3>> m_places; // by real face: of the step with each of its vertices as the pivot
};

} // namespace NVIDIA
