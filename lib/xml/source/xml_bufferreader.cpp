#include "xml_bufferreader.h"

#include "xml_bytes.h"
#include "xml_exception.h"

#include <cstring>

namespace Xml
{

namespace
{

bool contains(std::string_view bytes, char c)
{
    return !bytes.empty() && std::memchr(bytes.data(), c, bytes.size()) != nullptr;
}

} // namespace

void BufferReader::skipChar(int count)
{
    if (count <= 0) return;
    if (static_cast<unsigned int>(count) > mLength - mPos) throwEof();

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

void BufferReader::throwEof()
{
    throw XmlException("EOF");
}

// One byte of readChar, which counts a carriage return as a column where skipChar does not.
void BufferReader::skipControl(char c)
{
    if (c == '\r')
        skipPlain(1);
    else
        skipChar(1);
}

std::string BufferReader::readText(const std::string& stops)
{
    std::string text;
    readUntil(
        text, [&stops](char c) { return contains(stops, c); }, false);
    return text;
}

std::string BufferReader::readLine(const std::string& stops)
{
    std::string text;
    readUntil(
        text, [&stops](char c) { return contains(stops, c); }, true);
    return text;
}

void BufferReader::readLineInto(std::string& text, char stop)
{
    text.clear();
    readUntil(
        text, [stop](char c) { return c == stop; }, true);
}

// Copies in runs, up to a byte that stops or is not copied as it is.
template <class IsStop> void BufferReader::readUntil(std::string& text, IsStop isStop, bool newlineStops)
{
    for (;;)
    {
        const char* const start = mData + mPos;
        const char* const end = mData + mLength;
        const char* at = start;
        while (at < end && !isStop(*at) && !isOfClass(*at, ShapedByte)) ++at;
        text.append(start, at);
        skipPlain(static_cast<unsigned int>(at - start));

        if (at == end || isStop(*at) || (newlineStops && *at == '\n')) return;
        if (*at == '\n')
            text += '\n';
        else if (*at == '\t')
            text += "    ";
        skipControl(*at);
    }
}

std::string BufferReader::readWord(const std::string& extra)
{
    return std::string(readWordView(extra));
}

std::string_view BufferReader::readWordView(std::string_view extra)
{
    const char* const start = mData + mPos;
    const char* const end = mData + mLength;
    const char* at = start;
    while (at < end && (isOfClass(*at, WordByte) || contains(extra, *at))) ++at;
    skipPlain(static_cast<unsigned int>(at - start));
    return std::string_view(start, static_cast<std::size_t>(at - start));
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
