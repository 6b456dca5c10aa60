#pragma once

#include <stack>
#include <string>
#include <vector>

#include "cl_bdt.h"

namespace ChunkLib
{

// Builds a chunk stream in memory. Chunks are opened and closed like brackets; values go to the end of the innermost
// one. A chunk that is closed without payload leaves no trace (unless KEEP_EMPTY_CHUNKS is set), so a whole subtree in
// which nothing was written vanishes. Chunks of implicit length always stay; that their value has been written, once,
// is the caller's care.
class WriteBuffer
{
public:
    // Writes the header. `format` has exactly four characters; `flags` are BufferFlags.
    WriteBuffer(const std::string& format, unsigned char majorVersion, unsigned char minorVersion, unsigned int flags);

    // The same into a block of the caller's in place of getData(), which stays empty; what the block does not hold is
    // not written. getSize() counts it all the same: a block of no size measures a stream.
    WriteBuffer(const std::string& format, unsigned char majorVersion, unsigned char minorVersion, unsigned int flags,
                uint8* block, std::size_t blockSize);

    void openChunk(unsigned short id);

    // Closes the innermost chunk; nothing happens when none is open.
    void closeChunk();

    // Appends the little-endian bytes of a value.
    void write(const float& value) { store(&value, sizeof value); }
    void write(const int& value) { store(&value, sizeof value); }
    void write(const unsigned int& value) { store(&value, sizeof value); }
    void write(const short unsigned int& value) { store(&value, sizeof value); }
    void write(const short int& value) { store(&value, sizeof value); }
    void write(const char& value) { store(&value, sizeof value); }
    void write(const unsigned char& value) { store(&value, sizeof value); }

    // Appends the characters and a terminating 0 byte.
    void write(const std::string& value);

    // Appends `size` bytes in one step, for lists of values that lie in memory as they do in the stream.
    void writeBytes(const void* data, unsigned int size) { store(data, size); }

    // The bytes so far. Chunks with a length field that are still open hold 0xFFFFFFFF in its place.
    const std::vector<uint8>& getData() const { return mData; }

    // Their number.
    std::size_t getSize() const { return mSize; }

    // False once something was left out because offsets, which have 32 bits, would not have reached it.
    bool isComplete() const { return mComplete; }

    // Writes the bytes to a file. False when it cannot be opened or does not take all of them, or when the stream is
    // not complete.
    bool save(const std::string& name) const;

    struct ChunkData
    {
        uint16 mID;
        uint32 mOffset; // behind the identifier, where the length field is or would be
    };

    std::string mFormat;
    uint8 mMajor;
    uint8 mMinor;
    uint32 mFlags;
    BDT mBDT;
    std::stack<ChunkData, std::vector<ChunkData>> mChunkStack; // the chunks now open
    std::vector<uint8> mData;
    bool mOwnsData = true;      // else the bytes go to mBlock
    uint8* mBlock = nullptr;    // not owned
    std::size_t mBlockSize = 0; // what it holds
    std::size_t mSize = 0;      // of the stream
    bool mComplete = true;

private:
    static const unsigned int AT_END = 0xFFFFFFFF;

    void writeHeader();

    // Appends bytes, or overwrites them in place at `offset`; in place, what does not lie wholly within the data is
    // ignored.
    void store(const void* data, unsigned int size, unsigned int offset = AT_END);
};

} // namespace ChunkLib
