#include "NvCacheOrder.h"

namespace NVIDIA
{

CacheOrder::CacheOrder(const VertexCache& cache, int numVertices)
    : m_cache(cache), m_firstUse(static_cast<std::size_t>(numVertices) + 1), m_changes(numVertices)
{
}

void CacheOrder::AddItem(NvFaceInfo* const* faces, std::size_t numFaces, bool isCW)
{
    m_items.push_back({faces, numFaces, isCW, true, false, 0, 0.0f});
    for (std::size_t i = 0; i < numFaces; ++i)
    {
        for (const int vertex : {faces[i]->m_v0, faces[i]->m_v1, faces[i]->m_v2}) ++m_firstUse[vertex + 1];
    }
}

void CacheOrder::Start()
{
    for (std::size_t i = 1; i < m_firstUse.size(); ++i) m_firstUse[i] += m_firstUse[i - 1];
    m_uses.resize(m_firstUse.back());
    std::vector<std::size_t> place(m_firstUse);
    m_endWaiting[0] = m_endWaiting[1] = m_items.size();
    for (std::size_t item = 0; item < m_items.size(); ++item)
    {
        for (std::size_t i = 0; i < m_items[item].numFaces; ++i)
        {
            const NvFaceInfo& face = *m_items[item].faces[i];
            for (const int vertex : {face.m_v0, face.m_v1, face.m_v2}) m_uses[place[vertex]++] = static_cast<int>(item);
        }
    }
}

int CacheOrder::FindBest(bool wantsCW)
{
    const auto& wanted = m_hitting[wantsCW];
    const auto& others = m_hitting[!wantsCW];
    if (wanted.empty() && others.empty()) return FindWaiting(wantsCW);
    if (others.empty() || (!wanted.empty() && wanted.rbegin()->first >= others.rbegin()->first))
        return wanted.rbegin()->second;
    return others.lower_bound({others.rbegin()->first, 0})->second;
}

// The choice when all that waits has a score of 0.
int CacheOrder::FindWaiting(bool wantsCW)
{
    std::size_t& end = m_endWaiting[wantsCW];
    while (end > 0 && !(m_items[end - 1].waiting && m_items[end - 1].isCW == wantsCW)) --end;
    if (end > 0) return static_cast<int>(end - 1);
    while (m_firstWaiting < m_items.size() && !m_items[m_firstWaiting].waiting) ++m_firstWaiting;
    return m_firstWaiting < m_items.size() ? static_cast<int>(m_firstWaiting) : -1;
}

void CacheOrder::Take(int item)
{
    Item& taken = m_items[item];
    taken.waiting = false;
    m_hitting[taken.isCW].erase({taken.score, item});

    const auto note = [this](int vertex, int change) {
        if (m_changes[vertex] == 0) m_changedVertices.push_back(vertex);
        m_changes[vertex] += change;
    };
    for (std::size_t i = 0; i < taken.numFaces; ++i)
    {
        const NvFaceInfo& face = *taken.faces[i];
        for (const int vertex : {face.m_v0, face.m_v1, face.m_v2})
        {
            if (m_cache.InCache(vertex)) continue;
            const int dropped = m_cache.AddEntry(vertex);
            note(vertex, 1);
            if (dropped >= 0) note(dropped, -1);
        }
    }

    // Only what is different in the end counts: the middle of a fan goes and comes with every strip.
    for (const int vertex : m_changedVertices)
    {
        if (m_changes[vertex] != 0) Touch(vertex, m_changes[vertex]);
        m_changes[vertex] = 0;
    }
    m_changedVertices.clear();
    for (const int touched : m_touchedItems) Rescore(touched);
    m_touchedItems.clear();
}

void CacheOrder::Rescore(int number)
{
    Item& item = m_items[number];
    auto& hitting = m_hitting[item.isCW];
    if (item.score > 0.0f) hitting.erase({item.score, number});
    item.score = static_cast<float>(item.hits) / static_cast<float>(item.numFaces);
    if (item.hits > 0) hitting.emplace(item.score, number);
    item.touched = false;
}

void CacheOrder::Touch(int vertex, int change)
{
    for (std::size_t use = m_firstUse[vertex]; use < m_firstUse[vertex + 1]; ++use)
    {
        Item& item = m_items[m_uses[use]];
        if (!item.waiting) continue;
        item.hits += change;
        if (!item.touched) m_touchedItems.push_back(m_uses[use]);
        item.touched = true;
    }
}

} // namespace NVIDIA
