#include "y3d_trackfloat.h"

#include "cl_readbuffer.h"
#include "cl_writebuffer.h"
#include "y3d_chunkguard.h"
#include "y3d_chunks.h"

namespace y3d
{

void TrackFloat::clear()
{
    mCurve.clear();
}

void TrackFloat::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const ChunkLib::uint16 id = buffer.openChunk())
    {
        const ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_CURVE_1:
            mCurve.loadKeys(buffer);
            break;
        case CHUNK_VALUE_FLOAT:
            buffer.read(mCurve.mBaseValue);
            break;
        }
    }
}

void TrackFloat::writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const
{
    buffer.openChunk(id);
    mCurve.writeChunk(buffer, CHUNK_CURVE_1);
    buffer.openChunk(CHUNK_VALUE_FLOAT);
    buffer.write(mCurve.mBaseValue);
    buffer.closeChunk();
    buffer.closeChunk();
}

} // namespace y3d
