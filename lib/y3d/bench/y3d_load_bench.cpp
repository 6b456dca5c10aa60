#include <cstring>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "y3d_dummy.h"
#include "y3d_manager.h"
#include "y3d_mesh.h"
#include "y3d_scene.h"
#include "y3d_submesh.h"

// How fast scene files come into memory, beside a plain copy of the same bytes.

namespace
{

struct File
{
    explicit File(const y3d::Manager& manager)
    {
        unsigned char* block;
        manager.write(&block, &size);
        data.reset(block);
    }

    std::unique_ptr<unsigned char[]> data;
    int size;
};

// 100 meshes of 21,200 vertices with normals and texture coordinates, and 20,000 triangles each: 100 MB.
const File& meshFile()
{
    static const File file = [] {
        y3d::Manager manager;
        for (int i = 0; i < 100; ++i)
        {
            y3d::Submesh* submesh = new y3d::Submesh;
            submesh->setPositions(new y3d::StructList<MathBase::Vector3f>(21200, {1, 2, 3}));
            submesh->setNormals(new y3d::StructList<MathBase::Vector3f>(21200, {0, 0, 1}));
            submesh->mUVWs.push_back(new y3d::UVWList(21200, {0, 1, 0}));
            submesh->mIndices = new y3d::StructList<y3d::Index>(60000, 7);
            y3d::Mesh* mesh = new y3d::Mesh;
            mesh->mName = "mesh " + std::to_string(i);
            mesh->mSubmeshes.push_back(submesh);
            manager.mMeshes.push_back(mesh);
        }
        return File(manager);
    }();
    return file;
}

// A scene of 100,000 nodes without keys: 12 MB.
const File& nodeFile()
{
    static const File file = [] {
        y3d::Manager manager;
        y3d::Scene* scene = new y3d::Scene;
        manager.mScenes.push_back(scene);
        for (int i = 0; i < 100000; ++i)
        {
            y3d::Dummy* dummy = new y3d::Dummy;
            dummy->mName = "node " + std::to_string(i);
            scene->addChild(dummy);
        }
        return File(manager);
    }();
    return file;
}

void load(benchmark::State& state, const File& file)
{
    for (auto _ : state)
    {
        y3d::Manager manager;
        manager.load(file.data.get(), file.size);
        benchmark::DoNotOptimize(&manager);
        state.PauseTiming(); // destruction is no part of the load
        manager.clear();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * file.size);
}

void copy(benchmark::State& state, bool fresh)
{
    const File& file = meshFile();
    std::unique_ptr<unsigned char[]> target(new unsigned char[file.size]);
    std::memset(target.get(), 1, file.size);
    for (auto _ : state)
    {
        if (fresh) target.reset(new unsigned char[file.size]);
        std::memcpy(target.get(), file.data.get(), file.size);
        benchmark::DoNotOptimize(target.get());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * file.size);
}

void loadMeshes(benchmark::State& state)
{
    load(state, meshFile());
}
void loadNodes(benchmark::State& state)
{
    load(state, nodeFile());
}
void copyToUsedMemory(benchmark::State& state)
{
    copy(state, false);
}
void copyToNewMemory(benchmark::State& state)
{
    copy(state, true);
}

void writeMeshes(benchmark::State& state)
{
    y3d::Manager manager;
    manager.load(meshFile().data.get(), meshFile().size);
    for (auto _ : state)
    {
        const File file(manager);
        benchmark::DoNotOptimize(file.size);
    }
    state.SetBytesProcessed(state.iterations() * meshFile().size);
}

} // namespace

BENCHMARK(loadMeshes)->Name("Y3D: load 100 MB of meshes")->Unit(benchmark::kMillisecond);
BENCHMARK(copyToNewMemory)->Name("memcpy of the same bytes to new memory")->Unit(benchmark::kMillisecond);
BENCHMARK(copyToUsedMemory)->Name("memcpy of the same bytes to memory in use")->Unit(benchmark::kMillisecond);
BENCHMARK(loadNodes)->Name("Y3D: load 100,000 nodes")->Unit(benchmark::kMillisecond);
BENCHMARK(writeMeshes)->Name("Y3D: write 100 MB of meshes")->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
