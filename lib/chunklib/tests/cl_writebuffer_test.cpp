#include "cl_writebuffer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>

using namespace ChunkLib;

TEST(WriteBuffer, writesHeaderLengthsAndValuesByteForByte)
{
    WriteBuffer buffer("Y3DF", 0, 4, IMPLICIT_LENGTHS);
    buffer.openChunk(0x1000);
    buffer.openChunk(0xF004);
    buffer.write(1.5f);
    buffer.closeChunk();
    buffer.openChunk(0xF010);
    buffer.write(std::string("a\0b", 3));
    buffer.closeChunk();
    buffer.write(-2);
    buffer.write(0x01020304u);
    buffer.write(static_cast<unsigned short>(0x1234));
    buffer.write(static_cast<short>(-1));
    buffer.write('c');
    buffer.write(static_cast<unsigned char>(0x80));
    buffer.closeChunk();
    const std::vector<uint8> expected = {
        'Y', '3', 'D', 'F', 0, 4,   0x00, 0x10, 30,   0,    0,    0, 0x04, 0xF0, 0, 0,    0xC0, 0x3F, 0x10, 0xF0, 4,
        0,   0,   0,   'a', 0, 'b', 0,    0xFE, 0xFF, 0xFF, 0xFF, 4, 3,    2,    1, 0x34, 0x12, 0xFF, 0xFF, 'c',  0x80};
    EXPECT_EQ(buffer.getData(), expected);
    EXPECT_TRUE(buffer.isComplete());
}

TEST(WriteBuffer, emptyChunksVanishUnlessTheyAreKeptOrImplicit)
{
    struct
    {
        unsigned int flags;
        std::vector<uint16> nested;
        std::vector<uint8> expected;
    } const cases[] = {
        {IMPLICIT_LENGTHS, {0xF010}, {}},
        {IMPLICIT_LENGTHS, {0x1000, 0xF010}, {}},
        {IMPLICIT_LENGTHS | KEEP_EMPTY_CHUNKS, {0xF010}, {0x10, 0xF0, 0, 0, 0, 0}},
        {IMPLICIT_LENGTHS, {0xF007}, {0x07, 0xF0}},
        {IMPLICIT_LENGTHS, {0x1000, 0xF007}, {0x00, 0x10, 2, 0, 0, 0, 0x07, 0xF0}},
        {0, {0xF007}, {}},
    };
    for (const auto& test : cases)
    {
        WriteBuffer buffer("TEST", 1, 2, test.flags);
        for (const uint16 id : test.nested) buffer.openChunk(id);
        for (std::size_t i = 0; i <= test.nested.size(); ++i) buffer.closeChunk(); // one more than is open
        EXPECT_EQ(std::vector<uint8>(buffer.getData().begin() + 6, buffer.getData().end()), test.expected);
    }
}

TEST(WriteBuffer, aBlockTakesTheSameBytesAsFarAsItReaches)
{
    const auto fill = [](WriteBuffer& buffer) {
        buffer.openChunk(0x1000);
        buffer.openChunk(0xF010);
        buffer.closeChunk();
        buffer.openChunk(0xF020);
        buffer.write(0x01020304);
        buffer.closeChunk();
        buffer.closeChunk();
        return buffer.getSize();
    };
    WriteBuffer whole("TEST", 1, 2, IMPLICIT_LENGTHS);
    ASSERT_EQ(fill(whole), 22u);
    for (const std::size_t size : {0, 10, 22})
    {
        std::vector<uint8> block(size); // of the exact size, for the sanitizer
        WriteBuffer buffer("TEST", 1, 2, IMPLICIT_LENGTHS, block.data(), size);
        EXPECT_EQ(fill(buffer), 22u);
        EXPECT_TRUE(buffer.getData().empty());
        EXPECT_TRUE(size < 22 || block == whole.getData());
    }
}

TEST(WriteBuffer, savedFileHoldsTheBytesAndAFailureIsTold)
{
    const WriteBuffer buffer("TEST", 1, 2, IMPLICIT_LENGTHS);
    const std::string name = testing::TempDir() + "cl_writebuffer_test." + std::to_string(getpid());
    ASSERT_TRUE(buffer.save(name));
    std::ifstream file(name, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "TEST\1\2");
    std::remove(name.c_str());
    EXPECT_FALSE(buffer.save(testing::TempDir() + "no such folder/file"));
    EXPECT_FALSE(buffer.save("/dev/full"));
}
