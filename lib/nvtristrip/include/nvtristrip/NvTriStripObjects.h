#pragma once

#include <vector>

// What GenerateStrips works with. All of it exists only during one call.
//
// Faces are joined by their edges. Strips grow from many starting points in experiments; of those the best is committed
// and the others are destroyed, until every face has a strip. The strips are then cut to the size of the cache, and
// ordered so that each follows the one that left most of its vertices in the cache.
//
// Look-ups keep that near to linear in the number of triangles, and change nothing in the result: faces know their
// edges, free faces and open edges are found by links (FindFreeFace, EdgeWalk), strips and loose faces are listed by
// vertex for scoring (CacheOrder).
namespace NVIDIA
{

typedef std::vector<unsigned int> WordVec;
typedef std::vector<int> IntVec;

struct NvEdgeInfo;

// One triangle. Fake ones are degenerate and stand in a strip where it turns; they belong to the strip that lists them.
// What growing a strip looks at lies in one line of the processor's cache: it hops through all faces many times.
struct alignas(64) NvFaceInfo
{
    NvFaceInfo(int v0, int v1, int v2, bool bIsFake = false) : m_v0(v0), m_v1(v1), m_v2(v2), m_bIsFake(bIsFake) {}

    // The face on the other side of the edge between two vertices of this one, or null. Where more than two faces meet
    // in an edge it joins the first two, and the others have none across it. A fake face has no edges.
    NvFaceInfo* Across(int v0, int v1) const;

    bool HasVertex(int vertex) const { return vertex == m_v0 || vertex == m_v1 || vertex == m_v2; }
    bool IsDegenerate() const { return m_v0 == m_v1 || m_v0 == m_v2 || m_v1 == m_v2; }

    int m_v0, m_v1, m_v2;
    int m_stripId = -1;     // the strip that it really belongs to, -1 for none
    int m_testStripId = -1; // its strip and trial while experiments run, -1 for none
    int m_experimentId = -1;
    bool m_bIsFake;
    NvFaceInfo* m_neighbors[3] = {}; // not owned: what lies behind each edge, null for nothing
    NvEdgeInfo* m_edges[3] = {};     // not owned: m_v0 to m_v1, m_v1 to m_v2, m_v2 to m_v0; null for a fake face
};

typedef std::vector<NvFaceInfo*> NvFaceInfoVec;

// One undirected edge. It hangs in the lists of both its vertices, and each of them holds a reference.
struct NvEdgeInfo
{
    NvEdgeInfo(int v0, int v1) : m_v0(v0), m_v1(v1) {}

    // The face on the other side, or null; also for a face that is on no side.
    NvFaceInfo* OtherFace(const NvFaceInfo* face) const
    {
        return face == m_face0 ? m_face1 : face == m_face1 ? m_face0 : nullptr;
    }

    int m_refCount = 2;
    NvFaceInfo* m_face0 = nullptr; // not owned, null for none
    NvFaceInfo* m_face1 = nullptr;
    int m_v0, m_v1;
    NvEdgeInfo* m_nextV0 = nullptr; // owned by the lists together
    NvEdgeInfo* m_nextV1 = nullptr;
};

struct NvStripInfo;

// Walks over the edge lists of vertices without those edges that no strip can go on from, since a side is missing or
// both are taken. What is really taken stays so, and what an experiment took does until the next one: the walk keeps
// links over both.
class EdgeWalk
{
public:
    void Start(const std::vector<NvEdgeInfo*>& lists);

    // Places of the edges around a vertex that are left, from a strip's point of view, in the order of the list. Both
    // return End(vertex) when there is none.
    std::size_t First(int vertex, const NvStripInfo& strip) { return Find(m_first[vertex], End(vertex), strip); }
    std::size_t Next(std::size_t place, int vertex, const NvStripInfo& strip)
    {
        return Find(place + 1, End(vertex), strip);
    }
    std::size_t End(int vertex) const { return m_first[vertex + 1]; }
    NvEdgeInfo* At(std::size_t place) const { return m_places[place].edge; }

private:
    struct Place
    {
        NvEdgeInfo* edge;       // not owned
        std::size_t skipTo;     // used where the edge is really over: a later place, all between being over too
        std::size_t testSkipTo; // the same for the experiment with the number below
        int experimentId;
    };

