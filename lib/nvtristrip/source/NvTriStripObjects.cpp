#include "nvtristrip/NvTriStripObjects.h"

#include "NvCacheOrder.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <unordered_map>
#include <unordered_set>

namespace NVIDIA
{

namespace
{

NvEdgeInfo*& nextEdge(NvEdgeInfo* infoIter, int v0)
{
    if (infoIter->m_v0 == v0) return infoIter->m_nextV0;
    assert(infoIter->m_v1 == v0);
    return infoIter->m_nextV1;
}

// Each list lets go of its edges; the second one to do so frees them.
void freeEdges(NvEdgeInfoVec& edges)
{
    for (std::size_t vertex = 0; vertex < edges.size(); ++vertex)
    {
        for (NvEdgeInfo* edge = edges[vertex]; edge;)
        {
            NvEdgeInfo* next = nextEdge(edge, static_cast<int>(vertex));
            if (--edge->m_refCount == 0) delete edge;
            edge = next;
        }
    }
    edges.clear();
}

void destroyExperiment(NvStripInfoVec& strips)
{
    for (NvStripInfo* strip : strips)
    {
        for (NvFaceInfo* face : strip->m_faces)
        {
            if (face->m_bIsFake) delete face;
        }
        delete strip;
    }
    strips.clear();
}

// Makes the strips of an experiment real.
void commitStrips(NvStripInfoVec& allStrips, const NvStripInfoVec& strips)
{
    for (NvStripInfo* strip : strips)
    {
        strip->m_experimentId = -1;
        allStrips.push_back(strip);
        for (NvFaceInfo* face : strip->m_faces) strip->MarkTriangle(face);
    }
}

// Copies the first face of a strip with its vertices in the order in which the strip has them: first the one that the
// second face lacks, then the one that the third face lacks.
NvFaceInfo orderedFirstFace(const NvFaceInfoVec& faces, bool heedDegenerate)
{
    NvFaceInfo first(faces[0]->m_v0, faces[0]->m_v1, faces[0]->m_v2);
    if (faces.size() > 1 && faces[1]->HasVertex(first.m_v0))
    {
        if (!faces[1]->HasVertex(first.m_v1))
            std::swap(first.m_v0, first.m_v1);
        else if (!faces[1]->HasVertex(first.m_v2))
            std::swap(first.m_v0, first.m_v2);
    }
    if (faces.size() > 2)
    {
        const bool swap = heedDegenerate && faces[1]->IsDegenerate()
                              ? first.m_v1 == faces[1]->m_v1
                              : faces[2]->HasVertex(first.m_v1) && !faces[2]->HasVertex(first.m_v0) &&
                                    !faces[2]->HasVertex(first.m_v2);
        if (swap) std::swap(first.m_v1, first.m_v2);
    }
    return first;
}

// The faces that are there already, as ordered triples of vertices.
struct Triple
{
    int v0, v1, v2;

    bool operator==(const Triple& other) const { return v0 == other.v0 && v1 == other.v1 && v2 == other.v2; }
};

std::uint64_t mixed(std::uint64_t bits)
{
    bits = (bits ^ (bits >> 31)) * 0x9E3779B97F4A7C15u;
    return bits ^ (bits >> 29);
}

struct TripleHash
{
    std::size_t operator()(const Triple& triple) const
    {
        return mixed(mixed(mixed(triple.v0) + static_cast<unsigned int>(triple.v1)) +
                     static_cast<unsigned int>(triple.v2));
    }
};

struct PairHash
{
    std::size_t operator()(std::uint64_t pair) const { return mixed(pair); }
};

// Finds edges by their vertices in either order.
class EdgeTable
{
public:
    explicit EdgeTable(std::size_t size) { m_edges.reserve(size); }

