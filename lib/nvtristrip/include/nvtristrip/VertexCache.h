#pragma once

#include "nvtristrip/NvFaceInfo.h"

#include <cstddef>

namespace NVIDIA
{

// A first-in first-out model of a vertex cache in hardware. All entries are -1 at first.
class VertexCache
{
public:
    // `size` entries, at least one, for vertices below `numVertices`. A cache with room for every vertex drops none, so
    // it is made no greater than that.
    VertexCache(int size, std::size_t numVertices);

    bool InCache(int vertex) const { return m_inCache[vertex]; }

    // Puts a vertex that is not in the cache at place 0, moves the others on by one and drops the last, which is
    // returned.
    int AddEntry(int vertex);

private:
    IntVec entries; // a ring that begins at m_front
    std::size_t m_front = 0;
    std::vector<char> m_inCache; // by vertex
};

} // namespace NVIDIA