    std::size_t Find(std::size_t place, std::size_t end, const NvStripInfo& strip);
    std::size_t FindOpen(std::size_t place, std::size_t end);

    std::vector<std::size_t> m_first; // by vertex, and one more: where its places begin
    std::vector<Place> m_places;
};

// The list heads of all vertices up to the highest index, and what is at hand for building strips.
struct NvEdgeInfoVec : std::vector<NvEdgeInfo*>
{
    EdgeWalk m_walk;
    IntVec m_scratchIndices;                       // the vertices of a strip in the making
    NvFaceInfoVec m_forwardFaces, m_backwardFaces; // its faces to both sides of the first
    IntVec m_vertexMarks;                          // by vertex: equal to m_mark where the strip has it
    int m_mark = 0;
};

// Where a strip begins: on this face, along this edge, towards its m_v1 or its m_v0.
struct NvStripStartInfo
{
    NvStripStartInfo(NvFaceInfo* startFace, NvEdgeInfo* startEdge, bool toV1)
        : m_startFace(startFace), m_startEdge(startEdge), m_toV1(toV1)
    {
    }

    NvFaceInfo* m_startFace; // not owned
    NvEdgeInfo* m_startEdge; // not owned
    bool m_toV1;
};

// One strip: faces of which each has an edge in common with the next.
struct NvStripInfo
{
    NvStripInfo(const NvStripStartInfo& startInfo, int stripId, int experimentId)
        : m_startInfo(startInfo), m_stripId(stripId), m_experimentId(experimentId)
    {
    }

    // Grows the strip from its start in both directions, over faces that are not marked.
    void Build(NvEdgeInfoVec& edges, NvFaceInfoVec& faces);

    // Appends one direction of growth to `faces`: from `face` on over its edge e0 to e1. With `onlyNew` the way ends at
    // a face that brings no vertex which the strip lacks.
    void Grow(NvEdgeInfoVec& edges, NvFaceInfoVec& faces, const NvFaceInfo* face, int e0, int e1, bool onlyNew);

    // Puts both directions together: the backward one reversed, then the forward one.
    void Combine(const NvFaceInfoVec& forward, const NvFaceInfoVec& backward);

    // Whether a face is taken, by a real strip or by one of this strip's experiment.
    bool IsMarked(const NvFaceInfo* face) const
    {
        return face->m_stripId >= 0 || (m_experimentId >= 0 && face->m_experimentId == m_experimentId);
    }
    void MarkTriangle(NvFaceInfo* face) const;

    bool IsInStrip(const NvFaceInfo* face) const
    {
        return face && (m_experimentId >= 0 ? face->m_testStripId : face->m_stripId) == m_stripId;
    }

    // Whether an edge of the face has a face of this strip.
    bool SharesEdge(const NvFaceInfo* face) const;

    NvStripStartInfo m_startInfo;
    NvFaceInfoVec m_faces; // only the fake ones are owned, as long as the strip is an experiment
    int m_stripId;
    int m_experimentId; // -1 once the strip is real
    bool visited = false;
    int m_numDegenerates = 0; // fake faces in m_faces
};

typedef std::vector<NvStripInfo*> NvStripInfoVec;

// A first-in first-out model of a vertex cache in hardware. All entries are -1 at first.
class VertexCache
{
public:
    explicit VertexCache(int size);

    bool InCache(int entry) const;

    // Puts an entry at place 0, moves the others on by one and drops the last, which is returned.
    int AddEntry(int entry);

    int At(int place) const { return entries[(m_front + place) % numEntries]; }

