#include "cl_writebuffer.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstring>

namespace ChunkLib
{

namespace
{

const uint32 LENGTH_PLACEHOLDER = 0xFFFFFFFF;
const uint32 LENGTH_SIZE = sizeof LENGTH_PLACEHOLDER;
const uint32 ID_SIZE = sizeof(uint16);
const std::size_t MAX_SIZE = 0xFFFFFFFF; // what a 32-bit offset reaches

} // namespace

WriteBuffer::WriteBuffer(const std::string& format, unsigned char majorVersion, unsigned char minorVersion,
                         unsigned int flags)
    : mFormat(format), mMajor(majorVersion), mMinor(minorVersion), mFlags(flags)
{
    writeHeader();
}

WriteBuffer::WriteBuffer(const std::string& format, unsigned char majorVersion, unsigned char minorVersion,
                         unsigned int flags, uint8* block, std::size_t blockSize)
    : mFormat(format), mMajor(majorVersion), mMinor(minorVersion), mFlags(flags), mOwnsData(false), mBlock(block),
      mBlockSize(blockSize)
{
    writeHeader();
}

void WriteBuffer::writeHeader()
{
    assert(mFormat.size()==4);
    store(mFormat.data(), 4);
    write(mMajor);
    write(mMinor);
}

void WriteBuffer::openChunk(unsigned short id)
{
    write(id);
    mChunkStack.push({id, static_cast<uint32>(mSize)});
    if (mBDT.getImplicitLength(id, mFlags) == 0) write(LENGTH_PLACEHOLDER);
}

void WriteBuffer::closeChunk()
{
    if (mChunkStack.empty()) return;

    const ChunkData chunk = mChunkStack.top();
    mChunkStack.pop();
    if (mBDT.getImplicitLength(chunk.mID, mFlags) != 0 || !mComplete) return;

    const uint32 length = static_cast<uint32>(mSize) - chunk.mOffset - LENGTH_SIZE;
    if (length != 0 || (mFlags & KEEP_EMPTY_CHUNKS))
    {
        store(&length, LENGTH_SIZE, chunk.mOffset);
    }
    else
    {
        mSize = chunk.mOffset - ID_SIZE;
        if (mOwnsData) mData.resize(mSize);
    }
}

void WriteBuffer::write(const std::string& value)
{
    mComplete = mComplete && value.size() < MAX_SIZE;
    if (mComplete) store(value.c_str(), static_cast<unsigned int>(value.size()) + 1);
}

bool WriteBuffer::save(const std::string& name) const
{
    if (!mComplete) return false;
    FILE* file = std::fopen(name.c_str(), "wb");
    if (!file) return false;

    const bool written = std::fwrite(mData.data(), 1, mData.size(), file) == mData.size();
    return std::fclose(file) == 0 && written;
}

void WriteBuffer::store(const void* data, unsigned int size, unsigned int offset)
{
    if (size == 0) return;
    if (offset == AT_END)
    {
        mComplete = mComplete && size <= MAX_SIZE - mSize;
        if (!mComplete) return;
        offset = static_cast<uint32>(mSize);
        mSize += size;
        if (mOwnsData)
        {
            const uint8* bytes = static_cast<const uint8*>(data);
            mData.insert(mData.end(), bytes, bytes + size);
            return;
        }
    }

    uint8* const target = mOwnsData ? mData.data() : mBlock;
    const std::size_t end = mOwnsData ? mSize : std::min(mSize, mBlockSize);
    if (size <= end && offset <= end - size) std::memcpy(target + offset, data, size);
}

} // namespace ChunkLib
