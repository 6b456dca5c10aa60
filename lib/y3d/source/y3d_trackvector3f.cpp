#include "y3d_trackvector3f.h"

#include "cl_readbuffer.h"
#include "cl_writebuffer.h"
#include "y3d_chunkguard.h"
#include "y3d_chunks.h"

namespace y3d
{

void TrackVector3f::clear()
{
    mX.clear();
    mY.clear();
    mZ.clear();
}

void TrackVector3f::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const ChunkLib::uint16 id = buffer.openChunk())
    {
        const ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_CURVE_1:
            mX.loadKeys(buffer);
            break;
        case CHUNK_CURVE_2:
            mY.loadKeys(buffer);
            break;
        case CHUNK_CURVE_3:
            mZ.loadKeys(buffer);
            break;
        case CHUNK_VALUE_VECTOR3:
            buffer.read(mX.mBaseValue);
            buffer.read(mY.mBaseValue);
            buffer.read(mZ.mBaseValue);
            break;
        }
    }
}

void TrackVector3f::writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const
{
    buffer.openChunk(id);
    mX.writeChunk(buffer, CHUNK_CURVE_1);
    mY.writeChunk(buffer, CHUNK_CURVE_2);
    mZ.writeChunk(buffer, CHUNK_CURVE_3);
    buffer.openChunk(CHUNK_VALUE_VECTOR3);
    buffer.write(mX.mBaseValue);
    buffer.write(mY.mBaseValue);
    buffer.write(mZ.mBaseValue);
    buffer.closeChunk();
    buffer.closeChunk();
}

MathBase::Vector3f TrackVector3f::getValue(float time) const
{
    return MathBase::Vector3f{mX.getValue(time), mY.getValue(time), mZ.getValue(time)}; // braces: in this order
}

bool TrackVector3f::isStatic() const
{
    return mX.isStatic() && mY.isStatic() && mZ.isStatic();
}

} // namespace y3d
