#include "NvExperiments.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <utility>

namespace NVIDIA
{

namespace
{

// Strips are numbered up to here and the length of one experiment more.
const int MAX_STRIP_ID = INT_MAX / 2;

// The parts are measured when experiments have cost some times as much: a strip counts as this many faces.
const std::size_t WORK_FOR_STRIP = 16, WORK_FOR_MEASURE = 32;

// Up to here singles hold all whole numbers, so that no mean comes above the largest of its numbers.
const std::size_t MAX_EXACT = 1 << 24;

} // namespace

NvExperiments::NvExperiments(NvMesh& mesh)
    : m_mesh(mesh), m_ways(mesh), m_walk(mesh), m_numFreeFaces(mesh.m_numRealFaces),
      m_vertexMarks(mesh.m_numVertices, -1)
{
}

void NvExperiments::Try(int face)
{
    assert(!m_mesh.IsTaken(face));
    int numStarts = 6;
    if (IsAlone(m_mesh.m_faces[face])) numStarts = m_bestSize > 0.0f ? 0 : 1; // all make a strip of one face
    for (int start = 0; start < numStarts && m_bestSize < m_longest; ++start)
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
    for (int& mark : m_mesh.m_marks)
    {
        if (mark != NvMesh::TAKEN) mark = NvMesh::NOT_TAKEN;
    }
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
    m_current.m_runs.clear();
    m_current.m_strips.clear();
    if (m_stripId > MAX_STRIP_ID) BeginNumbersAgain();
    m_firstStripId = m_stripId + 1;
    std::size_t numReal = 0;
    for (;;)
    {
        ++m_stripId;
        const std::size_t numAdded = Build(startInfo);
        numReal += numAdded;
        m_work += numAdded + WORK_FOR_STRIP;
        const std::size_t numStrips = m_current.m_strips.size();

        // The best that can come is the end here, or one more strip over all faces that are left.
        const float sizeNow = static_cast<float>(numReal) / static_cast<float>(numStrips);
        const float sizeAtBest = static_cast<float>(m_numFreeFaces) / static_cast<float>(numStrips + 1);
        if (sizeNow <= m_bestSize && sizeAtBest <= m_bestSize) return 0.0f;
        if (numStrips == 1)
        {
            const NvEdgeInfo& edge = m_mesh.m_edges[startInfo.m_startEdge];
            if (IsRepeated(start, startInfo.m_toV1 ? edge.m_v1 : edge.m_v0)) return 0.0f;
        }
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
    AppendFaces(m_current, 0, strip, false);
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
    const NvFaceInfo& startFace = m_mesh.m_faces[startInfo.m_startFace];
    const NvEdgeInfo& startEdge = m_mesh.m_edges[startInfo.m_startEdge];
    const int p0 = startInfo.m_toV1 ? startEdge.m_v0 : startEdge.m_v1;
    const int p1 = startInfo.m_toV1 ? startEdge.m_v1 : startEdge.m_v0;
    const int p2 = startFace.OtherVertex(p0, p1);
    m_mesh.m_marks[startInfo.m_startFace] = m_stripId;
    for (const int vertex : {p0, p1, p2}) m_vertexMarks[vertex] = m_stripId;

    std::size_t numReal = 1;
    Strip strip = {startInfo.m_startFace, m_current.m_runs.size(), m_current.m_runs.size()};
    const int place = m_ways.PlaceOf(startInfo.m_startFace, p1);
    if (place >= 0)
    {
        const int direction = m_ways.DirectionTo(place, p2);
        numReal += Grow(place, direction, false);
        strip.forwardEnd = m_current.m_runs.size();
        numReal += Grow(place, -direction, true);
        strip.end = m_current.m_runs.size();
    }
    m_current.m_strips.push_back(strip);
    return numReal;
}

// Adds the runs of one direction of growth, from a step of a way on. With `onlyNew` the strip ends at a face that
// brings no vertex which it lacks. Returns the number of real faces.
std::size_t NvExperiments::Grow(int place, int direction, bool onlyNew)
{
    const StraightWays::Step* steps = m_ways.Steps();
    int* marks = m_mesh.m_marks.data();
    int* vertexMarks = m_vertexMarks.data();
    const int stripId = m_stripId, firstStripId = m_firstStripId;
    std::size_t numReal = 0;
    int last = place; // the step on the last face that was taken
    for (place += direction;;)
    {
        const int first = place;
        bool isOld = false;
        for (; marks[steps[place].face] < firstStripId; place += direction)
        {
            int& vertexMark = vertexMarks[steps[place + direction].pivot];
            isOld = onlyNew && vertexMark == stripId;
            if (isOld) break;
            vertexMark = stripId;
            marks[steps[place].face] = stripId;
        }
        if (place != first)
        {
            const int numFaces = (place - first) * direction;
            m_current.m_runs.push_back({first, direction, numFaces, false});
            numReal += static_cast<std::size_t>(numFaces);
            last = place - direction;
        }
        if (isOld) return numReal;
        const int otherEnd = m_ways.GoRound(place, direction);
        if (otherEnd != place)
        {
            place = otherEnd;
            continue;
        }
        if (numReal == 0) return 0;

        // At a dead end the strip turns by a degenerate face, if that leads on.
        const int pivot = steps[last - direction].pivot;
        const int turned = m_ways.PlaceOf(steps[last].face, pivot);
        if (turned < 0) return numReal;
        direction = m_ways.DirectionTo(turned, steps[last + direction].pivot);
        place = m_ways.GoRound(turned + direction, direction);
        if (IsMarked(steps[place].face)) return numReal;
        m_current.m_runs.back().turns = true;
    }
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
    for (std::size_t i = 0; i < m_best.m_strips.size(); ++i)
    {
        const std::size_t begin = list.m_faces.size();
        AppendFaces(m_best, i, list.m_faces, true);
        list.m_strips.push_back({begin, list.m_faces.size() - begin});
        for (std::size_t place = begin; place < list.m_faces.size(); ++place)
        {
            const int face = list.m_faces[place];
            if (face >= static_cast<int>(m_mesh.m_numRealFaces)) continue;
            m_mesh.m_marks[face] = NvMesh::TAKEN;
            --m_numFreeFaces;
        }
    }
    m_bestSize = 0.0f;
    if (m_work >= WORK_FOR_MEASURE * m_mesh.m_numRealFaces && m_mesh.m_numRealFaces <= MAX_EXACT) MeasureParts();
}

// Finds how many faces the largest part of the mesh has that still hangs together: no strip can be longer.
void NvExperiments::MeasureParts()
{
    m_work = 0;
    m_longest = 0.0f;
    const int visited = ++m_stripId;
    IntVec waiting;
    for (std::size_t face = 0; face < m_mesh.m_numRealFaces; ++face)
    {
        std::size_t numFaces = 0;
        const auto visit = [&](int reached) {
            if (reached < 0 || m_mesh.IsMarked(reached, visited)) return;
            m_mesh.m_marks[reached] = visited;
            waiting.push_back(reached);
            ++numFaces;
        };
        visit(static_cast<int>(face));
        while (!waiting.empty())
        {
            const int from = waiting.back();
            waiting.pop_back();
            for (const int neighbor : m_mesh.m_faces[from].m_opposite) visit(neighbor);
        }
        m_longest = std::max(m_longest, static_cast<float>(numFaces));
    }
}

// Appends the faces of a strip in their order, from the end of its backward growth to the end of the forward one.
void NvExperiments::AppendFaces(const Result& result, std::size_t number, IntVec& faces, bool withFakes)
{
    const Strip& strip = result.m_strips[number];
    const std::size_t begin = faces.size();
    for (std::size_t i = strip.forwardEnd; i < strip.end; ++i) AppendRun(result.m_runs[i], faces, withFakes);
    std::reverse(faces.begin() + begin, faces.end());
    faces.push_back(strip.startFace);
    const std::size_t firstRun = number > 0 ? result.m_strips[number - 1].end : 0;
    for (std::size_t i = firstRun; i < strip.forwardEnd; ++i) AppendRun(result.m_runs[i], faces, withFakes);
}

// Appends the faces of a run as they came; of the mesh's faces a fake one becomes the last.
void NvExperiments::AppendRun(const StraightRun& run, IntVec& faces, bool withFakes)
{
    const StraightWays::Step* step = m_ways.Steps() + run.first;
    for (int i = 0; i < run.numFaces; ++i, step += run.direction)
    {
        if (withFakes && run.turns && i + 1 == run.numFaces)
        {
            const int e0 = (step - run.direction)->pivot, e1 = step->pivot;
            faces.push_back(static_cast<int>(m_mesh.m_faces.size()));
            m_mesh.m_faces.emplace_back(e0, e1, e0);
        }
        faces.push_back(step->face);
    }
}

} // namespace NVIDIA
