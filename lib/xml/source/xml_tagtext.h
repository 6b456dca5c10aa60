#pragma once

#include "xml_exception.h"
#include "xml_tag.h"

#include <cstddef>
#include <ostream>
#include <string>

namespace Xml
{

// How tags look as text. `Text` is whatever takes strings and characters by +=: a std::string, a stream, or a counter
// of the length to come.

template <class Text> void appendNameAndAttributes(Text& text, const XmlTag& tag)
{
    text += tag.mName;
    for (const XmlTag::Argument& argument : tag.mArguments)
    {
        text += ' ';
        text += argument.name;
        text += "=\"";
        text += argument.value;
        text += '"';
    }
}

template <class Text> void appendPairs(Text& text, const XmlTag& tag)
{
    const char* separator = "";
    for (const XmlTag::Argument& argument : tag.mArguments)
    {
        text += separator;
        text += argument.name;
        text += ' ';
        text += argument.value;
        separator = " ";
    }
}

// The tag and its newline.
template <class Text> void appendTag(Text& text, const XmlTag& tag, bool selfClose)
{
    switch (tag.mType)
    {
    case XmlTag::Normal:
        text += '<';
        appendNameAndAttributes(text, tag);
        text += tag.mClosed && selfClose ? "/>\n" : ">\n";
        return;
    case XmlTag::Comment:
        text += "<!--";
        text += tag.getValue("content");
        text += "-->\n";
        return;
    case XmlTag::SpecialQuestion:
        text += "<?";
        appendNameAndAttributes(text, tag);
        text += "?>\n";
        return;
    case XmlTag::SpecialExclaim:
        text += "<!";
        appendPairs(text, tag);
        text += ">\n";
        return;
    case XmlTag::Text:
        text += tag.getValue("content");
        text += '\n';
        return;
    }
    throw XmlException("XmlTag::write; Unknown tagtype!");
}

// The number of bytes that a text would have.
class TextLength
{
public:
    void operator+=(char) { ++mLength; }
    void operator+=(const char* part) { mLength += std::char_traits<char>::length(part); }
    void operator+=(const std::string& part) { mLength += part.size(); }
    std::size_t length() const { return mLength; }

private:
    std::size_t mLength = 0;
};

// A text on its way into a stream, in pieces of 64 KiB.
class StreamText
{
public:
    explicit StreamText(std::ostream& stream) : mStream(stream) {}

    template <class Part> void operator+=(const Part& part)
    {
        mPiece += part;
        if (mPiece.size() >= PIECE) pass();
    }

    // What is left, and the stream's own buffer.
    void finish()
    {
        pass();
        mStream.flush();
    }

private:
    static const std::size_t PIECE = 1 << 16; // bytes

    void pass()
    {
        mStream.write(mPiece.data(), static_cast<std::streamsize>(mPiece.size()));
        mPiece.clear();
    }

    std::ostream& mStream;
    std::string mPiece;
};

} // namespace Xml
