#include "xml_tag.h"

#include "xml_attributes.h"
#include "xml_bufferreader.h"
#include "xml_exception.h"
#include "xml_tagtext.h"

#include <cstdio>
#include <ostream>
#include <utility>

namespace Xml
{

const std::string emptyString;

namespace
{

char nextOrEof(BufferReader& reader)
{
    reader.skipWhitespace(0);
    return reader.peek();
}

std::string readQuoted(BufferReader& reader)
{
    const char quote = reader.readChar();
    std::string value = reader.readLine(std::string(1, quote));
    if (reader.peek() != quote) throw XmlException("You must close the value using %c", quote);
    reader.skipChar(1);
    return value;
}

// One attribute, added through `attributes`.
void readAttribute(BufferReader& reader, bool equalsRequired, AttributeSetter& attributes)
{
    std::string name = reader.readWord("");
    reader.skipWhitespace(0);
    if (equalsRequired && reader.readChar() != '=') throw XmlException("'=' expected!");

    const char first = nextOrEof(reader);
    const bool isQuoted = first == '"' || first == '\'';
    attributes.set(std::move(name), isQuoted ? readQuoted(reader) : reader.readWord(""));
}

} // namespace

const std::string& XmlTag::getValue(const std::string& name) const
{
    for (const Argument& argument : mArguments)
    {
        if (argument.name == name) return argument.value;
    }
    return emptyString;
}

void XmlTag::setValue(const std::string& name, const std::string& value)
{
    for (Argument& argument : mArguments)
    {
        if (argument.name != name) continue;
        argument.value = value;
        return;
    }
    mArguments.push_back({name, value});
}

void XmlTag::setValue(const std::string& name, int value)
{
    char text[16];
    std::snprintf(text, sizeof(text), "%0d", value);
    setValue(name, std::string(text));
}

void XmlTag::setValue(const std::string& name, double value)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%.25g", value);
    setValue(name, std::string(text));
}

void XmlTag::setClosed(bool closed)
{
    mClosed = closed;
}

void XmlTag::setName(const std::string& name)
{
    mName = name;
}

void XmlTag::setTag(const XmlTag& tag)
{
    mType = tag.mType;
    mClosed = tag.mClosed;
    mName = tag.mName;
    mArguments = tag.mArguments;
}

void XmlTag::parse(BufferReader& reader)
{
    mType = Normal;
    mClosed = true;
    mName.clear();
    mArguments.clear();
    reader.mTagLine = reader.mLine;
    reader.mTagColumn = reader.mColumn;

    if (nextOrEof(reader) != '<')
    {
        parseText(reader);
        return;
    }
    reader.skipChar(1);

    const char mark = reader.peek();
    if (mark == '?')
    {
        parseSpecialQuestion(reader);
        return;
    }
    if (mark != '!')
    {
        parseNormal(reader);
        return;
    }
    const char first = reader.peek(1), second = reader.peek(2);
    if (first == '-' && second == '-')
        parseComment(reader);
    else
        parseSpecialExclaim(reader);
}

void XmlTag::parseText(BufferReader& reader)
{
    mType = Text;
    mName = "!!!text";
    setValue("content", reader.readText("<"));
}

void XmlTag::parseComment(BufferReader& reader)
{
    mType = Comment;
    mName = "COMMENT";
    reader.skipChar(3); // !--

    std::string content;
    for (;;)
    {
        const char c = reader.readChar();
        if (c == '-' && reader.peek() == '-' && reader.peek(1) == '>') break;
        content += c;
    }
    // The writer puts "-->" behind the text: a text that ends in "-" would not come back.
    if (content.empty() || content.back() == '-') throw XmlException("Xml: Ill formatted comment!");
    reader.skipChar(2); // ->
    setValue("content", content);
}

void XmlTag::parseSpecialQuestion(BufferReader& reader)
{
    mType = SpecialQuestion;
    mClosed = true;
    reader.skipChar(1); // ?
    mName = reader.readWord(">");

    AttributeSetter attributes(mArguments);
    for (;;)
    {
        const char next = nextOrEof(reader);
        if (next == '?')
        {
            if (reader.peek(1) != '>') throw XmlException("Xml: Ill formed <?xml?> tag");
            reader.skipChar(2);
            return;
        }
        if (next == '>') throw XmlException("Xml: Ill formed <?xml?> tag, forgot to close it using '?>'?");
        readAttribute(reader, true, attributes);
    }
}

void XmlTag::parseSpecialExclaim(BufferReader& reader)
{
    mType = SpecialExclaim;
    mName = "SPECIAL_EXCLAIM";
    reader.skipChar(1); // !

    AttributeSetter attributes(mArguments);
    for (;;)
    {
        const char next = nextOrEof(reader);
        if (next == '>')
        {
            reader.skipChar(1);
            return;
        }
        const unsigned int before = reader.mPos;
        readAttribute(reader, false, attributes);
        if (reader.mPos == before)
        {
            throw XmlException("Xml: Ill formed <!...> tag, unexpected byte 0x%02x", static_cast<unsigned char>(next));
        }
    }
}

void XmlTag::parseNormal(BufferReader& reader)
{
    mType = Normal;
    mClosed = false;
    reader.skipWhitespace(0);
    if (reader.isNext('/'))
    {
        mClosed = true;
        reader.skipChar(1);
        reader.skipWhitespace(0);
    }
    mName = reader.readWord(":");

    AttributeSetter attributes(mArguments);
    for (;;)
    {
        const char next = nextOrEof(reader);
        if (next == '/')
        {
            mClosed = true;
            reader.skipChar(1);
        }
        else if (next == '>')
        {
            reader.skipChar(1);
            return;
        }
        else
            readAttribute(reader, true, attributes);
    }
}

void XmlTag::parseAttribute(BufferReader& reader, bool equalsRequired)
{
    AttributeSetter attributes(mArguments);
    readAttribute(reader, equalsRequired, attributes);
}

void XmlTag::write(std::ostream& stream, bool selfClose) const
{
    std::string text;
    appendTag(text, *this, selfClose);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.flush();
}

} // namespace Xml
