#include "y3d_structlist.h"

#include <algorithm>
#include <type_traits>

namespace y3d
{

// An element lies in memory as it does in the stream, so lists are read and written many elements at a time.

template <class T> void StructList<T>::loadElements(ChunkLib::ReadBuffer& buffer)
{
    static_assert(std::is_trivially_copyable<T>::value && sizeof(T) % 4 == 0, "elements are plain 4-byte values");

    // An open chunk always holds as many bytes as its length says: no element can stay unread.
    const unsigned int count = buffer.getLength() / sizeof(T);
    this->clear();
    this->resize(count);
    buffer.readBytes(this->data(), count * sizeof(T));
}

template <class T> void StructList<T>::writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const
{
    const std::size_t step = 65536; // far from what the 32-bit size of one write could not hold
    buffer.openChunk(id);
    for (std::size_t first = 0; first < this->size(); first += step)
    {
        const std::size_t count = std::min(step, this->size() - first);
        buffer.writeBytes(this->data() + first, static_cast<unsigned int>(count * sizeof(T)));
    }
    buffer.closeChunk();
}

template class StructList<Index>;
template class StructList<MathBase::Vector3f>;
template class StructList<Color4f>;
template class StructList<BoneGroupWeight>;

} // namespace y3d
