#include "nvtristrip/NvTriStrip.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#ifdef HAVE_MESHOPTIMIZER
#include <meshoptimizer.h>
#endif

// Time against the number of triangles, and how many vertices a first-in first-out cache of 16 entries loads for each
// triangle (the miss ratio) before and after. Random seeds are fixed.

namespace
{

const unsigned int CACHE_SIZE = 16;

typedef std::vector<unsigned int> Indices;

// As square as it gets; a torus is a grid whose borders meet.
Indices sheet(unsigned int numTriangles, bool torus)
{
    const unsigned int side = static_cast<unsigned int>(std::sqrt(numTriangles / 2.0));
    const unsigned int width = torus ? side : side + 1;
    const auto at = [width](unsigned int x, unsigned int y) { return y % width * width + x % width; };
    Indices indices;
    for (unsigned int y = 0; y < side; ++y)
    {
        for (unsigned int x = 0; x < side; ++x)
            indices.insert(indices.end(),
                           {at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y), at(x + 1, y + 1), at(x, y + 1)});
    }
    return indices;
}

Indices shuffled(const Indices& indices)
{
    std::vector<std::size_t> order(indices.size() / 3);
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    Indices result;
    for (const std::size_t triangle : order)
        result.insert(result.end(), indices.begin() + 3 * triangle, indices.begin() + 3 * triangle + 3);
    return result;
}

Indices grid(unsigned int numTriangles)
{
    return sheet(numTriangles, false);
}
Indices torus(unsigned int numTriangles)
{
    return sheet(numTriangles, true);
}
Indices shuffledTorus(unsigned int numTriangles)
{
    return shuffled(sheet(numTriangles, true));
}

Indices fan(unsigned int numTriangles)
{
    Indices indices;
    for (unsigned int i = 1; i <= numTriangles; ++i) indices.insert(indices.end(), {0, i, i + 1});
    return indices;
}

// Triangles that have nothing but one vertex in common.
Indices hub(unsigned int numTriangles)
{
    Indices indices;
    for (unsigned int i = 0; i < numTriangles; ++i) indices.insert(indices.end(), {0, 2 * i + 1, 2 * i + 2});
    return indices;
}

// Two fans around the same rim, in any order.
Indices shuffledFans(unsigned int numTriangles)
{
    Indices indices;
    for (unsigned int i = 0; i < numTriangles; ++i) indices.insert(indices.end(), {i % 2, 2 + i / 2, 3 + i / 2});
    return shuffled(indices);
}

// Any three of half as many vertices.
Indices soup(unsigned int numTriangles)
{
    std::mt19937 random(1);
    Indices indices(3 * static_cast<std::size_t>(numTriangles));
    for (unsigned int& index : indices) index = random() % (numTriangles / 2);
    return indices;
}

double missRatio(const unsigned int* indices, std::size_t numIndices, std::size_t numVertices)
{
    std::vector<std::size_t> loads(numVertices);
    std::size_t misses = 0;
    for (std::size_t i = 0; i < numIndices; ++i)
    {
        std::size_t& load = loads[indices[i]];
        if (load == 0 || misses - load >= CACHE_SIZE) load = ++misses;
    }
    return 3.0 * static_cast<double>(misses) / static_cast<double>(numIndices);
}

void report(benchmark::State& state, const Indices& indices, const unsigned int* result, std::size_t numIndices)
{
    const std::size_t numVertices = *std::max_element(indices.begin(), indices.end()) + 1;
    state.counters["missesBefore"] = missRatio(indices.data(), indices.size(), numVertices);
    state.counters["missesAfter"] = missRatio(result, numIndices, numVertices);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(indices.size() / 3));
}

void ordering(benchmark::State& state, Indices (*make)(unsigned int))
{
    const Indices indices = make(static_cast<unsigned int>(state.range(0)));
    NVIDIA::SetListsOnly(true);
    NVIDIA::SetCacheSize(CACHE_SIZE);
    std::unique_ptr<NVIDIA::PrimitiveGroup[]> groups;
    for (auto _ : state)
    {
        NVIDIA::PrimitiveGroup* result = nullptr;
        unsigned int numGroups = 0;
        NVIDIA::GenerateStrips(indices.data(), static_cast<unsigned int>(indices.size()), &result, &numGroups);
        groups.reset(result);
    }
    report(state, indices, groups[0].indices, groups[0].numIndices);
}

#ifdef HAVE_MESHOPTIMIZER
void meshoptimizer(benchmark::State& state, Indices (*make)(unsigned int))
{
    const Indices indices = make(static_cast<unsigned int>(state.range(0)));
    const std::size_t numVertices = *std::max_element(indices.begin(), indices.end()) + 1;
    Indices result(indices.size());
    for (auto _ : state) meshopt_optimizeVertexCache(result.data(), indices.data(), indices.size(), numVertices);
    report(state, indices, result.data(), result.size());
}
#define COMPARED(make) BENCHMARK_CAPTURE(meshoptimizer, make, make)->Arg(80000)->Unit(benchmark::kMillisecond)
#else
#define COMPARED(make) static_assert(true, "")
#endif

#define SIZES Arg(5000)->Arg(20000)->Arg(80000)->Arg(200000)->Unit(benchmark::kMillisecond)

BENCHMARK_CAPTURE(ordering, grid, grid)->SIZES;
BENCHMARK_CAPTURE(ordering, torus, torus)->SIZES;
BENCHMARK_CAPTURE(ordering, shuffledTorus, shuffledTorus)->SIZES;
BENCHMARK_CAPTURE(ordering, soup, soup)->SIZES;
BENCHMARK_CAPTURE(ordering, fan, fan)->SIZES;
BENCHMARK_CAPTURE(ordering, hub, hub)->SIZES;
BENCHMARK_CAPTURE(ordering, shuffledFans, shuffledFans)->SIZES;
COMPARED(grid);
COMPARED(torus);
COMPARED(shuffledTorus);
COMPARED(soup);

} // namespace

BENCHMARK_MAIN();
