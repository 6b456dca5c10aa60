#include "NvCacheOrder.h"

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

namespace NVIDIA
{

namespace
{

const int HUB_USES = 256;            // from here on a vertex is a hub
const std::size_t MIN_POOLED = 256;  // fewer items that are alike are not worth a pool
const std::size_t MIN_TIDIED = 4096; // entries that a pool may have before those that are over are sought

// Orders of entries: the highest score in front, of equal ones the last or the first item.
struct FirstInFront
{
    bool operator()(const std::pair<float, int>& a, const std::pair<float, int>& b) const
    {
        return a.first != b.first ? a.first < b.first : a.second > b.second;
    }
};
typedef std::less<std::pair<float, int>> LastInFront;

template <class Order> void push(std::vector<std::pair<float, int>>& heap, const std::pair<float, int>& entry)
{
    heap.push_back(entry);
    std::push_heap(heap.begin(), heap.end(), Order());
}

template <class Order, class Test> void dropFront(std::vector<std::pair<float, int>>& heap, Test isOver)
{
    while (!heap.empty() && isOver(heap.front()))
    {
        std::pop_heap(heap.begin(), heap.end(), Order());
        heap.pop_back();
    }
}

template <class Order, class Test> void tidy(std::vector<std::pair<float, int>>& heap, Test isOver)
{
    heap.erase(std::remove_if(heap.begin(), heap.end(), isOver), heap.end());
    std::sort(heap.begin(), heap.end(), [](const auto& a, const auto& b) { return Order()(b, a); });
    heap.erase(std::unique(heap.begin(), heap.end()), heap.end());
}

} // namespace

CacheOrder::CacheOrder(const NvFaceInfoVec& faces, const VertexCache& cache, std::size_t numVertices)
    : m_faces(faces), m_cache(cache), m_numVertices(numVertices), m_pools(2), m_firstUse(numVertices + 1),
      m_changes(numVertices)
{
    m_pools[0].isCW = false;
    m_pools[1].isCW = true;
}

template <class Visit> void CacheOrder::VisitVertices(const Item& item, Visit visit) const
{
    for (int i = 0; i < item.numFaces; ++i)
    {
        const NvFaceInfo& face = m_faces[item.faces[i]];
        for (const int vertex : {face.m_v0, face.m_v1, face.m_v2}) visit(vertex);
    }
}

void CacheOrder::AddItem(const int* faces, std::size_t numFaces, bool isCW)
{
    m_items.push_back({faces, static_cast<int>(numFaces), isCW, 0, 0.0f, isCW, true, false});
}

void CacheOrder::Start()
{
    m_endWaiting[0] = m_endWaiting[1] = m_items.size();
    IntVec numUses(m_numVertices);
    for (const Item& item : m_items) VisitVertices(item, [&numUses](int vertex) { ++numUses[vertex]; });
    MakePools(numUses);

    // Each vertex begins where its last use comes to lie, once all have been put in.
    IntVec lastItem(m_numVertices, -1);
    const auto visitUses = [&](auto visit) {
        for (std::size_t i = 0; i < m_items.size(); ++i)
        {
            const int number = static_cast<int>(i);
            VisitVertices(m_items[i], [&](int vertex) {
                if (m_items[i].pool < 2 || numUses[vertex] < HUB_USES)
                    visit(number, vertex, std::exchange(lastItem[vertex], number) != number);
            });
        }
    };
    visitUses([this](int, int vertex, bool isNew) { m_firstUse[vertex] += isNew; });
    for (std::size_t i = 1; i < m_firstUse.size(); ++i) m_firstUse[i] += m_firstUse[i - 1];
    m_uses.resize(m_firstUse.back());
    std::fill(lastItem.begin(), lastItem.end(), -1);
    visitUses([this](int item, int vertex, bool isNew) {
        if (isNew) m_uses[--m_firstUse[vertex]] = {item, 0};
        ++m_uses[m_firstUse[vertex]].number;
    });
}

void CacheOrder::MakePools(const IntVec& numUses)
{
    if (std::none_of(numUses.begin(), numUses.end(), [](int number) { return number >= HUB_USES; })) return;

    // By winding, length and hubs, each as often as the items have it.
    std::map<std::vector<std::size_t>, IntVec> alike;
    for (std::size_t i = 0; i < m_items.size(); ++i)
    {
        std::vector<std::size_t> key = {m_items[i].isCW, static_cast<std::size_t>(m_items[i].numFaces)};
        VisitVertices(m_items[i], [&](int vertex) {
            if (numUses[vertex] >= HUB_USES) key.push_back(vertex);
        });
        if (key.size() == 2) continue;
        std::sort(key.begin() + 2, key.end());
        alike[key].push_back(static_cast<int>(i));
    }
    for (auto& entry : alike)
    {
        const std::vector<std::size_t>& key = entry.first;
        if (entry.second.size() < MIN_POOLED) continue;
        const int number = static_cast<int>(m_pools.size());
        m_pools.emplace_back();
        Pool& pool = m_pools.back();
        pool.isCW = key[0] != 0;
        pool.items.swap(entry.second);
        pool.endWaiting = pool.items.size();
        for (const int item : pool.items) m_items[item].pool = number;
        for (auto hub = key.begin() + 2; hub != key.end();)
        {
            const auto next = std::upper_bound(hub, key.end(), *hub);
            m_hubs[static_cast<int>(*hub)].emplace_back(number, static_cast<int>(next - hub));
            hub = next;
        }
    }
}

int CacheOrder::FindBest(bool wantsCW)
{
    int best = -1;
    float bestScore = 0.0f;
    for (std::size_t i = 0; i < m_listedPools.size();)
    {
        Pool& pool = m_pools[m_listedPools[i]];
        const int item = pool.numHitting > 0 || pool.hubHits > 0 ? BestOf(pool, pool.isCW == wantsCW) : -1;
        if (item < 0)
        {
            pool.listed = false;
            m_listedPools[i] = m_listedPools.back();
            m_listedPools.pop_back();
            continue;
        }
        ++i;
        const Item& found = m_items[item];
        const float score = static_cast<float>(pool.hubHits + found.hits) / static_cast<float>(found.numFaces);
        if (score < bestScore) continue;
        if (score == bestScore && best >= 0)
        {
            const bool wasWanted = m_items[best].isCW == wantsCW, isWanted = found.isCW == wantsCW;
            if (wasWanted != isWanted ? wasWanted : isWanted == (item < best)) continue;
        }
        best = item;
        bestScore = score;
    }
    return best >= 0 ? best : FindWaiting(wantsCW);
}

// The item of a pool with the highest score, and of equal ones the last or the first; -1 when none waits.
int CacheOrder::BestOf(Pool& pool, bool wantsLast)
{
    const auto isOver = [this](const Entry& entry) { return IsOver(entry); };
    if (pool.numHitting > 0)
    {
        if (wantsLast)
            dropFront<LastInFront>(pool.last, isOver);
        else
            dropFront<FirstInFront>(pool.first, isOver);
        return (wantsLast ? pool.last : pool.first).front().second;
    }
    const auto isWaiting = [&](std::size_t place) { return m_items[pool.items[place]].waiting; };
    while (pool.firstWaiting < pool.endWaiting && !isWaiting(pool.firstWaiting)) ++pool.firstWaiting;
    while (pool.firstWaiting < pool.endWaiting && !isWaiting(pool.endWaiting - 1)) --pool.endWaiting;
    if (pool.firstWaiting == pool.endWaiting) return -1;
    return pool.items[wantsLast ? pool.endWaiting - 1 : pool.firstWaiting];
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
    m_pools[taken.pool].numHitting -= taken.hits > 0;

    const auto note = [this](int vertex, int change) {
        if (m_changes[vertex] == 0) m_changedVertices.push_back(vertex);
        m_changes[vertex] += change;
    };
    VisitVertices(taken, [&](int vertex) {
        if (m_cache.InCache(vertex)) return;
        const int dropped = m_cache.AddEntry(vertex);
        note(vertex, 1);
        if (dropped >= 0) note(dropped, -1);
    });

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

void CacheOrder::Touch(int vertex, int change)
{
    for (int place = m_firstUse[vertex]; place < m_firstUse[vertex + 1]; ++place)
    {
        const Use& use = m_uses[place];
        Item& item = m_items[use.item];
        if (!item.waiting) continue;
        if (!item.touched) m_touchedItems.push_back(use.item);
        item.touched = true;
        item.hits += change * use.number;
    }
    if (m_hubs.empty()) return;
    const auto hub = m_hubs.find(vertex);
    if (hub == m_hubs.end()) return;
    for (const auto& [pool, hits] : hub->second)
    {
        m_pools[pool].hubHits += change * hits;
        List(pool);
    }
}

void CacheOrder::Rescore(int number)
{
    Item& item = m_items[number];
    Pool& pool = m_pools[item.pool];
    const float before = item.score;
    item.touched = false;
    item.score = static_cast<float>(item.hits) / static_cast<float>(item.numFaces);
    pool.numHitting += (item.hits > 0) - (before > 0.0f);
    if (item.hits == 0 || item.score == before) return;
    push<LastInFront>(pool.last, {item.score, number});
    push<FirstInFront>(pool.first, {item.score, number});
    List(item.pool);
    if (pool.last.size() + pool.first.size() > MIN_TIDIED + 8 * static_cast<std::size_t>(pool.numHitting)) Tidy(pool);
}

void CacheOrder::Tidy(Pool& pool)
{
    const auto isOver = [this](const Entry& entry) { return IsOver(entry); };
    tidy<LastInFront>(pool.last, isOver);
    tidy<FirstInFront>(pool.first, isOver);
}

void CacheOrder::List(int number)
{
    if (!m_pools[number].listed) m_listedPools.push_back(number);
    m_pools[number].listed = true;
}

} // namespace NVIDIA