    NvEdgeInfo*& find(int v0, int v1)
    {
        const std::uint64_t low = std::min(v0, v1), high = std::max(v0, v1);
        return m_edges[high << 32 | low];
    }

private:
    std::unordered_map<std::uint64_t, NvEdgeInfo*, PairHash> m_edges;
};

} // namespace

NvFaceInfo* NvFaceInfo::Across(int v0, int v1) const
{
    const bool has0 = v0 == m_v0 || v1 == m_v0;
    const bool has1 = v0 == m_v1 || v1 == m_v1;
    return m_neighbors[has0 ? (has1 ? 0 : 2) : 1];
}

void EdgeWalk::Start(const std::vector<NvEdgeInfo*>& lists)
{
    m_first.assign(1, 0);
    for (std::size_t vertex = 0; vertex < lists.size(); ++vertex)
    {
        const int v = static_cast<int>(vertex);
        for (NvEdgeInfo* edge = lists[vertex]; edge; edge = nextEdge(edge, v))
            m_places.push_back({edge, m_places.size() + 1, 0, -1});
        m_first.push_back(m_places.size());
    }
}

std::size_t EdgeWalk::Find(std::size_t place, std::size_t end, const NvStripInfo& strip)
{
    place = FindOpen(place, end);
    std::size_t found = place;
    while (found < end && strip.IsMarked(m_places[found].edge->m_face0) &&
           strip.IsMarked(m_places[found].edge->m_face1))
    {
        const Place& taken = m_places[found];
        found = FindOpen(taken.experimentId == strip.m_experimentId ? taken.testSkipTo : found + 1, end);
    }
    while (place < found)
    {
        Place& taken = m_places[place];
        const std::size_t next = taken.experimentId == strip.m_experimentId ? taken.testSkipTo : place + 1;
        taken.experimentId = strip.m_experimentId;
        taken.testSkipTo = found;
        place = FindOpen(next, end);
    }
    return found;
}

std::size_t EdgeWalk::FindOpen(std::size_t place, std::size_t end)
{
    const auto isOver = [](const NvEdgeInfo& edge) {
        return !edge.m_face1 || (edge.m_face0->m_stripId >= 0 && edge.m_face1->m_stripId >= 0);
    };
    std::size_t found = place;
    while (found < end && isOver(*m_places[found].edge)) found = m_places[found].skipTo;
    while (place < found)
    {
        const std::size_t next = m_places[place].skipTo;
        m_places[place].skipTo = found;
        place = next;
    }
    return found;
}

void NvStripInfo::Build(NvEdgeInfoVec& edges, NvFaceInfoVec&)
{
    NvFaceInfo* startFace = m_startInfo.m_startFace;
    const NvEdgeInfo& startEdge = *m_startInfo.m_startEdge;
    NvFaceInfoVec& forward = edges.m_forwardFaces;
    NvFaceInfoVec& backward = edges.m_backwardFaces;
    forward.clear();
    backward.clear();

    forward.push_back(startFace);
    MarkTriangle(startFace);
    const int p0 = m_startInfo.m_toV1 ? startEdge.m_v0 : startEdge.m_v1;
    const int p1 = m_startInfo.m_toV1 ? startEdge.m_v1 : startEdge.m_v0;
    edges.m_scratchIndices.assign({p0, p1});
    const int p2 = NvStripifier::GetNextIndex(edges.m_scratchIndices, startFace);
    edges.m_scratchIndices.push_back(p2);
    Grow(edges, forward, startFace, p1, p2, false);

    // The face that lies behind the first may be one that the forward way has been around.
    const NvFaceInfo* behind = startFace->Across(p1, p0);
    if (behind && !IsMarked(behind))
    {
        ++edges.m_mark;
        for (const NvFaceInfo* face : forward)
        {
            for (const int vertex : {face->m_v0, face->m_v1, face->m_v2}) edges.m_vertexMarks[vertex] = edges.m_mark;
        }
        edges.m_scratchIndices.assign({p2, p1, p0});
        Grow(edges, backward, startFace, p1, p0, true);
    }
    Combine(forward, backward);
}

void NvStripInfo::Grow(NvEdgeInfoVec& edges, NvFaceInfoVec& faces, const NvFaceInfo* face, int e0, int e1, bool onlyNew)
{
    IntVec& scratchIndices = edges.m_scratchIndices;
    NvFaceInfo* next = face->Across(e0, e1);
    while (next && !IsMarked(next))
    {
        int t0 = e1;
        const int t1 = NvStripifier::GetNextIndex(scratchIndices, next);
        if (onlyNew)
        {
            // A next face has e0 and e1, which are in the strip.
            if (edges.m_vertexMarks[t1] == edges.m_mark) break;
            edges.m_vertexMarks[t1] = edges.m_mark;
        }

        // At a dead end the strip turns by a degenerate face, if that leads on.
        NvFaceInfo* beyond = next->Across(t0, t1);
        if (!beyond || IsMarked(beyond))
        {
            NvFaceInfo* aside = next->Across(e0, t1);
            if (aside && !IsMarked(aside))
            {
                NvFaceInfo* fake = new NvFaceInfo(e0, e1, e0, true);
                faces.push_back(fake);
                MarkTriangle(fake);
                scratchIndices.push_back(e0);
                t0 = e0;
                beyond = aside;
                ++m_numDegenerates;
            }
        }
        faces.push_back(next);
        MarkTriangle(next);
        scratchIndices.push_back(t1);
        e0 = t0;
        e1 = t1;
        next = beyond;
    }
}

void NvStripInfo::Combine(const NvFaceInfoVec& forward, const NvFaceInfoVec& backward)
{
    m_faces.reserve(forward.size() + backward.size());
    m_faces.assign(backward.rbegin(), backward.rend());
    m_faces.insert(m_faces.end(), forward.begin(), forward.end());
}

void NvStripInfo::MarkTriangle(NvFaceInfo* faceInfo) const
{
    assert(!IsMarked(faceInfo));
    if (m_experimentId >= 0)
    {
        faceInfo->m_experimentId = m_experimentId;
        faceInfo->m_testStripId = m_stripId;
    }
    else
    {
        faceInfo->m_experimentId = -1;
        faceInfo->m_stripId = m_stripId;
    }
}

bool NvStripInfo::SharesEdge(const NvFaceInfo* face) const
{
    for (const NvEdgeInfo* edge : face->m_edges)
    {
        if (IsInStrip(edge->m_face0) || IsInStrip(edge->m_face1)) return true;
    }
    return false;
}

VertexCache::VertexCache(int size) : numEntries(size), entries(size, -1) {}

bool VertexCache::InCache(int entry) const
{
    if (entry < 0) return std::find(entries.begin(), entries.end(), entry) != entries.end();
    return static_cast<std::size_t>(entry) < m_counts.size() && m_counts[entry] > 0;
}

int VertexCache::AddEntry(int entry)
{
    m_front = (m_front + numEntries - 1) % numEntries;
    const int removed = entries[m_front];
    entries[m_front] = entry;
    if (removed >= 0) --m_counts[removed];
    if (entry >= 0)
    {
        if (static_cast<std::size_t>(entry) >= m_counts.size()) m_counts.resize(static_cast<std::size_t>(entry) + 1);
        ++m_counts[entry];
    }
    return removed;
}

void NvStripifier::Stripify(const WordVec& inIndices, unsigned int inCacheSize, unsigned int inMinStripLength,
                            unsigned int maxIndex, NvStripInfoVec& outStrips, NvFaceInfoVec& outFaces)
{
    // Real caches hold a little less than they have entries for.
    const unsigned int pipeline = 6;
    indices = inIndices;
    cacheSize = inCacheSize > pipeline ? static_cast<int>(std::min<unsigned int>(inCacheSize - pipeline, INT_MAX)) : 1;
    minStripLength = inMinStripLength;

    NvFaceInfoVec faces;
    NvEdgeInfoVec edges;
    NvStripInfoVec allStrips;
    BuildStripifyInfo(faces, edges, maxIndex);
    FindAllStrips(allStrips, faces, edges, 10);
    SplitUpStripsAndOptimize(allStrips, outStrips, edges, outFaces);

    for (NvStripInfo* strip : allStrips) delete strip;
    freeEdges(edges);
}

void NvStripifier::BuildStripifyInfo(NvFaceInfoVec& faces, NvEdgeInfoVec& edges, unsigned int maxIndex)
{
    edges.assign(static_cast<std::size_t>(maxIndex) + 1, nullptr);
    edges.m_vertexMarks.assign(edges.size(), 0);
    EdgeTable table(indices.size() / 2);
    std::unordered_set<Triple, TripleHash> triples(indices.size() / 3);

    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
    {
        const int corners[3] = {static_cast<int>(indices[i]), static_cast<int>(indices[i + 1]),
                                static_cast<int>(indices[i + 2])};
        NvFaceInfo* faceInfo = new NvFaceInfo(corners[0], corners[1], corners[2]);
        if (faceInfo->IsDegenerate())
        {
            delete faceInfo;
            continue;
        }

        bool newEdge = false;
        NvEdgeInfo* joined[3] = {}; // edges that had a second side to give
        for (int side = 0; side < 3; ++side)
        {
            const int v0 = corners[side];
            const int v1 = corners[(side + 1) % 3];
            NvEdgeInfo*& edgeInfo = table.find(v0, v1);
            if (!edgeInfo)
            {
                newEdge = true;
                edgeInfo = new NvEdgeInfo(v0, v1);
                edgeInfo->m_face0 = faceInfo;
                edgeInfo->m_nextV0 = edges[v0];
                edgeInfo->m_nextV1 = edges[v1];
                edges[v0] = edgeInfo;
                edges[v1] = edgeInfo;
            }
            else if (!edgeInfo->m_face1)
            {
                edgeInfo->m_face1 = faceInfo;
                joined[side] = edgeInfo;
            }
            else
                std::puts("BuildStripifyInfo: > 2 triangles on an edge... uncertain consequences");
            faceInfo->m_edges[side] = edgeInfo;
        }

        // Only a face all of whose edges are known can be there already.
        if (!triples.insert({corners[0], corners[1], corners[2]}).second && !newEdge)
        {
            for (NvEdgeInfo* edge : joined)
            {
                if (edge) edge->m_face1 = nullptr;
            }
            delete faceInfo;
            continue;
        }
        faces.push_back(faceInfo);
    }
    for (NvFaceInfo* face : faces)
    {
        for (int side = 0; side < 3; ++side)
        {
            const NvEdgeInfo* edgeInfo = face->m_edges[side];
            assert(edgeInfo != NULL);
            face->m_neighbors[side] = edgeInfo->OtherFace(face);
        }
    }
    edges.m_walk.Start(edges);
}

void NvStripifier::FindAllStrips(NvStripInfoVec& allStrips, NvFaceInfoVec& faces, NvEdgeInfoVec& edges, int numSamples)
{
    NvFaceInfoVec resetPoints;
    m_numFreeFaces = faces.size();
    for (;;)
    {
        resetPoints.clear();
        for (int i = 0; i < numSamples; ++i)
        {
            NvFaceInfo* nextFace = FindGoodResetPoint(faces, edges);
            if (!nextFace) break;
            if (std::find(resetPoints.begin(), resetPoints.end(), nextFace) == resetPoints.end())
                resetPoints.push_back(nextFace);
        }
        if (resetPoints.empty()) return;

        // Of the experiments only the best so far is kept, the earliest of equal ones.
        NvStripInfoVec best, strips;
        float bestSize = 0.0f;
        for (NvFaceInfo* face : resetPoints)
        {
            for (int start = 0; start < 6; ++start)
            {
                const NvStripStartInfo startInfo(face, face->m_edges[start / 2], start % 2 == 0);
                RunExperiment(strips, faces, edges, startInfo, bestSize);
                const float size = AvgStripSize(strips);
                if (size > bestSize)
                {
                    bestSize = size;
                    best.swap(strips);
                }
                destroyExperiment(strips);
            }
        }
        commitStrips(allStrips, best);
        for (const NvStripInfo* strip : best) m_numFreeFaces -= strip->m_faces.size() - strip->m_numDegenerates;
    }
}

// Stops early when the mean size can no longer come above `sizeToBeat`, and then leaves strips that do not.
void NvStripifier::RunExperiment(NvStripInfoVec& strips, NvFaceInfoVec& faces, NvEdgeInfoVec& edges,
                                 const NvStripStartInfo& firstStart, float sizeToBeat)
{
    const NvFaceInfo* faceInfo = firstStart.m_startFace;
    assert(faceInfo->m_stripId == -1);
    const int experimentId = m_numExperiments++;
    NvStripStartInfo startInfo = firstStart;
    std::size_t numReal = 0;
    bool hopeless = false;
    do
    {
        NvStripInfo* strip = new NvStripInfo(startInfo, m_numStrips++, experimentId);
        strips.push_back(strip);
        strip->Build(edges, faces);

        // The best that can come is the end here, or one more strip over all faces that are left.
        numReal += strip->m_faces.size() - strip->m_numDegenerates;
        const float sizeNow = static_cast<float>(numReal) / static_cast<float>(strips.size());
        const float sizeAtBest = static_cast<float>(m_numFreeFaces) / static_cast<float>(strips.size() + 1);
        hopeless = sizeNow <= sizeToBeat && sizeAtBest <= sizeToBeat;
    } while (!hopeless && FindTraversal(faces, edges, strips.back(), startInfo));
}

NvFaceInfo* NvStripifier::FindGoodResetPoint(NvFaceInfoVec& faces, NvEdgeInfoVec&)
{
    if (faces.empty()) return nullptr;
    int start = -1;
    if (bFirstTimeResetPoint) start = FindStartPoint(faces);
    bFirstTimeResetPoint = false;
    // The product is one in single precision.
    if (start < 0) start = static_cast<int>(static_cast<float>(faces.size() - 1) * meshJump);

    std::size_t place = FindFreeFace(faces, start);
    if (place == faces.size()) place = FindFreeFace(faces, 0);
    if (place == faces.size()) return nullptr;

    meshJump += 0.1f;
    if (meshJump > 1.0f) meshJump = 0.05f;
    NvFaceInfo* nextFace = faces[place];
    assert(nextFace->m_stripId < 0);
    return nextFace;
}

// The first face at `place` or behind it that has no strip; the number of faces when there is none. The links skip runs
// of faces that have one, and are drawn out to the end of each search.
std::size_t NvStripifier::FindFreeFace(const NvFaceInfoVec& faces, std::size_t place)
{
    if (m_skipTo.size() != faces.size())
    {
        m_skipTo.resize(faces.size());
        for (std::size_t i = 0; i < faces.size(); ++i) m_skipTo[i] = i + 1;
    }
    std::size_t found = place;
    while (found < faces.size() && faces[found]->m_stripId >= 0) found = m_skipTo[found];
    while (place < found)
    {
        const std::size_t next = m_skipTo[place];
        m_skipTo[place] = found;
        place = next;
    }
    return found;
}

int NvStripifier::FindStartPoint(const NvFaceInfoVec& faces)
{
    int fewestNeighbors = 3;
    int place = -1;
    for (std::size_t i = 0; i < faces.size(); ++i)
    {
        const int numNeighbors = NumNeighbors(faces[i]);
        if (numNeighbors >= fewestNeighbors) continue;
        fewestNeighbors = numNeighbors;
        place = static_cast<int>(i);
    }
    return place;
}

bool NvStripifier::FindTraversal(NvFaceInfoVec&, NvEdgeInfoVec& edges, const NvStripInfo* strip,
                                 NvStripStartInfo& startInfo)
{
    const NvStripStartInfo& start = strip->m_startInfo;
    const int v = start.m_toV1 ? start.m_startEdge->m_v1 : start.m_startEdge->m_v0;
    EdgeWalk& walk = edges.m_walk;
    for (std::size_t place = walk.First(v, *strip); place != walk.End(v); place = walk.Next(place, v, *strip))
    {
        NvEdgeInfo* edge = walk.At(place);
        NvFaceInfo* face = nullptr;
        if (!strip->IsInStrip(edge->m_face0) && !strip->IsMarked(edge->m_face1))
            face = edge->m_face1;
        else if (!strip->IsInStrip(edge->m_face1) && !strip->IsMarked(edge->m_face0))
            face = edge->m_face0;
        if (!face) continue;

        const bool toV1 = (strip->SharesEdge(face) ? edge->m_v0 : edge->m_v1) == v;
        startInfo = NvStripStartInfo(face, edge, toV1);
        return true;
    }
    return false;
}

void NvStripifier::SplitUpStripsAndOptimize(NvStripInfoVec& allStrips, NvStripInfoVec& outStrips, NvEdgeInfoVec& edges,
                                            NvFaceInfoVec& outFaces)
{
    m_numVertices = static_cast<int>(edges.size());
    NvStripInfoVec pieces, strips;
    for (const NvStripInfo* strip : allStrips) SplitUpStrip(*strip, pieces);
    RemoveSmallStrips(pieces, strips, outFaces);
    if (strips.empty()) return;

    CacheOrder order(MakeCache(), m_numVertices);
    int next = -1;
    float minCost = 10000.0f;
    for (std::size_t i = 0; i < strips.size(); ++i)
    {
        const NvFaceInfoVec& faces = strips[i]->m_faces;
        const std::size_t nStripFaceCount = faces.size();
        assert(nStripFaceCount > 0);
        const NvFaceInfo first = orderedFirstFace(faces, false);
        order.AddItem(faces.data(), nStripFaceCount, IsCW(faces[0], first.m_v0, first.m_v1));

        int numNeighbors = 0;
        for (const NvFaceInfo* face : faces) numNeighbors += NumNeighbors(face);
        const float cost = static_cast<float>(numNeighbors) / static_cast<float>(nStripFaceCount);
        if (cost >= minCost) continue;
        minCost = cost;
        next = static_cast<int>(i);
    }
    order.Start();

    // A strip of odd length turns the winding that goes on without a repeated vertex.
    bool bWantsCW = true;
    while (next >= 0)
    {
        NvStripInfo* strip = strips[next];
        order.Take(next);
        outStrips.push_back(strip);
        strip->visited = true;
        if (strip->m_faces.size() % 2 != 0) bWantsCW = !bWantsCW;
        next = order.FindBest(bWantsCW);
    }
}

// Copies a strip, in pieces of `cacheSize` real faces if it has more. Of what is left over up to three faces go to the
// last full piece.
void NvStripifier::SplitUpStrip(const NvStripInfo& strip, NvStripInfoVec& pieces) const
{
    const std::size_t threshold = cacheSize;
    std::size_t numReal = 0;
    for (const NvFaceInfo* face : strip.m_faces) numReal += !face->IsDegenerate();
    if (numReal <= threshold)
    {
        pieces.push_back(new NvStripInfo(strip));
        return;
    }

    const std::size_t leftover = numReal % threshold;
    const std::size_t numShared = leftover < 4 ? leftover : 0; // what the last full piece takes over
    const std::size_t lastFull = numReal / threshold - 1;
    std::size_t numPieces = 0, room = 0;
    for (NvFaceInfo* face : strip.m_faces)
    {
        const bool degenerate = face->IsDegenerate();
        if (room == 0)
        {
            if (degenerate) // nothing to turn at the beginning of a piece
            {
                if (face->m_bIsFake) delete face;
                continue;
            }
            pieces.push_back(new NvStripInfo(strip.m_startInfo, 0, -1));
            room = threshold + (numPieces++ == lastFull ? numShared : 0);
        }
        pieces.back()->m_faces.push_back(face);
        if (degenerate)
            ++pieces.back()->m_numDegenerates;
        else
            --room;
    }
}

void NvStripifier::RemoveSmallStrips(NvStripInfoVec& allStrips, NvStripInfoVec& allBigStrips, NvFaceInfoVec& faceList)
{
    NvFaceInfoVec loose;
    for (NvStripInfo* strip : allStrips)
    {
        if (strip->m_faces.size() >= minStripLength)
        {
            allBigStrips.push_back(strip);
            continue;
        }
        loose.insert(loose.end(), strip->m_faces.begin(), strip->m_faces.end());
        delete strip;
    }
    if (loose.empty()) return;

    // Without any of the winding asked for, the first of equal faces is the best.
    CacheOrder order(MakeCache(), m_numVertices);
    for (NvFaceInfo*& face : loose) order.AddItem(&face, 1, false);
    order.Start();
    for (int next = order.FindBest(true); next >= 0; next = order.FindBest(true))
    {
        order.Take(next);
        faceList.push_back(loose[next]);
    }
}

// A cache with room for every vertex drops none, so a greater one need not be had.
VertexCache NvStripifier::MakeCache() const
{
    return VertexCache(std::min(cacheSize, m_numVertices));
}

void NvStripifier::CreateStrips(const NvStripInfoVec& strips, IntVec& stripIndices, bool stitch,
                                unsigned int& numSeparateStrips, bool restart, unsigned int restartValue)
{
    assert(numSeparateStrips == 0);
    const std::size_t nStripCount = strips.size();
    assert(nStripCount > 0);
    for (std::size_t i = 0; i < nStripCount; ++i)
    {
        const NvFaceInfoVec& faces = strips[i]->m_faces;
        const std::size_t nStripFaceCount = faces.size();
        assert(nStripFaceCount > 0);

        // The winding of a strip is that of its first triangle; another vertex in front turns it.
        NvFaceInfo last = orderedFirstFace(faces, true);
        const bool isCW = IsCW(faces[0], last.m_v0, last.m_v1);
        const bool joins = i > 0 && stitch && !restart;
        if (joins) stripIndices.push_back(last.m_v0);
        if ((joins ? NextIsCW(stripIndices.size()) : true) != isCW) stripIndices.push_back(last.m_v0);

        stripIndices.insert(stripIndices.end(), {last.m_v0, last.m_v1, last.m_v2});
        for (std::size_t j = 1; j < nStripFaceCount; ++j)
        {
            const NvFaceInfo& face = *faces[j];
            const int corners[3] = {face.m_v0, face.m_v1, face.m_v2};
            const int* added =
                std::find_if(corners, corners + 3, [&last](int vertex) { return !last.HasVertex(vertex); });
            // A face that adds nothing, as a degenerate one, is gone through by its third vertex.
            last = added == corners + 3 ? face : NvFaceInfo(last.m_v1, last.m_v2, *added);
            stripIndices.push_back(last.m_v2);
        }

        if (restart)
            stripIndices.push_back(static_cast<int>(restartValue));
        else if (!stitch)
        {
            stripIndices.push_back(-1);
            ++numSeparateStrips;
        }
        else if (i + 1 < nStripCount)
            stripIndices.push_back(last.m_v2);
    }
    if (stitch || restart) numSeparateStrips = 1;
}

float NvStripifier::AvgStripSize(const NvStripInfoVec& strips)
{
    std::size_t numReal = 0;
    for (const NvStripInfo* strip : strips) numReal += strip->m_faces.size() - strip->m_numDegenerates;
    return static_cast<float>(numReal) / static_cast<float>(strips.size());
}

int NvStripifier::NumNeighbors(const NvFaceInfo* face)
{
    int number = 0;
    for (const NvFaceInfo* neighbor : face->m_neighbors) number += neighbor != nullptr;
    return number;
}

int NvStripifier::GetNextIndex(const IntVec& stripIndices, const NvFaceInfo* face)
{
    const std::size_t numIndices = stripIndices.size();
    assert(numIndices >= 2);
    const int before = stripIndices[numIndices - 2];
    const int last = stripIndices[numIndices - 1];

    int found = -1;
    int numFound = 0;
    for (const int vertex : {face->m_v0, face->m_v1, face->m_v2})
    {
        if (vertex != before && vertex != last && numFound++ == 0) found = vertex;
    }
    if (numFound > 1)
    {
        std::puts("GetNextIndex: Triangle doesn't have all of its vertices");
        std::puts("GetNextIndex: Duplicate triangle probably got us derailed");
    }
    if (numFound > 0) return found;
    if (face->m_v0 == face->m_v1 || face->m_v0 == face->m_v2) return face->m_v0;
    return face->m_v1 == face->m_v2 ? face->m_v1 : -1;
}

bool NvStripifier::IsCW(const NvFaceInfo* face, int p0, int p1)
{
    if (face->m_v0 == p0) return face->m_v1 == p1;
    if (face->m_v1 == p0) return face->m_v2 == p1;
    return face->m_v0 == p1;
}

} // namespace NVIDIA
