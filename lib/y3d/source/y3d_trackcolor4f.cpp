#include "y3d_trackcolor4f.h"

#include "cl_readbuffer.h"
#include "cl_writebuffer.h"
#include "y3d_chunkguard.h"
#include "y3d_chunks.h"

namespace y3d
{

void TrackColor4f::clear()
{
    mR.clear();
    mG.clear();
    mB.clear();
    mA.clear();
}

void TrackColor4f::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const ChunkLib::uint16 id = buffer.openChunk())
    {
        const ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_CURVE_0:
            mR.loadKeys(buffer);
            break;
        case CHUNK_CURVE_1:
            mG.loadKeys(buffer);
            break;
        case CHUNK_CURVE_2:
            mB.loadKeys(buffer);
            break;
        case CHUNK_CURVE_3:
            mA.loadKeys(buffer);
            break;
        case CHUNK_VALUE_VECTOR4:
            buffer.read(mR.mBaseValue);
            buffer.read(mG.mBaseValue);
            buffer.read(mB.mBaseValue);
            buffer.read(mA.mBaseValue);
            break;
        }
    }
}

void TrackColor4f::writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const
{
    buffer.openChunk(id);
    mR.writeChunk(buffer, CHUNK_CURVE_0);
    mG.writeChunk(buffer, CHUNK_CURVE_1);
    mB.writeChunk(buffer, CHUNK_CURVE_2);
    mA.writeChunk(buffer, CHUNK_CURVE_3);
    buffer.openChunk(CHUNK_VALUE_VECTOR4);
    buffer.write(mR.mBaseValue);
    buffer.write(mG.mBaseValue);
    buffer.write(mB.mBaseValue);
    buffer.write(mA.mBaseValue);
    buffer.closeChunk();
    buffer.closeChunk();
}

Color4f TrackColor4f::getValue(float time) const
{
    return Color4f{mR.getValue(time), mG.getValue(time), mB.getValue(time), mA.getValue(time)}; // braces: in this order
}

} // namespace y3d
