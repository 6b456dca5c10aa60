#include "cl_writebuffer.h"

#include <gtest/gtest.h>

#include <cstdio>

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
        const char* name;
        unsigned int flags;
        std::vector<uint16> nested;
        std::vector<uint8> expected;
    } const cases[] = {
        {"one", IMPLICIT_LENGTHS, {0xF010}, {}},
        {"parent and child", IMPLICIT_LENGTHS, {0x1000, 0xF010}, {}},
        {"kept", IMPLICIT_LENGTHS | KEEP_EMPTY_CHUNKS, {0xF010}, {0x10, 0xF0, 0, 0, 0, 0}},
        {"implicit", IMPLICIT_LENGTHS, {0xF007}, {0x07, 0xF0}},
        {"inside a parent", IMPLICIT_LENGTHS, {0x1000, 0xF007}, {0x00, 0x10, 2, 0, 0, 0, 0x07, 0xF0}},
        {"basic type without the flag", 0, {0xF007}, {}},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.name);
        WriteBuffer buffer("TEST", 1, 2, test.flags);
        for (const uint16 id : test.nested) buffer.openChunk(id);
        for (std::size_t i = 0; i <= test.nested.size(); ++i) buffer.closeChunk(); // one more than is open
        EXPECT_EQ(std::vector<uint8>(buffer.getData().begin() + 6, buffer.getData().end()), test.expected);
    }
}

TEST(WriteBuffer, savedFileHoldsTheBytesAndAFailureIsTold)
{
    WriteBuffer buffer("TEST", 1, 2, IMPLICIT_LENGTHS);
    buffer.openChunk(0x10);
    buffer.write(std::string("text"));
    buffer.closeChunk();

    const std::string name = testing::TempDir() + "cl_writebuffer_test.bin";
    ASSERT_TRUE(buffer.save(name));
    FILE* file = std::fopen(name.c_str(), "rb");
    ASSERT_NE(file, nullptr);
    std::vector<uint8> bytes(100);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    std::fclose(file);
    std::remove(name.c_str());
    EXPECT_EQ(bytes, buffer.getData());

    EXPECT_FALSE(buffer.save(testing::TempDir() + "no such folder/file"));
    EXPECT_FALSE(buffer.save("/dev/full"));
}
