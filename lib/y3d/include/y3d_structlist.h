#pragma once

#include <vector>

#include "cl_readbuffer.h"
#include "cl_writebuffer.h"
#include "y3d_value.h"

namespace y3d
{

// A growable array that is one chunk in a file: the elements one after the other, their number being the length of the
// chunk divided by the size of one, rounded down. Instances: Index, MathBase::Vector3f, Color4f, BoneGroupWeight.
template <class T> class StructList : public std::vector<T>
{
public:
    using std::vector<T>::vector;

    // Replaces the elements by those in the open chunk.
    void loadElements(ChunkLib::ReadBuffer& buffer);

    // Writes one chunk with the given identifier. A list without elements leaves no chunk.
    void writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const
    {
        buffer.openChunk(id);
        for (const T& element : *this) writeValue(buffer, element);
        buffer.closeChunk();
    }
};

// Texture coordinates; the third one is carried and never used.
using UVWList = StructList<MathBase::Vector3f>;

extern template void StructList<Index>::loadElements(ChunkLib::ReadBuffer&);
extern template void StructList<MathBase::Vector3f>::loadElements(ChunkLib::ReadBuffer&);
extern template void StructList<Color4f>::loadElements(ChunkLib::ReadBuffer&);
extern template void StructList<BoneGroupWeight>::loadElements(ChunkLib::ReadBuffer&);

} // namespace y3d
