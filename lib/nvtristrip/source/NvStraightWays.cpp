#include "NvStraightWays.h"

#include <algorithm>

namespace NVIDIA
{

StraightWays::StraightWays(const NvMesh& mesh) : m_mesh(mesh), m_places(mesh.m_numRealFaces, {-1, -1, -1})
{
    m_steps.reserve(4 * mesh.m_numRealFaces);
    for (std::size_t face = 0; face < mesh.m_numRealFaces; ++face)
    {
        const NvFaceInfo& info = mesh.m_faces[face];
        const int corners[3] = {info.m_v0, info.m_v1, info.m_v2};
        for (int corner = 0; corner < 3; ++corner)
        {
            const int left = (corner + 1) % 3, right = (corner + 2) % 3;
            const bool leadsOn = info.m_opposite[left] >= 0 || info.m_opposite[right] >= 0;
            if (leadsOn && m_places[face][corner] < 0)
                AddWay(static_cast<int>(face), corners[left], corners[corner], corners[right]);
        }
    }
}

// Adds the way over a step, which goes from the older vertex to the newer one.
void StraightWays::AddWay(int face, int older, int pivot, int newer)
{
    const std::size_t begin = m_steps.size();
    const bool goesRound = Follow(face, newer, pivot, older);
    std::reverse(m_steps.begin() + begin, m_steps.end());
    m_steps.push_back({face, pivot});
    if (!goesRound)
        Follow(face, older, pivot, newer);
    else
    {
        const Step first = m_steps[begin], last = m_steps.back();
        const int firstPlace = static_cast<int>(begin) + 2, lastPlace = static_cast<int>(m_steps.size()) + 1;
        m_steps.insert(m_steps.begin() + begin, {{Round(), lastPlace}, {Round(), last.pivot}});
        m_steps.insert(m_steps.end(), {{Round(), first.pivot}, {Round(), firstPlace}});
    }
    for (std::size_t place = begin; place < m_steps.size(); ++place)
    {
        const Step& step = m_steps[place];
        if (step.face >= End()) continue;
        m_places[step.face][m_mesh.m_faces[step.face].CornerOf(step.pivot)] = static_cast<int>(place);
    }
}

// Adds what comes behind a step. True when that is the step itself; else there is a mark at the end.
bool StraightWays::Follow(int face, int older, int pivot, int newer)
{
    const int firstFace = face, firstPivot = pivot;
    for (;;)
    {
        face = m_mesh.m_faces[face].OppositeTo(older);
        if (face == firstFace && newer == firstPivot) return true;
        if (face < 0)
        {
            m_steps.push_back({End(), newer});
            return false;
        }
        m_steps.push_back({face, newer});
        older = pivot;
        pivot = newer;
        newer = m_mesh.m_faces[face].OtherVertex(older, pivot);
    }
}

} // namespace NVIDIA
