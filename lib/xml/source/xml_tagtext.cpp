#include "xml_tagtext.h"

#include "xml_exception.h"

namespace Xml
{

namespace
{

void appendNameAndAttributes(std::string& text, const XmlTag& tag)
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

void appendPairs(std::string& text, const XmlTag& tag)
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

} // namespace

void appendTag(std::string& text, const XmlTag& tag, bool selfClose)
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

} // namespace Xml
