#pragma once

#include <cstdint>

namespace ChunkLib
{

typedef uint8_t uint8;
typedef uint16_t uint16;
typedef uint32_t uint32;

// Flags of a buffer. Nothing in a stream records them: reader and writer of one stream agree on IMPLICIT_LENGTHS.
enum BufferFlags : uint32
{
    IMPLICIT_LENGTHS = 1, // chunks of a basic data type have no length field
    KEEP_EMPTY_CHUNKS = 2 // the writer leaves chunks without payload in the stream
};

// The basic data types. The low four bits of a chunk's identifier (the only ones looked at here) name one of them, or
// none: 1 is a byte, 2 a 16-bit value, 3 an integer, 4 to 7 are one to four floats.
class BDT
{
public:
    // The size of a value in bytes; 0 for no basic data type.
    uint32 getSize(unsigned int code) const;

    // A name to show, such as "float[3]".
    const char* getName(unsigned int code) const;

    bool isBDT(unsigned int code) const { return getSize(code) != 0; }

    // The payload size of a chunk that has no length field in a stream with these flags; 0 for one that has.
    uint32 getImplicitLength(uint16 id, uint32 flags) const { return flags & IMPLICIT_LENGTHS ? getSize(id) : 0; }
};

} // namespace ChunkLib
