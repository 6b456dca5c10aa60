#pragma once

#include "nvtristrip/NvMesh.h"
#include "nvtristrip/NvStripList.h"
#include "nvtristrip/VertexCache.h"

// What GenerateStrips works with. All of it exists only during one call.
//
// Faces are joined by their edges (NvMesh). Strips grow from many starting points in experiments; of those the best is
// committed, until every face has a strip (NvExperiments). The strips are then cut to the size of the cache, and
// ordered so that each follows the one that left most of its vertices in the cache (CacheOrder).
namespace NVIDIA
{

class NvStripifier
{
public:
    // Makes strips of at most `inCacheSize` - 6 faces or little more, and loose faces out of strips that have fewer
    // than `minStripLength`. Both name faces by their places in m_mesh.
    void Stripify(const WordVec& indices, unsigned int inCacheSize, unsigned int inMinStripLength,
                  unsigned int maxIndex, NvStripList& outStrips, IntVec& outFaces);

    // Writes out strips, of which there must be at least one, as one list of indices: stitched together, or each
    // followed by `restartValue`, or each by -1. `numSeparateStrips` must be 0 and becomes the number of strips in it.
    void CreateStrips(const NvStripList& strips, IntVec& stripIndices, bool stitch, unsigned int& numSeparateStrips,
                      bool restart, unsigned int restartValue) const;

    // Gives every face a strip. In each pass up to `numSamples` faces are tried, from three edges in both directions.
    void FindAllStrips(NvStripList& allStrips, int numSamples);

    // A face without a strip to begin the next ones at, or -1 when there is none: at first at the border of the mesh,
    // then hopping on through the list of faces.
    int FindGoodResetPoint();

    // The first face that has the most edges without a neighbour, -1 when none has any.
    int FindStartPoint() const;

    // Cuts the strips to the size of the cache, takes the small ones apart and orders the rest.
    void SplitUpStripsAndOptimize(const NvStripList& allStrips, NvStripList& outStrips, IntVec& outFaces) const;

    // Separates strips that are large enough from the faces of the others, which are ordered for the cache.
    void RemoveSmallStrips(const NvStripList& allStrips, NvStripList& allBigStrips, IntVec& faceList) const;

    // Whether p0 is followed by p1 in the cyclic order of the face.
    static bool IsCW(const NvFaceInfo& face, int p0, int p1);
    static bool NextIsCW(std::size_t numIndices) { return numIndices % 2 == 0; }

    NvMesh m_mesh;
    int cacheSize = 1;
    std::size_t minStripLength = 0;
    float meshJump = 0.0f; // where FindGoodResetPoint looks next, as a share of the list of faces
    bool bFirstTimeResetPoint = true;

private:
    std::size_t FindFreeFace(std::size_t place);
    void SplitUpStrip(const NvStripList& strips, const NvStripInfo& strip, NvStripList& pieces) const;
    NvFaceInfo OrderedFirstFace(const int* faces, std::size_t numFaces, bool heedDegenerate) const;
    VertexCache MakeCache() const { return VertexCache(cacheSize, m_mesh.m_numVertices); }

    IntVec m_skipTo; // by face: a later place, with no free face between; used where it has a strip
};

} // namespace NVIDIA
