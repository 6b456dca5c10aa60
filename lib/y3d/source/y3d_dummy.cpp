#include "y3d_dummy.h"

#include "cl_writebuffer.h"
#include "y3d_chunks.h"

namespace y3d
{

Dummy::Dummy()
{
    Dummy::clear();
}

int Dummy::getType() const
{
    return CHUNK_DUMMY;
}

void Dummy::clear()
{
    SceneNode::clear();
}

void Dummy::writeChunk(ChunkLib::WriteBuffer& buffer)
{
    buffer.openChunk(CHUNK_DUMMY);
    writeCommonChunk(buffer);
    buffer.closeChunk();
}

} // namespace y3d
