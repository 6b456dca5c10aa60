#pragma once

#include "nvtristrip/NvStripList.h"
#include "nvtristrip/VertexCache.h"

#include <unordered_map>
#include <utility>

namespace NVIDIA
{

// Puts items (strips, or single faces) in the order in which each hits best what the ones before left in the vertex
// cache. An item's score is the number of hits over its faces, divided by their number.
//
// Items are listed by their vertices, so that a change of the cache costs as much as there are items around the
// vertices that came or went. A hub, a vertex with very many items around it, would make that too much: items that are
// alike in their hubs, their length and their winding share a pool, and what they hit of the hubs is counted there once
// for all of them. What is left goes into two pools without hubs, one for each winding.
class CacheOrder
{
public:
    // The faces must stay.
    CacheOrder(const NvFaceInfoVec& faces, const VertexCache& cache, std::size_t numVertices);

    // Items are numbered from 0 on. Their faces, at least one, are given by places and must stay.
    void AddItem(const int* faces, std::size_t numFaces, bool isCW);

    // To be called once, when all items are there.
    void Start();

    // The waiting item with the highest score, -1 when none waits. Of equal ones it is the last with the winding that
    // is asked for; when none has it, the first.
    int FindBest(bool wantsCW);

    // Sends an item through the cache; it waits no longer.
    void Take(int item);

private:
    // They are come to in no order, so each lies within one line of the processor's cache.
    struct alignas(32) Item
    {
        const int* faces; // not owned
        int numFaces;
        int pool;
        int hits;    // of vertices that are not counted by the pool
        float score; // of these hits alone
        bool isCW;
        bool waiting;
        bool touched; // the hits have changed since `score` was computed
    };

    struct Use
    {
        int item;
        int number; // corners of its faces
    };

    typedef std::pair<float, int> Entry; // score and number of an item

    // Items of one winding of which all have the same hits of hubs.
    struct Pool
    {
        bool isCW;
        int hubHits = 0;
        bool listed = false; // in m_listedPools
        IntVec items;        // all of a pool with hubs, ascending
        std::size_t firstWaiting = 0, endWaiting = 0;

        // What has a score above 0, with its highest and last item, or its highest and first one, in front. Entries
        // are over when the item has another score by now, or is taken.
        std::vector<Entry> last, first;
        int numHitting = 0;
    };

    template <class Visit> void VisitVertices(const Item& item, Visit visit) const;
    void MakePools(const IntVec& numUses);
    void List(int pool);
    int BestOf(Pool& pool, bool wantsLast);
    int FindWaiting(bool wantsCW);
    void Touch(int vertex, int change);
    void Rescore(int item);
    void Tidy(Pool& pool);
    bool IsOver(const Entry& entry) const
    {
        return !m_items[entry.second].waiting || m_items[entry.second].score != entry.first;
    }

    const NvFaceInfoVec& m_faces;
    VertexCache m_cache;
    std::size_t m_numVertices;
    std::vector<Item> m_items;
    std::vector<Pool> m_pools;                                        // the first two have no hubs
    IntVec m_listedPools;                                             // all with a score above 0, and some that had one
    std::unordered_map<int, std::vector<std::pair<int, int>>> m_hubs; // pools, and hits of each of their items
    std::size_t m_firstWaiting = 0;                                   // no item in front of it waits
    std::size_t m_endWaiting[2] = {};                                 // by winding: from here on none waits
    IntVec m_firstUse; // by vertex, and one more: where its uses begin in m_uses
    std::vector<Use> m_uses;
    IntVec m_changes; // by vertex: how often it came into the cache less how often it went
    IntVec m_changedVertices, m_touchedItems;
};

} // namespace NVIDIA
