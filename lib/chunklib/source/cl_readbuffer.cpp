#include "cl_readbuffer.h"

#include <algorithm>
#include <cassert>
#include <cstring>

// Values are copied between memory and stream as they lie.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "chunk streams are little-endian, and so must the machine be");

namespace ChunkLib
{

namespace
{

const unsigned int HEADER_SIZE = 6; // four characters of the format, two bytes of the version

} // namespace

ReadBuffer::ReadBuffer(const uint8* data, unsigned int length, unsigned int flags) : mData(data), mLength(length)
{
    if (length < HEADER_SIZE)
    {
        mFormat = "void";
        return;
    }

    mFormat.assign(reinterpret_cast<const char*>(data), 4);
    mMajor = data[4];
    mMinor = data[5];
    mOffset = HEADER_SIZE;
    mFlags = flags;
}

uint16 ReadBuffer::openChunk()
{
    uint16 id;
    const uint32 start = mOffset;
    if (!read(id)) return 0;
    if (id == 0 || mChunkStack.size() == MAX_LEVELS)
    {
        mOffset = start; // the level stays at its end
        return 0;
    }

    const uint32 implicit = mBDT.getImplicitLength(id, mFlags);
    uint32 length = implicit;
    if (implicit == 0 && !read(length)) return 0;

    length = std::min(length, getEnd() - mOffset);
    mChunkStack.push({id, implicit != 0 ? implicit : length, mOffset + length});
    return id;
}

uint32 ReadBuffer::getLength() const
{
    assert(!mChunkStack.empty());
    return mChunkStack.top().mLength;
}

void ReadBuffer::closeChunk()
{
    assert(!mChunkStack.empty());
    mOffset = mChunkStack.top().mLastOffset;
    mChunkStack.pop();
}

bool ReadBuffer::read(std::string& value, unsigned int maxLength)
{
    const uint32 available = std::min(maxLength, getEnd() - mOffset);
    if (available == 0) return false;

    const uint8* start = mData + mOffset;
    const uint8* end = static_cast<const uint8*>(std::memchr(start, 0, available));
    const uint32 length = end ? static_cast<uint32>(end - start) : available;
    value.append(reinterpret_cast<const char*>(start), length);
    mOffset += length + (end ? 1 : 0);
    return end != nullptr;
}

bool ReadBuffer::readBytes(void* target, unsigned int size)
{
    if (!checkBoundaries(size)) return false;
    if (size != 0) std::memcpy(target, mData + mOffset, size); // an empty list may have no memory to copy to
    mOffset += size;
    return true;
}

} // namespace ChunkLib
