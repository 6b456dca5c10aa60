#include "nvtristrip/NvTriStripObjects.h"

#include "NvCacheOrder.h"
#include "NvExperiments.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <numeric>
#include <utility>

namespace NVIDIA
{

void NvStripifier::Stripify(const WordVec& indices, unsigned int inCacheSize, unsigned int inMinStripLength,
                            unsigned int maxIndex, NvStripList& outStrips, IntVec& outFaces)
{
    // Real caches hold a little less than they have entries for.
    const unsigned int pipeline = 6;
    cacheSize = inCacheSize > pipeline ? static_cast<int>(std::min<unsigned int>(inCacheSize - pipeline, INT_MAX)) : 1;
    minStripLength = inMinStripLength;

    NvStripList allStrips;
    m_mesh.BuildStripifyInfo(indices, maxIndex);
    FindAllStrips(allStrips, 10);
    SplitUpStripsAndOptimize(allStrips, outStrips, outFaces);
}

void NvStripifier::FindAllStrips(NvStripList& allStrips, int numSamples)
{
    m_skipTo.resize(m_mesh.m_numRealFaces);
    std::iota(m_skipTo.begin(), m_skipTo.end(), 1);
    NvExperiments experiments(m_mesh);
    IntVec resetPoints;
    for (;;)
    {
        resetPoints.clear();
        for (int i = 0; i < numSamples; ++i)
        {
            const int nextFace = FindGoodResetPoint();
            if (nextFace < 0) break;
            if (std::find(resetPoints.begin(), resetPoints.end(), nextFace) == resetPoints.end())
                resetPoints.push_back(nextFace);
        }
        if (resetPoints.empty()) return;
        for (const int face : resetPoints) experiments.Try(face);
        experiments.CommitStrips(allStrips);
    }
}

int NvStripifier::FindGoodResetPoint()
{
    const std::size_t numFaces = m_mesh.m_numRealFaces;
    if (numFaces == 0) return -1;
    int start = -1;
    if (bFirstTimeResetPoint) start = FindStartPoint();
    bFirstTimeResetPoint = false;
    // The product is one in single precision.
    if (start < 0) start = static_cast<int>(static_cast<float>(numFaces - 1) * meshJump);

    std::size_t place = FindFreeFace(start);
    if (place == numFaces) place = FindFreeFace(0);
    if (place == numFaces) return -1;

    meshJump += 0.1f;
    if (meshJump > 1.0f) meshJump = 0.05f;
    const int nextFace = static_cast<int>(place);
    assert(!m_mesh.IsTaken(nextFace));
    return nextFace;
}

// The first face at `place` or behind it that has no strip; the number of faces when there is none. The links skip runs
// of faces that have one, and are drawn out to the end of each search.
std::size_t NvStripifier::FindFreeFace(std::size_t place)
{
    std::size_t found = place;
    while (found < m_skipTo.size() && m_mesh.IsTaken(static_cast<int>(found))) found = m_skipTo[found];
    while (place < found) place = std::exchange(m_skipTo[place], static_cast<int>(found));
    return found;
}

int NvStripifier::FindStartPoint() const
{
    int fewestNeighbors = 3;
    int place = -1;
    for (int face = 0; face < static_cast<int>(m_mesh.m_numRealFaces); ++face)
    {
        const int numNeighbors = m_mesh.NumNeighbors(face);
        if (numNeighbors >= fewestNeighbors) continue;
        fewestNeighbors = numNeighbors;
        place = face;
    }
    return place;
}

void NvStripifier::SplitUpStripsAndOptimize(const NvStripList& allStrips, NvStripList& outStrips,
                                            IntVec& outFaces) const
{
    NvStripList pieces, strips;
    for (const NvStripInfo& strip : allStrips.m_strips) SplitUpStrip(allStrips, strip, pieces);
    RemoveSmallStrips(pieces, strips, outFaces);
    if (strips.m_strips.empty()) return;

    CacheOrder order(m_mesh.m_faces, MakeCache(), m_mesh.m_numVertices);
    int next = -1;
    float minCost = 10000.0f;
    for (const NvStripInfo& strip : strips.m_strips)
    {
        const int* faces = strips.FacesOf(strip);
        const std::size_t nStripFaceCount = strip.m_numFaces;
        assert(nStripFaceCount > 0);
        const NvFaceInfo first = OrderedFirstFace(faces, nStripFaceCount, false);
        order.AddItem(faces, nStripFaceCount, IsCW(m_mesh.m_faces[faces[0]], first.m_v0, first.m_v1));

        int numNeighbors = 0;
        for (std::size_t i = 0; i < nStripFaceCount; ++i) numNeighbors += m_mesh.NumNeighbors(faces[i]);
        const float cost = static_cast<float>(numNeighbors) / static_cast<float>(nStripFaceCount);
        if (cost >= minCost) continue;
        minCost = cost;
        next = static_cast<int>(&strip - strips.m_strips.data());
    }
    order.Start();

    // A strip of odd length turns the winding that goes on without a repeated vertex.
    bool bWantsCW = true;
    while (next >= 0)
    {
        const NvStripInfo& strip = strips.m_strips[next];
        order.Take(next);
        outStrips.m_strips.push_back(strip);
        if (strip.m_numFaces % 2 != 0) bWantsCW = !bWantsCW;
        next = order.FindBest(bWantsCW);
    }
    outStrips.m_faces = std::move(strips.m_faces);
}

// Copies a strip, in pieces of `cacheSize` real faces if it has more. Of what is left over up to three faces go to the
// last full piece.
void NvStripifier::SplitUpStrip(const NvStripList& strips, const NvStripInfo& strip, NvStripList& pieces) const
{
    const int* begin = strips.FacesOf(strip);
    const int* end = begin + strip.m_numFaces;
    const std::size_t threshold = cacheSize;
    const auto isReal = [this](int face) { return !m_mesh.m_faces[face].IsDegenerate(); };
    const std::size_t numReal = std::count_if(begin, end, isReal);
    if (numReal <= threshold)
    {
        pieces.m_strips.push_back({pieces.m_faces.size(), strip.m_numFaces});
        pieces.m_faces.insert(pieces.m_faces.end(), begin, end);
        return;
    }

    const std::size_t leftover = numReal % threshold;
    const std::size_t numShared = leftover < 4 ? leftover : 0; // what the last full piece takes over
    const std::size_t lastFull = numReal / threshold - 1;
    std::size_t numPieces = 0, room = 0;
    for (const int* face = begin; face != end; ++face)
    {
        if (room == 0)
        {
            if (!isReal(*face)) continue; // nothing to turn at the beginning of a piece
            pieces.m_strips.push_back({pieces.m_faces.size(), 0});
            room = threshold + (numPieces++ == lastFull ? numShared : 0);
        }
        pieces.m_faces.push_back(*face);
        ++pieces.m_strips.back().m_numFaces;
        room -= isReal(*face);
    }
}

void NvStripifier::RemoveSmallStrips(const NvStripList& allStrips, NvStripList& allBigStrips, IntVec& faceList) const
{
    IntVec loose;
    for (const NvStripInfo& strip : allStrips.m_strips)
    {
        const bool isBig = strip.m_numFaces >= minStripLength;
        IntVec& list = isBig ? allBigStrips.m_faces : loose;
        if (isBig) allBigStrips.m_strips.push_back({list.size(), strip.m_numFaces});
        const int* faces = allStrips.FacesOf(strip);
        list.insert(list.end(), faces, faces + strip.m_numFaces);
    }
    if (loose.empty()) return;

    // Without any of the winding asked for, the first of equal faces is the best.
    CacheOrder order(m_mesh.m_faces, MakeCache(), m_mesh.m_numVertices);
    for (const int& face : loose) order.AddItem(&face, 1, false);
    order.Start();
    for (int next = order.FindBest(true); next >= 0; next = order.FindBest(true))
    {
        order.Take(next);
        faceList.push_back(loose[next]);
    }
}

// Copies the first face of a strip with its vertices in the order in which the strip has them: first the one that the
// second face lacks, then the one that the third face lacks.
NvFaceInfo NvStripifier::OrderedFirstFace(const int* faces, std::size_t numFaces, bool heedDegenerate) const
{
    const NvFaceInfo& original = m_mesh.m_faces[faces[0]];
    NvFaceInfo first(original.m_v0, original.m_v1, original.m_v2);
    if (numFaces < 2) return first;
    const NvFaceInfo& second = m_mesh.m_faces[faces[1]];
    if (second.HasVertex(first.m_v0))
    {
        if (!second.HasVertex(first.m_v1))
            std::swap(first.m_v0, first.m_v1);
        else if (!second.HasVertex(first.m_v2))
            std::swap(first.m_v0, first.m_v2);
    }
    if (numFaces < 3) return first;
    const NvFaceInfo& third = m_mesh.m_faces[faces[2]];
    const bool swap = heedDegenerate && second.IsDegenerate()
                          ? first.m_v1 == second.m_v1
                          : third.HasVertex(first.m_v1) && !third.HasVertex(first.m_v0) && !third.HasVertex(first.m_v2);
    if (swap) std::swap(first.m_v1, first.m_v2);
    return first;
}

void NvStripifier::CreateStrips(const NvStripList& strips, IntVec& stripIndices, bool stitch,
                                unsigned int& numSeparateStrips, bool restart, unsigned int restartValue) const
{
    assert(numSeparateStrips == 0);
    const std::size_t nStripCount = strips.m_strips.size();
    assert(nStripCount > 0);
    for (std::size_t i = 0; i < nStripCount; ++i)
    {
        const int* faces = strips.FacesOf(strips.m_strips[i]);
        const std::size_t nStripFaceCount = strips.m_strips[i].m_numFaces;
        assert(nStripFaceCount > 0);

        // The winding of a strip is that of its first triangle; another vertex in front turns it.
        NvFaceInfo last = OrderedFirstFace(faces, nStripFaceCount, true);
        const bool isCW = IsCW(m_mesh.m_faces[faces[0]], last.m_v0, last.m_v1);
        const bool joins = i > 0 && stitch && !restart;
        if (joins) stripIndices.push_back(last.m_v0);
        if ((joins ? NextIsCW(stripIndices.size()) : true) != isCW) stripIndices.push_back(last.m_v0);

        stripIndices.insert(stripIndices.end(), {last.m_v0, last.m_v1, last.m_v2});
        for (std::size_t j = 1; j < nStripFaceCount; ++j)
        {
            const NvFaceInfo& face = m_mesh.m_faces[faces[j]];
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

bool NvStripifier::IsCW(const NvFaceInfo& face, int p0, int p1)
{
    if (face.m_v0 == p0) return face.m_v1 == p1;
    if (face.m_v1 == p0) return face.m_v2 == p1;
    return face.m_v0 == p1;
}

} // namespace NVIDIA
