#include "commands.h"
#include "meshfaults.h"
#include "meshorder.h"
#include "scenefile.h"
#include "text.h"
#include "y3d_exception.h"
#include "y3d_mesh.h"
#include "y3d_submesh.h"
#include "ytd_utils.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace
{

const long LARGEST_CACHE = 65535;

int cacheSizeOf(const Arguments& arguments)
{
    if (!arguments.has("--cache")) return DEFAULT_CACHE;
    const std::string& text = arguments.options.at("--cache");
    char* end;
    const long size = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end || size < 0 || size > LARGEST_CACHE)
        throw y3d::Exception("--cache takes a number from 0 to %ld", LARGEST_CACHE);
    return static_cast<int>(size);
}

struct Measures
{
    std::size_t vertices = 0, triangles = 0, misses = 0;

    Measures& operator+=(const Measures& other)
    {
        vertices += other.vertices;
        triangles += other.triangles;
        misses += other.misses;
        return *this;
    }

    double missRatio() const { return triangles ? static_cast<double>(misses) / static_cast<double>(triangles) : 0.0; }
};

Measures measure(const y3d::Mesh& mesh, int cacheSize)
{
    Measures measures;
    for (const y3d::Submesh* submesh : mesh.mSubmeshes)
    {
        measures.vertices += submesh->getNumVertices();
        measures.triangles += submesh->getNumIndices() / 3;
        measures.misses += countMisses(*submesh, cacheSize);
    }
    return measures;
}

std::string row(std::string name, const Measures& before, const Measures& after)
{
    char numbers[160];
    std::snprintf(numbers, sizeof numbers, " %9zu -> %8zu %9zu -> %8zu %6.3f -> %5.3f\n", before.vertices,
                  after.vertices, before.triangles, after.triangles, before.missRatio(), after.missRatio());
    name.resize(std::max<std::size_t>(name.size(), 30), ' ');
    return name + numbers;
}

// Why a mesh is to be left as it is, or an empty text.
std::string faultOfMesh(const y3d::Mesh& mesh)
{
    if (mesh.mSubmeshes.empty()) return "it has no submeshes";
    for (std::size_t i = 0; i < mesh.mSubmeshes.size(); ++i)
    {
        const std::string fault = faultOfSubmesh(*mesh.mSubmeshes[i]);
        if (!fault.empty()) return "submesh " + std::to_string(i) + " " + fault;
    }
    return "";
}

} // namespace

int runOptimize(const Arguments& arguments)
{
    const int cacheSize = cacheSizeOf(arguments);
    const SceneFile file(arguments.files[0]);
    tellLosses(file);

    const int measured = cacheSize > 0 ? cacheSize : DEFAULT_CACHE;
    std::string table;
    Measures allBefore, allAfter;
    int status = STATUS_FINE;
    for (y3d::Mesh* mesh : file.manager.mMeshes)
    {
        const std::string fault = faultOfMesh(*mesh);
        if (!fault.empty())
        {
            std::fprintf(stderr, "y3d: mesh %s is left as it is: %s\n", quoted(mesh->getName()).c_str(), fault.c_str());
            status = STATUS_WARNINGS;
            continue;
        }
        const Measures before = measure(*mesh, measured);
        for (y3d::Submesh* submesh : mesh->mSubmeshes) improveOrder(submesh, cacheSize);
        const Measures after = measure(*mesh, measured);
        table += row(quoted(mesh->getName()), before, after);
        allBefore += before;
        allAfter += after;
        ytd::Utils::updateBoundingBoxes(mesh, true);
    }
    table += row("all", allBefore, allAfter);
    writeSceneFile(file.manager, arguments.files[1]);

    // Behind the file, for whoever reads only the first lines, and out of its way.
    FILE* stream = arguments.files[1] == "-" ? stderr : stdout;
    std::fprintf(stream, "%-30s %21s %21s %15s\n%s", "mesh", "vertices", "triangles", "miss ratio", table.c_str());
    return status;
}