    int numEntries;
    IntVec entries; // a ring that begins at m_front

private:
    int m_front = 0;
    IntVec m_counts; // by vertex: how often it stands in the cache
};

class NvStripifier
{
public:
    // Makes strips of at most `inCacheSize` - 6 faces or little more, and loose faces out of strips that have fewer
    // than `minStripLength`. The caller frees the strips and all faces of both, fake ones included.
    void Stripify(const WordVec& inIndices, unsigned int inCacheSize, unsigned int inMinStripLength,
                  unsigned int maxIndex, NvStripInfoVec& outStrips, NvFaceInfoVec& outFaces);

    // Writes out strips, of which there must be at least one, as one list of indices: stitched together, or each
    // followed by `restartValue`, or each by -1. `numSeparateStrips` must be 0 and becomes the number of strips in it.
    void CreateStrips(const NvStripInfoVec& strips, IntVec& stripIndices, bool stitch, unsigned int& numSeparateStrips,
                      bool restart, unsigned int restartValue);

    // Makes faces and edges from the indices. Drops degenerate and repeated faces.
    void BuildStripifyInfo(NvFaceInfoVec& faces, NvEdgeInfoVec& edges, unsigned int maxIndex);

    // Gives every face a strip. In each pass up to `numSamples` faces are tried, from three edges in both directions.
    void FindAllStrips(NvStripInfoVec& allStrips, NvFaceInfoVec& faces, NvEdgeInfoVec& edges, int numSamples);

    // A face without a strip to begin the next ones at, or null when there is none: at first at the border of the mesh,
    // then hopping on through the list of faces.
    NvFaceInfo* FindGoodResetPoint(NvFaceInfoVec& faces, NvEdgeInfoVec& edges);

    // The place of the first face that has the most edges without a neighbour, -1 when none has any.
    static int FindStartPoint(const NvFaceInfoVec& faces);

    // Finds where the strip behind `strip` may begin. False when nowhere.
    static bool FindTraversal(NvFaceInfoVec& faces, NvEdgeInfoVec& edges, const NvStripInfo* strip,
                              NvStripStartInfo& startInfo);

    // Cuts the strips to the size of the cache, takes the small ones apart and orders the rest. Of `allStrips` nothing
    // is kept but faces.
    void SplitUpStripsAndOptimize(NvStripInfoVec& allStrips, NvStripInfoVec& outStrips, NvEdgeInfoVec& edges,
                                  NvFaceInfoVec& outFaces);

    // Destroys the strips that are too small; their faces go to `faceList`, ordered for the cache.
    void RemoveSmallStrips(NvStripInfoVec& allStrips, NvStripInfoVec& allBigStrips, NvFaceInfoVec& faceList);

    // Mean number of real faces of some strips.
    static float AvgStripSize(const NvStripInfoVec& strips);

    // Edges of the face, 0 to 3, with another face behind.
    static int NumNeighbors(const NvFaceInfo* face);

    // The vertex of the face that is none of the last two in the list.
    static int GetNextIndex(const IntVec& indices, const NvFaceInfo* face);

    // Whether p0 is followed by p1 in the cyclic order of the face.
    static bool IsCW(const NvFaceInfo* face, int p0, int p1);
    static bool NextIsCW(std::size_t numIndices) { return numIndices % 2 == 0; }

    WordVec indices;
    int cacheSize = 1;
    unsigned int minStripLength = 0;
    float meshJump = 0.0f; // where FindGoodResetPoint looks next, as a share of the list of faces
    bool bFirstTimeResetPoint = true;

private:
    std::size_t FindFreeFace(const NvFaceInfoVec& faces, std::size_t place);
    void RunExperiment(NvStripInfoVec& strips, NvFaceInfoVec& faces, NvEdgeInfoVec& edges,
                       const NvStripStartInfo& startInfo, float sizeToBeat);
    void SplitUpStrip(const NvStripInfo& strip, NvStripInfoVec& pieces) const;
    VertexCache MakeCache() const;

    int m_numVertices = 0;
    std::size_t m_numFreeFaces = 0;
    int m_numExperiments = 0; // over all passes, so that marks of earlier ones never count
    int m_numStrips = 0;
    std::vector<std::size_t> m_skipTo; // by face: a later place, with no free face between; used where it has a strip
};

} // namespace NVIDIA
