#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace Xml
{

struct BufferReader;

// What getValue returns for a missing attribute.
extern const std::string emptyString;

// One tag of a document without its children: its kind, name and attributes. Comments and text between tags are tags
// too, so that a document that is read and written again keeps them.
class XmlTag
{
public:
    enum Type
    {
        Normal,          // <name ...>
        Comment,         // <!-- ... -->: mName is "COMMENT", the attribute "content" holds the text
        SpecialQuestion, // <?name ...?>
        SpecialExclaim,  // <!word value ...>: mName is "SPECIAL_EXCLAIM", one attribute for each word and value
        Text             // text between tags: mName is "!!!text", the attribute "content" holds the text
    };

    struct Argument
    {
        std::string name;
        std::string value;
    };

    // The value of the first attribute with exactly this name; emptyString if there is none. A missing attribute and an
    // empty one cannot be told apart.
    const std::string& getValue(const std::string& name) const;

    // Replaces the value of the first attribute with this name, or appends a new attribute: attributes stay in the
    // order in which they were first set. Numbers are stored as text: an int as "%0d", a double as "%.25g", which is
    // enough to get the same float back.
    void setValue(const std::string& name, const std::string& value);
    void setValue(const std::string& name, int value);
    void setValue(const std::string& name, double value);

    void setClosed(bool closed);
    void setName(const std::string& name);

    // Copies kind, closed flag, name and attributes.
    void setTag(const XmlTag& tag);

    // Reads one tag of any kind into this object, which is reset first. Failures are XmlException.
    void parse(BufferReader& reader);

    // Read the rest of a tag whose kind is known: `reader` stands behind the "<", or on the first byte of the text.
    void parseNormal(BufferReader& reader);
    void parseComment(BufferReader& reader);
    void parseSpecialQuestion(BufferReader& reader);
    void parseSpecialExclaim(BufferReader& reader);
    void parseText(BufferReader& reader);

    // Reads name="value", name='value' or name=word; without `equalsRequired` there is no "=" between the two.
    void parseAttribute(BufferReader& reader, bool equalsRequired);

    // Writes the tag and a newline. Values are written as they are, there is no escaping. A closed Normal tag ends in
    // "/>" if `selfClose` is set, in ">" otherwise.
    void write(std::ostream& stream, bool selfClose) const;

    Type mType = Normal;
    bool mClosed = true; // a Normal tag without children and closing tag; always true for other kinds
    std::string mName;
    std::vector<Argument> mArguments; // in the order of first appearance
};

} // namespace Xml
