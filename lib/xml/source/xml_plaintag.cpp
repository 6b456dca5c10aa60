#include "xml_plaintag.h"

#include "xml_bytes.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace Xml
{

namespace
{

const char* skipSpaces(const char* at, const char* end)
{
    while (at < end && *at == ' ') ++at;
    return at;
}

const char* skipWord(const char* at, const char* end)
{
    while (at < end && isOfClass(*at, WordByte)) ++at;
    return at;
}

// Eight bytes as a number, the first one lowest.
std::uint64_t loadEight(const char* at)
{
    std::uint64_t bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    return __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? __builtin_bswap64(bytes) : bytes;
}

// The highest bit of each byte that is `wanted` or below a blank. Above the lowest such byte others may be marked.
std::uint64_t markByteAndControls(std::uint64_t bytes, char wanted)
{
    const std::uint64_t each = 0x0101010101010101u, highest = each << 7;
    const std::uint64_t difference = bytes ^ (each * static_cast<unsigned char>(wanted));
    return (((difference - each) & ~difference) | ((bytes - each * ' ') & ~bytes)) & highest;
}

// Up to the quote or a byte that is not copied as it is.
const char* skipValue(const char* at, const char* end, char quote)
{
    for (;;)
    {
        while (end - at >= 8)
        {
            if (const std::uint64_t marks = markByteAndControls(loadEight(at), quote))
            {
                at += __builtin_ctzll(marks) / 8;
                break;
            }
            at += 8;
        }
        if (at == end || *at == quote || isOfClass(*at, ShapedByte)) return at;
        ++at;
    }
}

std::string_view viewOf(const char* from, const char* to)
{
    return std::string_view(from, static_cast<std::size_t>(to - from));
}

} // namespace

// A name that was there before: the last value wins then.
inline bool PlainTag::isKnown(const Attribute& attribute) const
{
    const std::ptrdiff_t size = attribute.nameEnd - attribute.name;
    for (std::size_t i = 0; i < mCount; ++i)
    {
        const Attribute& other = mAttributes[i];
        if (*other.name == *attribute.name && other.nameEnd - other.name == size &&
            std::memcmp(other.name, attribute.name, static_cast<std::size_t>(size)) == 0)
            return true;
    }
    return false;
}

inline const char* PlainTag::scanAttribute(const char* at, const char* end)
{
    if (mCount == MAX_ATTRIBUTES) return nullptr;
    Attribute& attribute = mAttributes[mCount];
    attribute.name = at;
    attribute.nameEnd = at = skipWord(at, end);
    if (end - at < 2 || *at != '=' || at == attribute.name) return nullptr;
    const char quote = at[1];
    if (!isOfClass(quote, QuoteByte)) return nullptr;
    attribute.value = at + 2;
    attribute.valueEnd = at = skipValue(at + 2, end, quote);
    if (at == end || *at != quote || isKnown(attribute)) return nullptr;
    ++mCount;
    return at + 1;
}

// From the "<" to behind the ">"; null if the tag is not plain.
inline const char* PlainTag::scan(const char* at, const char* end)
{
    mIsClosing = mIsSelfClosed = false;
    mCount = 0;
    if (end - at < 3 || *at != '<') return nullptr;
    ++at;
    if (*at == '/')
    {
        mIsClosing = true;
        ++at;
    }
    const char* const name = at;
    while (at < end && (isOfClass(*at, WordByte) || *at == ':')) ++at;
    if (at == name) return nullptr;
    mName = viewOf(name, at);
    while (at)
    {
        at = skipSpaces(at, end);
        if (at == end) return nullptr;
        if (*at == '>') return at + 1;
        if (*at == '/' && end - at > 1 && at[1] == '>')
        {
            mIsSelfClosed = true;
            return at + 2;
        }
        at = scanAttribute(at, end);
    }
    return nullptr;
}

bool PlainTag::read(BufferReader& reader)
{
    const BufferReader before = reader;
    reader.mTagLine = reader.mLine;
    reader.mTagColumn = reader.mColumn;
    reader.skipWhitespace(0);

    const char* const start = reader.mData + reader.mPos;
    const char* const behind = scan(start, reader.mData + reader.mLength);
    if (!behind)
    {
        reader = before;
        return false;
    }
    reader.skipPlain(static_cast<unsigned int>(behind - start));
    return true;
}

void PlainTag::copyTo(XmlTag& tag) const
{
    tag.mClosed = isClosed();
    tag.mName = mName;
    tag.mArguments.reserve(mCount);
    for (std::size_t i = 0; i < mCount; ++i)
    {
        const Attribute& attribute = mAttributes[i];
        tag.mArguments.push_back(
            {std::string(attribute.name, attribute.nameEnd), std::string(attribute.value, attribute.valueEnd)});
    }
}

} // namespace Xml
