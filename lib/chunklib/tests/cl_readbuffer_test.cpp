#include "cl_readbuffer.h"

#include <gtest/gtest.h>

using namespace ChunkLib;

namespace
{

typedef std::vector<uint8> Bytes;

// A buffer over a good header and these chunks, in a block of exactly their size.
class Stream
{
public:
    explicit Stream(const Bytes& chunks, unsigned int flags = IMPLICIT_LENGTHS)
        : mBlock(withHeader(chunks)), mBuffer(mBlock.data(), static_cast<unsigned int>(mBlock.size()), flags)
    {
    }

    ReadBuffer* operator->() { return &mBuffer; }

private:
    static Bytes withHeader(const Bytes& chunks)
    {
        Bytes bytes = {'T', 'E', 'S', 'T', 3, 200};
        bytes.insert(bytes.end(), chunks.begin(), chunks.end());
        bytes.shrink_to_fit();
        return bytes;
    }

    Bytes mBlock;
    ReadBuffer mBuffer;
};

} // namespace

TEST(ReadBuffer, headerIsReadOrTheFormatIsVoid)
{
    const Bytes header = {'T', 'E', 'S', 'T', 3, 200};
    ReadBuffer buffer(header.data(), 6, IMPLICIT_LENGTHS);
    EXPECT_EQ(buffer.getFormat(), "TEST");
    EXPECT_TRUE(buffer.getMajorVersion() == 3 && buffer.getMinorVersion() == 200 && buffer.openChunk() == 0);
    ReadBuffer tooShort(header.data(), 5, IMPLICIT_LENGTHS);
    EXPECT_EQ(tooShort.getFormat(), "void");
    EXPECT_EQ(tooShort.getMajorVersion() + tooShort.getMinorVersion(), 0);
}

TEST(ReadBuffer, lengthIsImplicitForBasicTypesOnlyAndOnlyWithTheFlag)
{
    const uint32 sizes[16] = {0, 1, 2, 4, 4, 8, 12, 16, 0, 0, 0, 0, 0, 0, 0, 0};
    for (unsigned int i = 0; i < 32; ++i)
    {
        // The bytes 5 0 0 0 are either a length or the beginning of the payload.
        Bytes bytes = {static_cast<uint8>(i / 2), 0xF0, 5, 0, 0, 0};
        bytes.resize(2 + 16);
        Stream stream(bytes, i % 2);
        const uint32 implicit = i % 2 * sizes[i / 2];
        EXPECT_EQ(stream->openChunk(), 0xF000 + i / 2);
        EXPECT_EQ(stream->mOffset, implicit ? 8u : 12u);
        EXPECT_EQ(stream->getLength(), implicit ? implicit : 5u);
        stream->closeChunk();
        EXPECT_EQ(stream->mOffset, implicit ? 8u + implicit : 17u);
    }
}

TEST(ReadBuffer, valuesAreLittleEndianAndNeverReachBehindTheirChunk)
{
    Stream stream({0x10, 0,    15,   0,    0,    0,    0,    0, 0xC0, 0x3F, 0xFE, 0xFF,
                   0xFF, 0xFF, 0x34, 0x12, 0x80, 0xFF, 0xFF, 1, 2,    0x01, 0,    7});
    float f = 0.0f;
    int i = 0;
    unsigned short us = 0;
    unsigned char uc = 0;
    short s = 0;
    ASSERT_EQ(stream->openChunk(), 0x10);
    EXPECT_TRUE(stream->read(f) && stream->read(i) && stream->read(us) && stream->read(uc) && stream->read(s));
    EXPECT_TRUE(f == 1.5f && i == -2 && us == 0x1234 && uc == 0x80 && s == -1);

    unsigned int untouched = 99;
    EXPECT_FALSE(stream->read(untouched)); // two bytes are left in the chunk, and more behind it
    EXPECT_EQ(untouched, 99u);
    EXPECT_TRUE(stream->checkBoundaries(2));
    EXPECT_FALSE(stream->checkBoundaries(3));
    EXPECT_FALSE(stream->checkBoundaries(0xFFFFFFFF)); // would wrap if added to the position
    stream->closeChunk();
    ASSERT_EQ(stream->openChunk(), 0x01);
    EXPECT_TRUE(stream->read(uc));
    EXPECT_EQ(uc, 7);
}

TEST(ReadBuffer, stringsEndAtTheirTerminatorOrWithTheChunk)
{
    // Twice the same four bytes, in a chunk that holds them and in one of three.
    Stream stream({0x10, 0xF0, 4, 0, 0, 0, 'a', 'b', 0, 'c', 0x10, 0xF0, 3, 0, 0, 0, 'a', 'b', 'c', 'x', 0});
    std::string text = "<"; // what is there stays in front
    stream->openChunk();
    EXPECT_FALSE(stream->read(text, 1));
    EXPECT_TRUE(stream->read(text));
    EXPECT_EQ(text, "<ab");
    EXPECT_EQ(stream->mOffset, 15u); // behind the terminator
    stream->closeChunk();
    stream->openChunk();
    EXPECT_FALSE(stream->read(text));
    EXPECT_EQ(text, "<ababc");
    EXPECT_FALSE(stream->read(text));
}

TEST(ReadBuffer, brokenChunkIsClippedOrEndsItsLevelAndTheOneBehindItsParentIsFound)
{
    struct
    {
        const char* name;
        Bytes bytes;
        uint16 id;
        uint32 length;
    } const cases[] = {
        {"one byte of an identifier", {0x10}, 0, 0},
        {"identifier 0", {0, 0, 4, 0, 0, 0, 1, 2, 3, 4}, 0, 0},
        {"three bytes of a length", {0x10, 0xF0, 4, 0, 0}, 0, 0},
        {"longer than its parent", {0x10, 0xF0, 9, 0, 0, 0, 1, 2}, 0xF010, 2},
        {"a length that wraps", {0x10, 0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3}, 0xF010, 3},
        {"an implicit length cut off", {0x07, 0xF0, 1, 2, 3}, 0xF007, 16},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.name);
        Bytes bytes = {0x20, 0, static_cast<uint8>(test.bytes.size()), 0, 0, 0};
        bytes.insert(bytes.end(), test.bytes.begin(), test.bytes.end());
        bytes.insert(bytes.end(), {0x01, 0, 7});
        Stream stream(bytes);
        EXPECT_EQ(stream->openChunk(), 0x20);
        EXPECT_EQ(stream->openChunk(), test.id);
        if (test.id != 0)
        {
            EXPECT_EQ(stream->getLength(), test.length);
            stream->closeChunk();
            EXPECT_EQ(stream->openChunk(), 0);
        }
        stream->closeChunk();
        EXPECT_EQ(stream->openChunk(), 0x01);
    }
}

TEST(ReadBuffer, opensNoMoreThanAThousandChunksInsideEachOther)
{
    Bytes deep;
    for (int i = 0; i < 100000; ++i) deep.insert(deep.end(), {0x10, 0, 0xFF, 0xFF, 0xFF, 0x7F});
    Stream stream(deep);
    int depth = 0;
    while (stream->openChunk()) ++depth;
    EXPECT_EQ(depth, 1000);
    while (depth-- > 0) stream->closeChunk();
    EXPECT_EQ(stream->openChunk(), 0);
}
