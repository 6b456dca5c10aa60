#pragma once

#include "nvtristrip/NvTriStripObjects.h"

#include <set>
#include <utility>

namespace NVIDIA
{

// Puts items (strips, or single faces) in the order in which each hits best what the ones before left in the vertex
// cache. An item's score is the number of hits over its faces, divided by their number. Items are listed by their
// vertices, so that a change of the cache costs only as much as there are items around the vertices that came or went.
class CacheOrder
{
public:
    CacheOrder(const VertexCache& cache, int numVertices);

    // Items are numbered from 0 on. The faces must stay; at least one.
    void AddItem(NvFaceInfo* const* faces, std::size_t numFaces, bool isCW);

    // To be called once, when all items are there.
    void Start();

    // The waiting item with the highest score, -1 when none waits. Of equal ones it is the last with the winding that
    // is asked for; when none has it, the first.
    int FindBest(bool wantsCW);

    // Sends an item through the cache; it waits no longer.
    void Take(int item);

private:
    struct Item
    {
        NvFaceInfo* const* faces; // not owned
        std::size_t numFaces;
        bool isCW;
        bool waiting;
        bool touched; // the hits have changed since `score` was computed
        int hits;
        float score;
    };

    void Touch(int vertex, int change);
    void Rescore(int item);
    int FindWaiting(bool wantsCW);

    VertexCache m_cache;
    std::vector<Item> m_items;
    std::set<std::pair<float, int>> m_hitting[2]; // score and number of what waits and has hits, by winding
    std::size_t m_firstWaiting = 0;               // no item in front of it waits
    std::size_t m_endWaiting[2] = {};             // by winding: from here on none waits
    std::vector<std::size_t> m_firstUse;          // by vertex, and one more: where its uses begin in m_uses
    IntVec m_uses;                                // the items of all vertices, once for each corner of a face
    IntVec m_changes;                             // by vertex: how often it came into the cache less how often it went
    IntVec m_changedVertices, m_touchedItems;
};

} // namespace NVIDIA
