#pragma once

#include "xml_bufferreader.h"
#include "xml_tag.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace Xml
{

// A tag in the form in which nearly all are written: <name a="1" b='2'>, <name/> or </name>, on one line, with nothing
// but spaces between its parts. Its strings are looked up in the buffer before any is copied, so that a tag takes no
// more room than it needs, and one that only closes another takes none. All other tags are left to XmlTag::parse.
class PlainTag
{
public:
    // Reads the next tag, which may have whitespace ahead of it, and moves `reader` behind it. False, with the position
    // as it was, if the tag has another form, or attributes that need a closer look.
    bool read(BufferReader& reader);

    // Makes `tag`, which is as its constructor left it, this one. The buffer must still be there.
    void copyTo(XmlTag& tag) const;

    std::string_view getName() const { return mName; }
    bool isClosed() const { return mIsClosing || mIsSelfClosed; }
    bool isClosing() const { return mIsClosing; } // begins with "</"

private:
    static const std::size_t MAX_ATTRIBUTES = 16; // no tag of a show has more than six

    struct Attribute
    {
        const char *name, *nameEnd, *value, *valueEnd;
    };

    const char* scan(const char* at, const char* end);
    const char* scanAttribute(const char* at, const char* end);
    bool isKnown(const Attribute& attribute) const;

    std::string_view mName;
    bool mIsClosing = false;
    bool mIsSelfClosed = false;
    std::size_t mCount = 0;
    std::array<Attribute, MAX_ATTRIBUTES> mAttributes;
};

} // namespace Xml
