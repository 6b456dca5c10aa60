#include "xml_testing.h"

#include <gtest/gtest.h>

#include <functional>

using Xml::BufferReader;

namespace
{

struct Reading
{
    const char* name;
    std::string text;
    std::function<std::string(BufferReader&)> read;
    std::string result; // or the exception's text
    unsigned int pos;
    int line, column;
};

std::string skip(BufferReader& reader, int count)
{
    reader.skipChar(count);
    return "";
}

std::string skipSpace(BufferReader& reader, int minimum)
{
    reader.skipWhitespace(minimum);
    return "";
}

const Reading cReadings[] = {
    {"skip counts tabs, newlines, no returns", "a\tb\n\r\rc", [](auto& r) { return skip(r, 7); }, "", 7, 2, 2},
    {"skip of all there is", "abc", [](auto& r) { return skip(r, 3); }, "", 3, 1, 4},
    {"skip past the end moves nothing", "abc", [](auto& r) { return skip(r, 4); }, "EOF", 0, 1, 1},
    {"skip of nothing", "", [](auto& r) { return skip(r, 0); }, "", 0, 1, 1},
    {"char counts a return", "\r", [](auto& r) { return std::string(1, r.readChar()); }, "\r", 1, 1, 2},
    {"char counts a tab as four", "\t", [](auto& r) { return std::string(1, r.readChar()); }, "\t", 1, 1, 5},
    {"char at the end", "", [](auto& r) { return std::string(1, r.readChar()); }, "EOF", 0, 1, 1},
    {"text stops before any stop byte", "a\tb\r\ncd>e<", [](auto& r) { return r.readText("<>"); }, "a    b\ncd", 7, 2,
     3},
    {"text runs to the end", "ab", [](auto& r) { return r.readText("<"); }, "ab", 2, 1, 3},
    {"text without stops", "<a", [](auto& r) { return r.readText(""); }, "<a", 2, 1, 3},
    {"text keeps a zero byte", std::string("a\0b<", 4), [](auto& r) { return r.readText("<"); }, std::string("a\0b", 3),
     3, 1, 4},
    {"line stops at a newline", "a\tb\r\nc\"", [](auto& r) { return r.readLine("\""); }, "a    b", 4, 1, 8},
    {"word of letters and digits", "aZ09_b", [](auto& r) { return r.readWord(""); }, "aZ09", 4, 1, 5},
    {"word with extra bytes", "a:b c", [](auto& r) { return r.readWord(":"); }, "a:b", 3, 1, 4},
    {"word of no bytes", "\xe4", [](auto& r) { return r.readWord(""); }, "", 0, 1, 1},
    {"space of all sorts", " \t\r\n x", [](auto& r) { return skipSpace(r, 3); }, "", 5, 2, 2},
    {"newlines are no spaces", "\n\n x", [](auto& r) { return skipSpace(r, 2); }, "Not enough spaces!", 3, 3, 2},
    {"space cut off", " ", [](auto& r) { return skipSpace(r, 2); }, "Eof before enough spaces were found", 1, 1, 2},
};

} // namespace

TEST(BufferReader, readsAndCountsLinesAndColumns)
{
    for (const Reading& reading : cReadings)
    {
        SCOPED_TRACE(reading.name);
        const ExactBlock block(reading.text);
        BufferReader reader(block.data(), static_cast<unsigned int>(block.length()));
        std::string result;
        const std::string error = messageOf([&] { result = reading.read(reader); });
        EXPECT_EQ(error.empty() ? result : error, reading.result);
        EXPECT_EQ(reader.mPos, reading.pos);
        EXPECT_EQ(reader.mLine, reading.line);
        EXPECT_EQ(reader.mColumn, reading.column);
    }
}
