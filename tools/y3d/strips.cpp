#include "commands.h"
#include "meshfaults.h"
#include "scenefile.h"
#include "silentoutput.h"
#include "text.h"
#include "y3d_mesh.h"

#include "nvtristrip/NvTriStrip.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace
{

struct Groups
{
    Groups(const y3d::Submesh& submesh, bool stitch)
    {
        const SilentOutput silence; // a line for each edge with more than two triangles
        const std::vector<unsigned int> indices(submesh.getIndices()->begin(), submesh.getIndices()->end());
        NVIDIA::PrimitiveGroup* result = nullptr;
        NVIDIA::SetListsOnly(false);
        NVIDIA::SetStitchStrips(stitch);
        NVIDIA::GenerateStrips(indices.data(), static_cast<unsigned int>(indices.size()), &result, &number);
        groups.reset(result);
    }

    std::unique_ptr<NVIDIA::PrimitiveGroup[]> groups;
    unsigned int number = 0;
};

std::size_t countTriangles(const NVIDIA::PrimitiveGroup& strip)
{
    std::size_t number = 0;
    for (unsigned int i = 0; i + 2 < strip.numIndices; ++i)
    {
        const unsigned int* v = strip.indices + i;
        number += v[0] != v[1] && v[0] != v[2] && v[1] != v[2];
    }
    return number;
}

void print(const y3d::Mesh& mesh, int number, const y3d::Submesh& submesh)
{
    const Groups separate(submesh, false);
    std::size_t triangles = 0, longest = 0;
    for (unsigned int i = 0; i < separate.number; ++i)
    {
        const std::size_t length = countTriangles(separate.groups[i]);
        triangles += length;
        longest = std::max(longest, length);
    }
    const Groups stitched(submesh, true);
    const unsigned int numIndices = stitched.number ? stitched.groups[0].numIndices : 0;
    std::printf("mesh %s, submesh %d: %s in %s, longest %zu, stitched %s\n", quoted(mesh.getName()).c_str(), number,
                counted(triangles, "triangle", "triangles").c_str(),
                counted(separate.number, "strip", "strips").c_str(), longest,
                counted(numIndices, "index", "indices").c_str());
}

} // namespace

int runStrips(const Arguments& arguments)
{
    const SceneFile file(arguments.files[0]);
    int status = STATUS_FINE;
    for (const y3d::Mesh* mesh : file.manager.mMeshes)
    {
        for (int i = 0; i < mesh->getNumSubmeshes(); ++i)
        {
            const std::string fault = faultOfTriangles(*mesh->getSubmesh(i));
            if (fault.empty())
            {
                print(*mesh, i, *mesh->getSubmesh(i));
                continue;
            }
            std::fprintf(stderr, "y3d: mesh %s, submesh %d %s\n", quoted(mesh->getName()).c_str(), i, fault.c_str());
            status = STATUS_WARNINGS;
        }
    }
    return status;
}
