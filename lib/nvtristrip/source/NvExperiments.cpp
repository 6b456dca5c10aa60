#include "NvExperiments.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <iterator>

namespace NVIDIA
{

namespace
{

// Strips are numbered up to here and the length of one experiment more.
const int MAX_STRIP_ID = INT_MAX / 2;

} // namespace

void NvExperiments::Result::Clear()
{
    m_faces.clear();
    m_fakes.clear();
    m_ends.clear();
}

NvExperiments::NvExperiments(NvMesh& mesh)
    : m_mesh(mesh), m_walk(mesh), m_numFreeFaces(mesh.m_numRealFaces), m_vertexMarks(mesh.m_numVertices, -1)
{
}

void NvExperiments::Try(int face)
{
    const NvFaceInfo* faceInfo = &m_mesh.m_faces[face];
    assert(faceInfo->m_stripId == -1);
    int numStarts = 6;
    if (IsAlone(*faceInfo)) numStarts = m_bestSize > 0.0f ? 0 : 1; // all make a strip of one face
    for (int start = 0; start < numStarts; ++start)
    {
        const float size = Run(start, {face, m_mesh.m_edgesOfFace[face][start / 2], start % 2 == 0});
        if (size <= m_bestSize) continue;
        m_bestSize = size;
        std::swap(m_best, m_current);
    }
}

// Wipes off the marks of all experiments.
void NvExperiments::BeginNumbersAgain()
{
    for (NvFaceInfo& face : m_mesh.m_faces) face.m_testStripId = -1;
    std::fill(m_vertexMarks.begin(), m_vertexMarks.end(), -1);
    m_walk.ForgetExperiments();
    m_stripId = -1;
}

// Whether no strip from this face ever comes to another one.
bool NvExperiments::IsAlone(const NvFaceInfo& face)
{
    return m_walk.IsOver(face.m_v0) && m_walk.IsOver(face.m_v1) && m_walk.IsOver(face.m_v2);
}

// Returns the mean number of real faces in a strip; when it can no longer come above the best, some number that does
// not.
float NvExperiments::Run(int start, NvStripStartInfo startInfo)
{
    m_current.Clear();
    if (m_stripId > MAX_STRIP_ID) BeginNumbersAgain();
    m_firstStripId = m_stripId + 1;
    std::size_t numReal = 0;
    for (;;)
    {
        ++m_stripId;
        numReal += Build(startInfo);
        const std::size_t numStrips = m_current.m_ends.size();
        if (numStrips == 1)
        {
            const NvEdgeInfo& edge = m_mesh.m_edges[startInfo.m_startEdge];
            if (IsRepeated(start, startInfo.m_toV1 ? edge.m_v1 : edge.m_v0)) return 0.0f;
        }

        // The best that can come is the end here, or one more strip over all faces that are left.
        const float sizeNow = static_cast<float>(numReal) / static_cast<float>(numStrips);
        const float sizeAtBest = static_cast<float>(m_numFreeFaces) / static_cast<float>(numStrips + 1);
        if (sizeNow <= m_bestSize && sizeAtBest <= m_bestSize) return 0.0f;
        if (!FindTraversal(startInfo)) return sizeNow;
    }
}

// Whether the first strip is that of an earlier start from the other end. Both look for the next strip at the vertex
// that they went towards, so when that is the same all further strips are.
bool NvExperiments::IsRepeated(int start, int towards)
{
    m_towards[start] = towards;
    IntVec& strip = m_firstStrips[start];
    strip.clear();
    std::copy_if(m_current.m_faces.begin(), m_current.m_faces.end(), std::back_inserter(strip),
                 [](int face) { return face >= 0; });
    for (int earlier = 0; earlier < start; ++earlier)
    {
        const IntVec& other = m_firstStrips[earlier];
        if (m_towards[earlier] == towards && std::equal(strip.begin(), strip.end(), other.rbegin(), other.rend()))
            return true;
    }
    return false;
}

// Grows a strip from its start in both directions, over faces that are not marked. Returns the number of real faces.
std::size_t NvExperiments::Build(const NvStripStartInfo& startInfo)
{
    NvFaceInfo& startFace = m_mesh.m_faces[startInfo.m_startFace];
    const NvEdgeInfo& startEdge = m_mesh.m_edges[startInfo.m_startEdge];
    m_forwardFaces.assign(1, startInfo.m_startFace);
    m_backwardFaces.clear();
    startFace.m_testStripId = m_stripId;
    const int p0 = startInfo.m_toV1 ? startEdge.m_v0 : startEdge.m_v1;
    const int p1 = startInfo.m_toV1 ? startEdge.m_v1 : startEdge.m_v0;
    const int p2 = startFace.OtherVertex(p0, p1);
    std::size_t numReal = 1 + Grow(m_forwardFaces, startFace, p1, p2, false);

    // The face that lies behind the first may be one that the forward way has been around.
    const int behind = startFace.OppositeTo(p2);
    if (behind >= 0 && !IsMarked(behind))
    {
        for (const int place : m_forwardFaces)
        {
            if (place < 0) continue; // a fake face has the vertices of its neighbours
            const NvFaceInfo& face = m_mesh.m_faces[place];
            for (const int vertex : {face.m_v0, face.m_v1, face.m_v2}) m_vertexMarks[vertex] = m_stripId;
        }
        numReal += Grow(m_backwardFaces, startFace, p1, p0, true);
    }

    IntVec& faces = m_current.m_faces;
    faces.insert(faces.end(), m_backwardFaces.rbegin(), m_backwardFaces.rend());
    faces.insert(faces.end(), m_forwardFaces.begin(), m_forwardFaces.end());
    m_current.m_ends.push_back(faces.size());
    return numReal;
}

// Appends one direction of growth to `faces`: from a face on over its edge e0 to e1. With `onlyNew` the way ends at a
// face that brings no vertex which the strip lacks. Returns the number of real faces.
std::size_t NvExperiments::Grow(IntVec& faces, const NvFaceInfo& from, int e0, int e1, bool onlyNew)
{
    std::size_t numReal = 0;
    int next = from.OppositeTo(from.OtherVertex(e0, e1));
    while (next >= 0 && !IsMarked(next))
    {
        NvFaceInfo& face = m_mesh.m_faces[next];
        const int vertex = face.OtherVertex(e0, e1);
        if (onlyNew && std::exchange(m_vertexMarks[vertex], m_stripId) == m_stripId) break;

        // At a dead end the strip turns by a degenerate face, if that leads on.
        int beyond = face.OppositeTo(e0);
        if (beyond < 0 || IsMarked(beyond))
        {
            const int aside = face.OppositeTo(e1);
            if (aside >= 0 && !IsMarked(aside))
            {
                m_current.m_fakes.emplace_back(e0, e1);
                faces.push_back(-static_cast<int>(m_current.m_fakes.size()));
                e1 = e0;
                beyond = aside;
            }
        }
        faces.push_back(next);
        face.m_testStripId = m_stripId;
        ++numReal;
        e0 = e1;
        e1 = vertex;
        next = beyond;
    }
    return numReal;
}

// Finds where the next strip may begin: around the vertex that the last one went towards. False when nowhere.
bool NvExperiments::FindTraversal(NvStripStartInfo& startInfo)
{
    const NvEdgeInfo& startEdge = m_mesh.m_edges[startInfo.m_startEdge];
    const int v = startInfo.m_toV1 ? startEdge.m_v1 : startEdge.m_v0;
    for (int place = m_walk.First(v, m_firstStripId); place != m_walk.End(v);
         place = m_walk.Next(place, v, m_firstStripId))
    {
        const NvEdgeInfo& edge = m_walk.At(place);
        int face = -1;
        if (!IsInStrip(edge.m_face0) && !IsMarked(edge.m_face1))
            face = edge.m_face1;
        else if (!IsInStrip(edge.m_face1) && !IsMarked(edge.m_face0))
            face = edge.m_face0;
        if (face < 0) continue;

        const int number = static_cast<int>(&edge - m_mesh.m_edges.data());
        startInfo = {face, number, (SharesEdge(face) ? edge.m_v0 : edge.m_v1) == v};
        return true;
    }
    return false;
}

// Whether an edge of the face has a face of the last strip.
bool NvExperiments::SharesEdge(int face) const
{
    const auto& edges = m_mesh.m_edgesOfFace[face];
    return std::any_of(edges.begin(), edges.end(), [this](int number) {
        const NvEdgeInfo& edge = m_mesh.m_edges[number];
        return IsInStrip(edge.m_face0) || IsInStrip(edge.m_face1);
    });
}

void NvExperiments::CommitStrips(NvStripList& list)
{
    assert(m_bestSize > 0.0f);
    std::size_t begin = 0;
    for (const std::size_t end : m_best.m_ends)
    {
        const int stripId = static_cast<int>(list.m_strips.size());
        list.m_strips.push_back({list.m_faces.size(), end - begin});
        for (; begin < end; ++begin)
        {
            int face = m_best.m_faces[begin];
            if (face < 0)
            {
                const std::pair<int, int> edge = m_best.m_fakes[-1 - face];
                face = static_cast<int>(m_mesh.m_faces.size());
                m_mesh.m_faces.emplace_back(edge.first, edge.second, edge.first);
            }
            else
                --m_numFreeFaces;
            m_mesh.m_faces[face].m_stripId = stripId;
            list.m_faces.push_back(face);
        }
    }
    m_bestSize = 0.0f;
}

} // namespace NVIDIA
