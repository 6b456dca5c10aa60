#include "y3d_value.h"

#include "cl_readbuffer.h"
#include "cl_writebuffer.h"

namespace y3d
{

void loadValue(ChunkLib::ReadBuffer& buffer, float* value)
{
    buffer.read(*value);
}

void loadValue(ChunkLib::ReadBuffer& buffer, MathBase::Vector2f* value)
{
    buffer.read(value->x);
    buffer.read(value->y);
}

void loadValue(ChunkLib::ReadBuffer& buffer, MathBase::Vector3f* value)
{
    buffer.read(value->x);
    buffer.read(value->y);
    buffer.read(value->z);
}

void loadValue(ChunkLib::ReadBuffer& buffer, MathBase::Quatf* value)
{
    buffer.read(value->w);
    buffer.read(value->x);
    buffer.read(value->y);
    buffer.read(value->z);
}

void loadValue(ChunkLib::ReadBuffer& buffer, Index* value)
{
    buffer.read(*value);
}

void loadValue(ChunkLib::ReadBuffer& buffer, Color4f* value)
{
    buffer.read(value->r);
    buffer.read(value->g);
    buffer.read(value->b);
    buffer.read(value->a);
}

void loadValue(ChunkLib::ReadBuffer& buffer, BoneGroupWeight* value)
{
    buffer.read(value->mFirst);
    buffer.read(value->mSecond);
}

void loadValue(ChunkLib::ReadBuffer& buffer, std::string* value)
{
    buffer.read(*value);
}

void writeValue(ChunkLib::WriteBuffer& buffer, const float& value)
{
    buffer.write(value);
}

void writeValue(ChunkLib::WriteBuffer& buffer, const MathBase::Vector2f& value)
{
    buffer.write(value.x);
    buffer.write(value.y);
}

void writeValue(ChunkLib::WriteBuffer& buffer, const MathBase::Vector3f& value)
{
    buffer.write(value.x);
    buffer.write(value.y);
    buffer.write(value.z);
}

void writeValue(ChunkLib::WriteBuffer& buffer, const MathBase::Quatf& value)
{
    buffer.write(value.w);
    buffer.write(value.x);
    buffer.write(value.y);
    buffer.write(value.z);
}

void writeValue(ChunkLib::WriteBuffer& buffer, const Index& value)
{
    buffer.write(value);
}

void writeValue(ChunkLib::WriteBuffer& buffer, const Color4f& value)
{
    buffer.write(value.r);
    buffer.write(value.g);
    buffer.write(value.b);
    buffer.write(value.a);
}

void writeValue(ChunkLib::WriteBuffer& buffer, const BoneGroupWeight& value)
{
    buffer.write(value.mFirst);
    buffer.write(value.mSecond);
}

void writeValue(ChunkLib::WriteBuffer& buffer, const std::string& value)
{
    buffer.write(value);
}

} // namespace y3d
