#include "xml_tag.h"

#include "xml_attributes.h"
#include "xml_bufferreader.h"
#include "xml_exception.h"
#include "xml_number.h"
#include "xml_tagtext.h"

#include <cstdio>
#include <string_view>

namespace Xml
{

const std::string emptyString;

namespace
{

// The next byte that is not whitespace, still unread.
char nextOrEof(BufferReader& reader)
{
    if (!reader.isAtEnd() && reader.peek() > ' ') return reader.peek();
    reader.skipWhitespace(0);
    return reader.peek();
}

// One attribute, added through `attributes`.
void readAttribute(BufferReader& reader, bool equalsRequired, AttributeSetter& attributes)
{
    const std::string_view name = reader.readWordView("");
    char first = nextOrEof(reader);
    if (equalsRequired)
    {
        if (reader.readChar() != '=') throw XmlException("'=' expected!");
        first = nextOrEof(reader);
    }
    std::string& value = attributes.valueOf(name);
    if (first != '"' && first != '\'')
    {
        value = reader.readWordView("");
        return;
    }
    reader.skipPlain(1);
    reader.readLineInto(value, first);
    if (reader.peek() != first) throw XmlException("You must close the value using %c", first);
    reader.skipPlain(1);
}

// The value of the first attribute of this name, which is appended with an empty value if there is none.
std::string& valueOf(std::vector<XmlTag::Argument>& arguments, const std::string& name)
{
    for (XmlTag::Argument& argument : arguments)
    {
        if (argument.name == name) return argument.value;
    }
    arguments.push_back({name, std::string()});
    return arguments.back().value;
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
    valueOf(mArguments, name) = value;
}

void XmlTag::setValue(const std::string& name, int value)
{
    char text[16];
    std::snprintf(text, sizeof(text), "%0d", value);
    valueOf(mArguments, name) = text;
}

void XmlTag::setValue(const std::string& name, double value)
{
    NumberText text;
    valueOf(mArguments, name) = formatNumber(value, text);
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
    StreamText text(stream);
    appendTag(text, *this, selfClose);
    text.finish();
}

} // namespace Xml
