#pragma once

#include <stack>
#include <string>
#include <vector>

#include "cl_bdt.h"

namespace ChunkLib
{

// Walks a chunk stream that lies in memory. Each level is read by one loop: openChunk() until it returns 0, read the
// payload or descend with a loop of the same kind, closeChunk() once for each chunk that was opened. What a reader does
// not know or leaves unread, closeChunk() jumps over.
//
//     while (const uint16 id = buffer.openChunk())
//     {
//         if (id == KNOWN) buffer.read(value);
//         buffer.closeChunk();
//     }
//
// Nothing is ever read outside the innermost open chunk, and a stream is not trusted:
// - a chunk that claims more than its parent (or the block) holds is clipped to it, so a length field never tells more
//   than there is, nor does a count taken from it; an implicit length stays that of its type, and reads in it fail,
// - the identifier 0, which no file has, ends a level like the end of the chunk,
// - chunks inside MAX_LEVELS others are not opened, so that a reader which recurses cannot run out of stack. A reader
//   that wants to tell what is left out looks at the depth of the stack before.
class ReadBuffer
{
public:
    // The number of chunks that can be open inside each other.
    static const unsigned int MAX_LEVELS = 1000;

    // Reads the header. The block is neither owned nor copied and outlives the buffer. One that is too short for a
    // header has the format "void" and the version 0:0. `flags`: IMPLICIT_LENGTHS or 0.
    ReadBuffer(const uint8* data, unsigned int length, unsigned int flags);

    const std::string& getFormat() const { return mFormat; }
    uint8 getMajorVersion() const { return mMajor; }
    uint8 getMinorVersion() const { return mMinor; }

    // Enters the next chunk and returns its identifier, or 0 when this level holds no further one.
    uint16 openChunk();

    // The payload length of the innermost open chunk. There must be one.
    uint32 getLength() const;

    // Leaves the innermost open chunk, of which there must be one, for the byte behind its payload.
    void closeChunk();

    // True when `size` more bytes can be read at the current position.
    bool checkBoundaries(unsigned int size) const { return size <= getEnd() - mOffset; }

    // Little-endian values. False, with the target untouched, when the innermost chunk does not hold so many bytes.
    bool read(float& value) { return readBytes(&value, sizeof value); }
    bool read(int& value) { return readBytes(&value, sizeof value); }
    bool read(short unsigned int& value) { return readBytes(&value, sizeof value); }
    bool read(short int& value) { return readBytes(&value, sizeof value); }
    bool read(unsigned int& value) { return readBytes(&value, sizeof value); }
    bool read(char& value) { return readBytes(&value, sizeof value); }
    bool read(unsigned char& value) { return readBytes(&value, sizeof value); }

    // Appends characters to `value` up to a 0 byte, which is consumed and not stored; at most `maxLength` of them, and
    // no further than the chunk's end. True when the 0 byte was there.
    bool read(std::string& value, unsigned int maxLength = 0xFFFFFFFF);

    // `size` bytes in one step, for lists of values that lie in memory as they do in the stream. False, with the target
    // untouched, when there are fewer.
    bool readBytes(void* target, unsigned int size);

    struct ChunkData
    {
        uint16 mID;
        uint32 mLength;     // of the payload; an implicit one is told in full where the block ends before
        uint32 mLastOffset; // of the first byte behind the payload
    };

    BDT mBDT;
    std::string mFormat;
    uint8 mMajor = 0;
    uint8 mMinor = 0;
    uint32 mFlags = 0;
    std::stack<ChunkData, std::vector<ChunkData>> mChunkStack; // the chunks now open; each ends within the one below it
    const uint8* mData;                                        // not owned
    uint32 mOffset = 0;                                        // never behind the end of the innermost chunk
    uint32 mLength;                                            // of the block

    // What the stream has brought about so far, in bytes, for readers that keep that in proportion to what they read.
    uint64_t mOutput = 0; // printed
    uint64_t mMemory = 0; // taken for objects
    bool mSilent = false; // no more is to be printed

private:
    // The offset behind the last byte that may be read now.
    uint32 getEnd() const { return mChunkStack.empty() ? mLength : mChunkStack.top().mLastOffset; }
};

} // namespace ChunkLib
