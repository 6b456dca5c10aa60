#include "xml_parser.h"

#include "xml_attributes.h"
#include "xml_plaintag.h"
#include "xml_tagtext.h"

#include <climits>
#include <memory>
#include <utility>
#include <vector>

namespace Xml
{

namespace
{

const std::size_t FIRST_CHILDREN = 4; // room that a node gets for them

// The children of `root` and its closing tag. An explicit list of open levels stands in for recursion.
template <class Text> void writeRecurse(Text& text, const XmlNode& root, const std::string& indent)
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
            if (child->mClosed) continue;
            levels.push_back({child, 0});
            indentation += indent;
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
    }
}

template <class Text> void writeDocument(Text& text, const XmlParser& document, const std::string& indent)
{
    if (document.mXmlTag.mName == "xml")
    {
        appendTag(text, document.mXmlTag, true);
        text += '\n';
    }
    appendTag(text, document, false);
    writeRecurse(text, document, indent);
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
            for (Argument& argument : tag.mArguments) merged.valueOf(argument.name) = std::move(argument.value);
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
    PlainTag plain;
    while (node)
    {
        std::unique_ptr<XmlNode> child;
        bool isEnd;
        if (plain.read(reader))
        {
            isEnd = plain.isClosed() && plain.getName() == node->mName && (!mOnlyClosingTagEnds || plain.isClosing());
            if (!isEnd)
            {
                child = std::make_unique<XmlNode>(nullptr);
                plain.copyTo(*child);
            }
        }
        else
        {
            const BufferReader before = reader;
            child = std::make_unique<XmlNode>(nullptr);
            child->parse(reader);
            isEnd =
                child->mClosed && child->mName == node->mName && (!mOnlyClosingTagEnds || isBeforeClosingTag(before));
        }
        if (isEnd)
        {
            if (node->mChildren.empty()) node->mClosed = true;
            node = node == this ? nullptr : node->mParent;
            continue;
        }
        if (node->mChildren.empty()) node->mChildren.reserve(FIRST_CHILDREN);
        node->mChildren.push_back(child.get());
        node->mClosed = false;
        child->mParent = node;
        XmlNode* const added = child.release();
        if (!added->mClosed) node = added;
    }
}

void XmlParser::write(std::ostream& stream, const std::string& indent) const
{
    StreamText text(stream);
    writeDocument(text, *this, indent);
    text.finish();
}

// Measured first: a text of megabytes that grows by doubling costs more in fresh pages than in writing, and a tree so
// deep that its indentation fills the memory is refused before it does.
void XmlParser::write(std::string& text, const std::string& indent) const
{
    TextLength length;
    writeDocument(length, *this, indent);
    if (length.length() > INT_MAX)
        throw XmlException("XmlParser::write, Text is too long (%zu bytes)", length.length());

    text.clear();
    text.reserve(length.length());
    writeDocument(text, *this, indent);
}

} // namespace Xml
