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
    void writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const;
};

// Texture coordinates; the third one is carried and never used.
using UVWList = StructList<MathBase::Vector3f>;

extern template class StructList<Index>;
extern template class StructList<MathBase::Vector3f>;
extern template class StructList<Color4f>;
extern template class StructList<BoneGroupWeight>;

} // namespace y3d
