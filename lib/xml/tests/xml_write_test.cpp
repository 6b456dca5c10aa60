#include "xml_testing.h"

#include <gtest/gtest.h>

#include <sstream>

using Xml::XmlTag;

TEST(Write, everyKindOfTagHasItsForm)
{
    const struct
    {
        XmlTag::Type type;
        bool closed, selfClose;
        const char* text;
    } cases[] = {
        {XmlTag::Normal, true, true, "<n a=\"1\" content=\"&<\"x\"/>\n"},
        {XmlTag::Normal, true, false, "<n a=\"1\" content=\"&<\"x\">\n"},
        {XmlTag::Normal, false, true, "<n a=\"1\" content=\"&<\"x\">\n"},
        {XmlTag::Comment, true, true, "<!--&<\"x-->\n"},
        {XmlTag::SpecialQuestion, true, true, "<?n a=\"1\" content=\"&<\"x\"?>\n"},
        {XmlTag::SpecialExclaim, true, true, "<!a 1 content &<\"x>\n"},
        {XmlTag::Text, true, true, "&<\"x\n"},
    };
    XmlTag tag;
    tag.setName("n");
    tag.setValue("a", 1);
    tag.setValue("content", "&<\"x");
    for (const auto& form : cases)
    {
        tag.mType = form.type;
        tag.mClosed = form.closed;
        std::ostringstream stream;
        tag.write(stream, form.selfClose);
        EXPECT_EQ(stream.str(), form.text);
    }
    tag.mType = static_cast<XmlTag::Type>(5);
    std::ostringstream stream;
    EXPECT_EQ(messageOf([&] { tag.write(stream, true); }), "XmlTag::write; Unknown tagtype!");
}

TEST(Write, closedFlagDecidesWhetherChildrenAreWritten)
{
    Xml::XmlParser document;
    EXPECT_EQ(written(document), "<>\n</>\n");
    document.setName("r");
    XmlTag tag;
    tag.setName("a");
    document.addChild(tag, -1).addChild(tag);
    tag.setClosed(false);
    document.addChild(tag, -1);
    EXPECT_EQ(written(document, ".."), "<r>\n..<a>\n....<a/>\n..</a>\n..<a>\n..</a>\n</r>\n");
    document.getChildren(0)->setClosed(true);
    document.mXmlTag.setName("xm");
    EXPECT_EQ(written(document, ""), "<r>\n<a/>\n<a>\n</a>\n</r>\n");
}

TEST(Write, streamAndStringGetTheSameBytes)
{
    std::string text = "<r>\n";
    for (int i = 0; i < 5000; ++i) text += "\t<item number=\"" + std::to_string(i) + "\"/>\n";
    Xml::XmlParser document;
    document.parse(text += "</r>\n");
    std::ostringstream stream;
    document.write(stream, "\t");
    EXPECT_TRUE(stream.str() == text && written(document) == text);
}
