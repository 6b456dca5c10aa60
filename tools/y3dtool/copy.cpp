#include "chunkwalk.h"
#include "commands.h"
#include "nodes.h"
#include "scenefile.h"
#include "y3d_chunks.h"
#include "y3d_scene.h"

#include <cstdio>

namespace
{

void tellArmatures(const y3d::SceneNode& node)
{
    if (node.getType() == y3d::CHUNK_ARMATURE)
    {
        std::fprintf(stderr, "y3d: %s is not written, nor what lies below it\n", titleOf(node).c_str());
        return;
    }
    for (const y3d::SceneNode* child : node.mChildren) tellArmatures(*child);
}

} // namespace

int runCopy(const Arguments& arguments)
{
    const SceneFile file(arguments.files[0]);
    for (const std::string& trouble : walkChunks(file.bytes)) std::fprintf(stderr, "y3d: %s\n", trouble.c_str());
    for (const y3d::Scene* scene : file.manager.mScenes) tellArmatures(*scene);
    writeSceneFile(file.manager, arguments.files[1]);
    return STATUS_FINE;
}
