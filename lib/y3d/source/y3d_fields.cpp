#include "y3d_fields.h"

#include "y3d_chunks.h"
#include "y3d_scenenode.h"
#include "y3d_value.h"

#include <cstdio>

namespace y3d
{

void loadBox(ChunkLib::ReadBuffer& buffer, MathBase::AABBpointsf* box)
{
    loadValue(buffer, &box->mMin);
    loadValue(buffer, &box->mMax);
}

void writeBoxChunk(ChunkLib::WriteBuffer& buffer, const MathBase::AABBpointsf& box)
{
    buffer.openChunk(CHUNK_FILE_OR_BOUNDS);
    writeValue(buffer, box.mMin);
    writeValue(buffer, box.mMax);
    buffer.closeChunk();
}

bool isTooDeep(const ChunkLib::ReadBuffer& buffer)
{
    if (buffer.mChunkStack.size() <= SceneNode::MAX_LEVELS) return false;
    std::printf("SceneNode::loadChunk, Chunk 0x%X lies more than %u levels deep and is left out\n",
                buffer.mChunkStack.top().mID, SceneNode::MAX_LEVELS);
    return true;
}

} // namespace y3d
