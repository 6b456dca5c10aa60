#include "y3d_scene.h"

#include "cl_writebuffer.h"
#include "y3d_chunks.h"
#include "y3d_fields.h"

namespace y3d
{

Scene::Scene()
{
    Scene::clear();
}

int Scene::getType() const
{
    return CHUNK_SCENE;
}

void Scene::clear()
{
    SceneNode::clear();
}

void Scene::writeChunk(ChunkLib::WriteBuffer& buffer)
{
    buffer.openChunk(CHUNK_SCENE);
    writeCommonChunk(buffer);
    buffer.closeChunk();
}

void Scene::loadChunkItem(int id, ChunkLib::ReadBuffer& buffer)
{
    report(buffer, "scene::loadchunkitem 0x%X\n", id);
}

} // namespace y3d
