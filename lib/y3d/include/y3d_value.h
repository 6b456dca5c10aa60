#pragma once

#include <string>

#include "mb_quatf.h"
#include "mb_vector2f.h"
#include "mb_vector3f.h"
#include "y3d_bonegroupweight.h"
#include "y3d_color4f.h"
#include "y3d_index.h"

namespace ChunkLib
{
class ReadBuffer;
class WriteBuffer;
} // namespace ChunkLib

namespace y3d
{

// The values that chunks are made of, read and written component by component in the order of their fields. A
// component that cannot be read stays as it was. A string is appended to; it is the last value of its chunk.
void loadValue(ChunkLib::ReadBuffer& buffer, float* value);
void loadValue(ChunkLib::ReadBuffer& buffer, MathBase::Vector2f* value);
void loadValue(ChunkLib::ReadBuffer& buffer, MathBase::Vector3f* value);
void loadValue(ChunkLib::ReadBuffer& buffer, MathBase::Quatf* value);
void loadValue(ChunkLib::ReadBuffer& buffer, Index* value);
void loadValue(ChunkLib::ReadBuffer& buffer, Color4f* value);
void loadValue(ChunkLib::ReadBuffer& buffer, BoneGroupWeight* value);
void loadValue(ChunkLib::ReadBuffer& buffer, std::string* value);

void writeValue(ChunkLib::WriteBuffer& buffer, const float& value);
void writeValue(ChunkLib::WriteBuffer& buffer, const MathBase::Vector2f& value);
void writeValue(ChunkLib::WriteBuffer& buffer, const MathBase::Vector3f& value);
void writeValue(ChunkLib::WriteBuffer& buffer, const MathBase::Quatf& value);
void writeValue(ChunkLib::WriteBuffer& buffer, const Index& value);
void writeValue(ChunkLib::WriteBuffer& buffer, const Color4f& value);
void writeValue(ChunkLib::WriteBuffer& buffer, const BoneGroupWeight& value);
void writeValue(ChunkLib::WriteBuffer& buffer, const std::string& value);

} // namespace y3d
