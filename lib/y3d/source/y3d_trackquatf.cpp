#include "y3d_trackquatf.h"

#include "cl_readbuffer.h"
#include "cl_writebuffer.h"
#include "y3d_chunkguard.h"
#include "y3d_chunks.h"
#include "y3d_exception.h"
#include "y3d_value.h"

#include <cmath>

namespace y3d
{

using MathBase::Quatf;
using MathBase::Vector3f;

TrackQuatf::TrackQuatf()
{
    clear();
}

void TrackQuatf::clear()
{
    mEuler = false;
    mW.clear();
    mX.clear();
    mY.clear();
    mZ.clear();
    mW.mBaseValue = 1.0f;
}

void TrackQuatf::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    mEuler = false;
    while (const ChunkLib::uint16 id = buffer.openChunk())
    {
        const ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_CURVE_0:
            mW.loadKeys(buffer);
            break;
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
            mEuler = true;
            buffer.read(mX.mBaseValue);
            buffer.read(mY.mBaseValue);
            buffer.read(mZ.mBaseValue);
            break;
        case CHUNK_VALUE_VECTOR4: {
            Quatf base(mW.mBaseValue, mX.mBaseValue, mY.mBaseValue, mZ.mBaseValue);
            loadValue(buffer, &base);
            base.normalizeOrIdentity();
            mEuler = false;
            setBaseValue(base);
            break;
        }
        }
    }
}

void TrackQuatf::writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const
{
    buffer.openChunk(id);
    if (!mEuler) mW.writeChunk(buffer, CHUNK_CURVE_0);
    mX.writeChunk(buffer, CHUNK_CURVE_1);
    mY.writeChunk(buffer, CHUNK_CURVE_2);
    mZ.writeChunk(buffer, CHUNK_CURVE_3);

    buffer.openChunk(mEuler ? CHUNK_VALUE_VECTOR3 : CHUNK_VALUE_VECTOR4);
    if (!mEuler) buffer.write(mW.mBaseValue);
    buffer.write(mX.mBaseValue);
    buffer.write(mY.mBaseValue);
    buffer.write(mZ.mBaseValue);
    buffer.closeChunk();
    buffer.closeChunk();
}

Quatf TrackQuatf::getValue(float time) const
{
    // Braces, so that the curves are evaluated, and report bad keys, in this order.
    if (!mEuler)
    {
        Quatf rotation{mW.getValue(time), mX.getValue(time), mY.getValue(time), mZ.getValue(time)};
        rotation.normalizeOrIdentity();
        return rotation;
    }

    Quatf rotation;
    rotation.fromBlenderEuler(Vector3f{mX.getValue(time), mY.getValue(time), mZ.getValue(time)});
    return std::isfinite(rotation.length()) ? rotation : Quatf();
}

void TrackQuatf::setBaseValue(const Quatf& value)
{
    if (mEuler) throw Exception("TrackQuatf::setBaseValue when in euler mode!\n");
    mW.mBaseValue = value.w;
    mX.mBaseValue = value.x;
    mY.mBaseValue = value.y;
    mZ.mBaseValue = value.z;
}

bool TrackQuatf::isStatic() const
{
    return (mEuler || mW.isStatic()) && mX.isStatic() && mY.isStatic() && mZ.isStatic();
}

} // namespace y3d
