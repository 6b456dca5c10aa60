#pragma once

#include "xml_bufferreader.h"
#include "xml_exception.h"
#include "xml_node.h"

#include <iosfwd>
#include <string>

namespace Xml
{

// A document: the object is the root tag itself. It reads and writes a small dialect of its own: no entities, no
// namespaces, no character sets, names of letters and digits, values on one line. docs/script.md shows it by example.
class XmlParser : public XmlNode
{
public:
    XmlParser();

    // Reads a document. Throws XmlException with the position in the text, in lines and columns from 1. What was read
    // before a failure stays; clear() makes the object ready for another parse.
    void parse(const std::string& text);
    void parse(const char* data, int length);

    // As above, but the exceptions do not tell the position; it can be read from `reader`.
    void parse(BufferReader& reader);

    // Writes the document with `indent` once for each level.
    void write(std::ostream& stream, const std::string& indent) const;

    // The same, replacing `text`. Throws when the text would be too long to be read back, at 2 GiB.
    void write(std::string& text, const std::string& indent) const;

    XmlTag mXmlTag; // the <?xml ...?> tag; without a name if the document has none. clear() leaves it.

    // What ends a tag when a document is read. False: any closed tag of its name, so that <a/> inside <a> ends the
    // outer one. True: only </a>, which a document needs that nests tags of one name.
    bool mOnlyClosingTagEnds = false;

private:
    void parseRecurse(BufferReader& reader);
};

} // namespace Xml
