#include "xml_parser.h"

#include "xml_attributes.h"
#include "xml_tagtext.h"

#include <climits>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

namespace Xml
{

namespace
{

// Texts go to a stream in pieces of about this size, in bytes.
const std::size_t cStreamPiece = 1 << 16;

// The children of `root` and its closing tag, appended to `text` line by line; `lineDone(text)` follows each line and
// may take away what stands there. An explicit list of open levels stands in for recursion.
template <class LineDone>
void writeRecurse(std::string& text, const XmlNode& root, const std::string& indent, LineDone lineDone)
{
    struct Level
    {
        const XmlNode* node;
        std::size_t next; // index of the child to write next
    };
    std::vector<Level> levels{{&root, 0}};
    std::string indentation = indent;
    while (!levels.empty())
    {
        Level& level = levels.back();
        if (level.next < level.node->mChildren.size())
        {
            const XmlNode* child = level.node->mChildren[level.next++];
            text += indentation;
            appendTag(text, *child, true);
            if (!child->mClosed)
            {
                levels.push_back({child, 0});
                indentation += indent;
            }
        }
        else
        {
            const XmlNode* node = level.node;
            levels.pop_back();
            indentation.resize(levels.size() * indent.size());
            text += indentation;
            text += "</";
            text += node->mName;
            text += ">\n";
        }
        lineDone(text);
    }
}

template <class LineDone>
void writeDocument(std::string& text, const XmlParser& document, const std::string& indent, LineDone lineDone)
{
    if (document.mXmlTag.mName == "xml")
    {
        appendTag(text, document.mXmlTag, true);
        text += '\n';
    }
    appendTag(text, document, false);
    lineDone(text);
    writeRecurse(text, document, indent, lineDone);
}

// `reader` stands before a tag that begins with "</".
bool isBeforeClosingTag(BufferReader reader)
{
    reader.skipWhitespace(0);
    if (!reader.isNext('<')) return false;
    reader.skipChar(1);
    reader.skipWhitespace(0);
    return reader.isNext('/');
}

} // namespace

XmlParser::XmlParser() : XmlNode(nullptr) {}

void XmlParser::parse(const std::string& text)
{
    if (text.size() > INT_MAX) throw XmlException("XmlParser::parse, Text is too long (%zu bytes)", text.size());
    parse(text.data(), static_cast<int>(text.size()));
}

void XmlParser::parse(const char* data, int length)
{
    if (length < 0) throw XmlException("XmlParser::parse, Negative length (%d)", length);
    BufferReader reader(data, static_cast<unsigned int>(length));
    try
    {
        parse(reader);
    }
    catch (const XmlException& error)
    {
        throw XmlException("(error at line %d, col %d); %s (when reading tag at %d:%d)", reader.mLine, reader.mColumn,
                           error.what(), reader.mTagLine, reader.mTagColumn);
    }
}

void XmlParser::parse(BufferReader& reader)
{
    if (!mName.empty()) throw XmlException("Parser has already parsed a xml-file, use clear() first!");

    AttributeSetter merged(mXmlTag.mArguments);
    XmlTag tag;
    for (tag.parse(reader); tag.mType != Normal; tag.parse(reader))
    {
        if (tag.mType != SpecialQuestion || tag.mName != "xml") continue;
        if (mXmlTag.mName.empty())
            mXmlTag.setTag(tag);
        else
            for (Argument& argument : tag.mArguments) merged.set(std::move(argument.name), std::move(argument.value));
    }
    if (tag.mClosed) throw XmlException("Root tag is closed!");
    setTag(tag);
    parseRecurse(reader);
}

// Fills the root until its closing tag. `node` is the innermost open tag; going back up by mParent keeps any depth of
// nesting off the stack.
void XmlParser::parseRecurse(BufferReader& reader)
{
    XmlNode* node = this;
    std::unique_ptr<XmlNode> tag;
    while (node)
    {
        if (!tag) tag = std::make_unique<XmlNode>(nullptr);
        const BufferReader before = reader;
        tag->parse(reader);
        if (tag->mClosed && tag->mName == node->mName && (!mOnlyClosingTagEnds || isBeforeClosingTag(before)))
        {
            if (node->mChildren.empty()) node->mClosed = true;
            node = node == this ? nullptr : node->mParent;
            continue;
        }
        node->mChildren.push_back(tag.get());
        node->mClosed = false;
        tag->mParent = node;
        XmlNode* child = tag.release();
        if (!child->mClosed) node = child;
    }
}

void XmlParser::write(std::ostream& stream, const std::string& indent) const
{
    std::string text;
    const auto pass = [&](std::string& piece) {
        stream.write(piece.data(), static_cast<std::streamsize>(piece.size()));
        piece.clear();
    };
    writeDocument(text, *this, indent, [&](std::string& piece) {
        if (piece.size() >= cStreamPiece) pass(piece);
    });
    pass(text);
    stream.flush();
}

void XmlParser::write(std::string& text, const std::string& indent) const
{
    text.clear();
    writeDocument(text, *this, indent, [](const std::string& written) {
        if (written.size() > INT_MAX)
            throw XmlException("XmlParser::write, Text is too long (more than %d bytes)", INT_MAX);
    });
}

} // namespace Xml
