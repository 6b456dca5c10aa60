#include "nvtristrip/VertexCache.h"

#include <algorithm>
#include <utility>

namespace NVIDIA
{

VertexCache::VertexCache(int size, std::size_t numVertices)
    : entries(std::min(static_cast<std::size_t>(size), numVertices), -1), m_inCache(numVertices)
{
}

int VertexCache::AddEntry(int vertex)
{
    m_front = (m_front > 0 ? m_front : entries.size()) - 1;
    const int dropped = std::exchange(entries[m_front], vertex);
    if (dropped >= 0) m_inCache[dropped] = false;
    m_inCache[vertex] = true;
    return dropped;
}

} // namespace NVIDIA
