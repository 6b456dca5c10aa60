#include "y3d_structlist.h"

#include <type_traits>

namespace y3d
{

// An element lies in memory as it does in the stream, so a list is taken in one step. An open chunk always holds as
// many bytes as its length says: no element can stay unread.
template <class T> void StructList<T>::loadElements(ChunkLib::ReadBuffer& buffer)
{
    static_assert(std::is_trivially_copyable<T>::value && sizeof(T) % 4 == 0, "Elements are plain 4-byte values");

    const unsigned int count = buffer.getLength() / sizeof(T);
    this->clear();
    this->resize(count);
    if (count != 0) buffer.readBytes(this->data(), count * sizeof(T));
}

template void StructList<Index>::loadElements(ChunkLib::ReadBuffer&);
template void StructList<MathBase::Vector3f>::loadElements(ChunkLib::ReadBuffer&);
template void StructList<Color4f>::loadElements(ChunkLib::ReadBuffer&);
template void StructList<BoneGroupWeight>::loadElements(ChunkLib::ReadBuffer&);

} // namespace y3d
