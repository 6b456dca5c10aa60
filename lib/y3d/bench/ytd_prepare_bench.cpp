#include "ytd_utils.h"

#include "y3d_mesh.h"
#include "y3d_submesh.h"

#include <benchmark/benchmark.h>

#include <cmath>

// Preparing a mesh whose quads share no vertex: a grid of as many triangles as asked for, six vertices for two.

namespace
{

void fill(y3d::Submesh* submesh, unsigned int numTriangles)
{
    submesh->clear();
    submesh->mIndices = new y3d::StructList<y3d::Index>;
    submesh->setPositions(new y3d::StructList<MathBase::Vector3f>);
    submesh->setNormals(new y3d::StructList<MathBase::Vector3f>);
    const unsigned int side = static_cast<unsigned int>(std::sqrt(numTriangles / 2.0));
    for (unsigned int i = 0; i < side * side; ++i)
    {
        const float x = static_cast<float>(i % side), y = static_cast<float>(i / side);
        const MathBase::Vector3f corners[6] = {{x, y, 0}, {x + 1, y, 0},     {x + 1, y + 1, 0},
                                               {x, y, 0}, {x + 1, y + 1, 0}, {x, y + 1, 0}};
        for (const MathBase::Vector3f& corner : corners)
        {
            submesh->mIndices->push_back(static_cast<y3d::Index>(submesh->mPositions->size()));
            submesh->mPositions->push_back(corner);
            submesh->mNormals->push_back({0, 0, 1});
        }
    }
}

void optimizeMesh(benchmark::State& state)
{
    y3d::Mesh mesh;
    mesh.mSubmeshes.push_back(new y3d::Submesh);
    for (auto _ : state)
    {
        state.PauseTiming();
        fill(mesh.mSubmeshes[0], static_cast<unsigned int>(state.range(0)));
        state.ResumeTiming();
        ytd::Utils::optimizeMesh(&mesh, 16);
    }
    state.counters["vertices"] = mesh.mSubmeshes[0]->getNumVertices();
}
BENCHMARK(optimizeMesh)->Arg(12500)->Arg(50000)->Arg(200000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
