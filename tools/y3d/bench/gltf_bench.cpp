// A GLB file of 100,000 triangles: what an import costs, beside the parser's own part of it.
#include "gltf/glb.h"
#include "gltf/import.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace
{

const int SIDE = 224; // quads along one edge: 100,352 triangles

const std::vector<unsigned char>& field()
{
    static const std::vector<unsigned char> file = [] {
        std::vector<float> positions, normals;
        std::vector<unsigned int> indices;
        for (int i = 0; i < (SIDE + 1) * (SIDE + 1); ++i)
        {
            const float x = static_cast<float>(i % (SIDE + 1)), z = static_cast<float>(i / (SIDE + 1));
            positions.insert(positions.end(), {x, std::sin(x / 9) * std::cos(z / 7), z});
            normals.insert(normals.end(), {0, 1, 0});
        }
        for (int i = 0; i < SIDE * SIDE; ++i)
        {
            const unsigned int a = static_cast<unsigned int>(i / SIDE * (SIDE + 1) + i % SIDE), b = a + SIDE + 1;
            indices.insert(indices.end(), {a, b, a + 1, a + 1, b, b + 1});
        }
        gltf::Glb glb;
        gltf::Glb::Json attributes = {{"POSITION", glb.addVertices(positions, 3)},
                                      {"NORMAL", glb.addVertices(normals, 3)}};
        glb.add("meshes", {{"primitives", {{{"attributes", attributes}, {"indices", glb.addIndices(indices)}}}}});
        glb.add("nodes", {{"mesh", 0}});
        return glb.build();
    }();
    return file;
}

void BM_GltfParseByTinygltf(benchmark::State& state)
{
    for (auto _ : state)
    {
        tinygltf::TinyGLTF loader;
        gltf::Model model;
        std::string error, warning;
        const unsigned int size = static_cast<unsigned int>(field().size());
        if (!loader.LoadBinaryFromMemory(&model, &error, &warning, field().data(), size))
            state.SkipWithError("no model");
        benchmark::DoNotOptimize(model);
    }
}
BENCHMARK(BM_GltfParseByTinygltf)->Unit(benchmark::kMillisecond);

void BM_GltfImport(benchmark::State& state)
{
    for (auto _ : state)
    {
        y3d::Manager manager;
        gltf::Losses losses;
        gltf::importScene(gltf::readModel(field(), "field", ""), "", {}, manager, losses);
        benchmark::DoNotOptimize(manager);
    }
}
BENCHMARK(BM_GltfImport)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
