#include "xml_testing.h"

#include <gtest/gtest.h>

#include <functional>

using Xml::BufferReader;

namespace
{

struct Reading
{
    std::string text;
    std::function<std::string(BufferReader&)> read;
    std::string result; // or the exception's text
    unsigned int pos;
    int line, column;
};

// Skipping, as a reading with an empty result.
std::string skip(BufferReader& reader, int count)
{
    return reader.skipChar(count), "";
}

std::string skipSpace(BufferReader& reader, int minimum)
{
    return reader.skipWhitespace(minimum), "";
}

const Reading cReadings[] = {
    {"a\tb\n\r\rc", [](auto& r) { return skip(r, 7); }, "", 7, 2, 2},
    {"abc", [](auto& r) { return skip(r, 3); }, "", 3, 1, 4},
    {"abc", [](auto& r) { return skip(r, 4); }, "EOF", 0, 1, 1},
    {"\r", [](auto& r) { return std::string(1, r.readChar()); }, "\r", 1, 1, 2},
    {"\t", [](auto& r) { return std::string(1, r.readChar()); }, "\t", 1, 1, 5},
    {"a\tb\r\ncd>e<", [](auto& r) { return r.readText("<>"); }, "a    b\ncd", 7, 2, 3},
    {"ab", [](auto& r) { return r.readText("<"); }, "ab", 2, 1, 3},
    {std::string("a\0b<", 4), [](auto& r) { return r.readText("<"); }, std::string("a\0b", 3), 3, 1, 4},
    {"a\tb\r\nc\"", [](auto& r) { return r.readLine("\""); }, "a    b", 4, 1, 8},
    {"aZ09_b", [](auto& r) { return r.readWord(""); }, "aZ09", 4, 1, 5},
    {"a:b c", [](auto& r) { return r.readWord(":"); }, "a:b", 3, 1, 4},
    {" \t\r\n x", [](auto& r) { return skipSpace(r, 3); }, "", 5, 2, 2},
    {"\n\n x", [](auto& r) { return skipSpace(r, 2); }, "Not enough spaces!", 3, 3, 2},
    {" ", [](auto& r) { return skipSpace(r, 2); }, "Eof before enough spaces were found", 1, 1, 2},
};

} // namespace

TEST(BufferReader, readsAndCountsLinesAndColumns)
{
    for (const Reading& reading : cReadings)
    {
        SCOPED_TRACE(reading.text);
        const auto block = exactBlock(reading.text);
        BufferReader reader(block.get(), static_cast<unsigned int>(reading.text.size()));
        std::string result;
        const std::string error = messageOf([&] { result = reading.read(reader); });
        EXPECT_EQ(error.empty() ? result : error, reading.result);
        EXPECT_EQ(reader.mPos, reading.pos);
        EXPECT_EQ(reader.mLine, reading.line);
        EXPECT_EQ(reader.mColumn, reading.column);
    }
}
