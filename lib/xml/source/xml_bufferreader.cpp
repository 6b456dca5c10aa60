#include "xml_bufferreader.h"

#include "xml_exception.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace Xml
{

namespace
{

enum ByteClass : std::uint8_t
{
    WordByte = 1, // letters and digits as isalnum knows them in the C locale, whatever the locale is
    SpaceByte = 2
};

constexpr std::array<std::uint8_t, 256> makeByteClasses()
{
    std::array<std::uint8_t, 256> classes{};
    for (unsigned int c = '0'; c <= '9'; ++c) classes[c] = WordByte;
    for (unsigned int c = 'A'; c <= 'Z'; ++c) classes[c] = WordByte;
    for (unsigned int c = 'a'; c <= 'z'; ++c) classes[c] = WordByte;
    for (const unsigned char c : {' ', '\t', '\r', '\n'}) classes[c] = SpaceByte;
    return classes;
}

constexpr std::array<std::uint8_t, 256> cByteClasses = makeByteClasses();

bool isOfClass(char c, ByteClass wanted)
{
    return (cByteClasses[static_cast<unsigned char>(c)] & wanted) != 0;
}

bool contains(const std::string& bytes, char c)
{
    return !bytes.empty() && std::memchr(bytes.data(), c, bytes.size()) != nullptr;
}

} // namespace

// Wraps around instead of overflowing: a line of gigabytes of tabs is no reason to stop.
void BufferReader::addColumns(unsigned int count)
{
    mColumn = static_cast<int>(static_cast<unsigned int>(mColumn) + count);
}

void BufferReader::skipChar(int count)
{
    if (count <= 0) return;
    if (static_cast<unsigned int>(count) > mLength - mPos) throw XmlException("EOF");

    for (const unsigned int end = mPos + static_cast<unsigned int>(count); mPos < end; ++mPos)
    {
        const char c = mData[mPos];
        if (c == '\n')
        {
            ++mLine;
            mColumn = 1;
        }
        else if (c == '\t')
            addColumns(4);
        else if (c != '\r')
            addColumns(1);
    }
}

char BufferReader::readChar()
{
    const char c = peek();
    if (c == '\r')
    {
        ++mPos;
        addColumns(1);
    }
    else
        skipChar(1);
    return c;
}

char BufferReader::peek(unsigned int ahead) const
{
    if (ahead >= mLength - mPos) throw XmlException("EOF");
    return mData[mPos + ahead];
}

std::string BufferReader::readText(const std::string& stops)
{
    return readUntil(stops, false);
}

std::string BufferReader::readLine(const std::string& stops)
{
    return readUntil(stops, true);
}

// Copies in runs: a run ends at a byte that is not copied as it is.
std::string BufferReader::readUntil(const std::string& stops, bool newlineStops)
{
    std::string text;
    unsigned int start = mPos;
    const auto copyRun = [&] {
        text.append(mData + start, mPos - start);
        start = mPos + 1;
    };

    for (; mPos < mLength; ++mPos)
    {
        const char c = mData[mPos];
        if (contains(stops, c)) break;
        if (c == '\n')
        {
            if (newlineStops) break;
            ++mLine;
            mColumn = 1;
        }
        else if (c == '\t')
        {
            copyRun();
            text.append("    ");
            addColumns(4);
        }
        else
        {
            if (c == '\r') copyRun();
            addColumns(1);
        }
    }
    text.append(mData + start, mPos - start);
    return text;
}

std::string BufferReader::readWord(const std::string& extra)
{
    const unsigned int start = mPos;
    while (mPos < mLength && (isOfClass(mData[mPos], WordByte) || contains(extra, mData[mPos]))) ++mPos;
    addColumns(mPos - start);
    return std::string(mData + start, mPos - start);
}

void BufferReader::skipWhitespace(int minimum)
{
    int skipped = 0;
    for (; mPos < mLength && isOfClass(mData[mPos], SpaceByte); ++mPos)
    {
        const char c = mData[mPos];
        if (c == '\n')
        {
            ++mLine;
            mColumn = 1;
            continue;
        }
        addColumns(c == '\t' ? 4 : 1);
        if (c != '\r') ++skipped;
    }
    if (skipped >= minimum) return;
    if (isAtEnd()) throw XmlException("Eof before enough spaces were found");
    throw XmlException("Not enough spaces!");
}

} // namespace Xml
