#include "gl_recorder.h"
#include "fe_scenes.h"
#include "meta.h"

#include "fe_sorrel.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <numeric>

// One frame of the metaballs: field, flood and polygons, beside the drawing itself, for which OpenGL does nothing.

namespace
{

void metaFrame(benchmark::State& state)
{
    GLRecorder::reset();
    Archives archives;
    archives.addPicture("env.png", makeImage(1, 1, {1, 2, 3, 4}));
    Fennel::TextureManager textures(&archives);
    Fennel::Sorrel::Engine engine;
    engine.mNodes.push_back(new Fennel::Sorrel::Node(nullptr));
    engine.mNodes[0]->mName = "metaball";
    Meta meta;
    meta.mEngine = &engine;
    meta.mTextureManager = &textures;
    std::srand(38912);
    meta.setup(archives);

    GLRecorder::gl.asleep = true;
    double evaluations = 0;
    double cells = 0;
    for (auto _ : state)
    {
        meta.update(0, 1 / 60.0f, 0);
        state.PauseTiming();
        evaluations += std::accumulate(std::begin(Meta::gridEnergyComputed), std::end(Meta::gridEnergyComputed), 0);
        cells += std::accumulate(std::begin(Meta::gridVisited), std::end(Meta::gridVisited), 0);
        state.ResumeTiming();
    }
    const double frames = static_cast<double>(state.iterations());
    state.counters["evaluations"] = evaluations / frames; // of the 13824 lattice points
    state.counters["cells"] = cells / frames;             // visited, of 12167
}
BENCHMARK(metaFrame)->Unit(benchmark::kMicrosecond)->Iterations(5000);

} // namespace

BENCHMARK_MAIN();
