#include "xml_testing.h"

#include <gtest/gtest.h>

namespace
{

const struct
{
    const char* name;
    std::string text;
    const char* message;
} cErrors[] = {
    {"nothing", "", "(error at line 1, col 1); EOF (when reading tag at 1:1)"},
    {"space alone", " \n\t", "(error at line 2, col 5); EOF (when reading tag at 1:1)"},
    {"bracket alone", "<", "(error at line 1, col 2); EOF (when reading tag at 1:1)"},
    {"text alone", "hello", "(error at line 1, col 6); EOF (when reading tag at 1:6)"},
    {"name cut off", "<ab", "(error at line 1, col 4); EOF (when reading tag at 1:1)"},
    {"root closed by itself", "<a/>", "(error at line 1, col 5); Root tag is closed! (when reading tag at 1:1)"},
    {"root a closing tag", "\n</a>", "(error at line 2, col 5); Root tag is closed! (when reading tag at 1:1)"},
    {"bare word with a point", "<a b=1.5>", "(error at line 1, col 8); '=' expected! (when reading tag at 1:1)"},
    {"attribute without a value", "<a b>", "(error at line 1, col 6); '=' expected! (when reading tag at 1:1)"},
    {"underscore in a name", "<r>\n\t<a_b c=\"1\"/>\n</r>",
     "(error at line 2, col 8); '=' expected! (when reading tag at 1:4)"},
    {"zero byte in a tag", std::string("<a \0>", 5),
     "(error at line 1, col 5); '=' expected! (when reading tag at 1:1)"},
    {"value over a line end", "<a\nb='x\n'>",
     "(error at line 2, col 5); You must close the value using ' (when reading tag at 1:1)"},
    {"value not closed", "<a b=\"x", "(error at line 1, col 8); EOF (when reading tag at 1:1)"},
    {"tab in a value counts four", "<a b=\"\t\n\"",
     "(error at line 1, col 11); You must close the value using \" (when reading tag at 1:1)"},
    {"empty comment", "<!---->", "(error at line 1, col 6); Xml: Ill formatted comment! (when reading tag at 1:1)"},
    {"comment ending in a dash", "<!-- a --->",
     "(error at line 1, col 10); Xml: Ill formatted comment! (when reading tag at 1:1)"},
    {"comment not closed", "<!-- a --", "(error at line 1, col 9); EOF (when reading tag at 1:1)"},
    {"exclamation cut off", "<!>", "(error at line 1, col 2); EOF (when reading tag at 1:1)"},
    {"question mark missing", "<?xml a=1>",
     "(error at line 1, col 10); Xml: Ill formed <?xml?> tag, forgot to close it using '?>'? (when reading tag at "
     "1:1)"},
    {"question mark inside", "<?xml ?a>",
     "(error at line 1, col 7); Xml: Ill formed <?xml?> tag (when reading tag at 1:1)"},
    {"question mark at the end", "<?xml ?", "(error at line 1, col 7); EOF (when reading tag at 1:1)"},
    {"no progress in an exclamation", "<!a b [>",
     "(error at line 1, col 7); Xml: Ill formed <!...> tag, unexpected byte 0x5b (when reading tag at 1:1)"},
    {"closing tag of another name", "<a><b></a>", "(error at line 1, col 11); EOF (when reading tag at 1:11)"},
    {"closing tag missing", "<a>\n<b/>\n", "(error at line 3, col 1); EOF (when reading tag at 2:5)"},
};

const struct
{
    const char* name;
    const char* text;
    const char* rewritten;
} cDocuments[] = {
    {"attributes keep their first place", "< a x=1 y='2' x=\"3\" ></ a >rest <", "<a x=\"3\" y=\"2\">\n</a>\n"},
    {"closed child forms", "<a><b></b><b/><b / ></a>", "<a>\n\t<b/>\n\t<b/>\n\t<b/>\n</a>\n"},
    {"stray closing tag is a child", "<a></b><c></d></c></a>", "<a>\n\t<b/>\n\t<c>\n\t\t<d/>\n\t</c>\n</a>\n"},
    {"closed child of its parent's name ends it", "<a><b><b/><c/></a>", "<a>\n\t<b/>\n\t<c/>\n</a>\n"},
    {"question tag of its parent's name ends it", "<a><b/><?a?><c/></a>", "<a>\n\t<b/>\n</a>\n"},
    {"comment inside COMMENT ends it", "<COMMENT><b/><!--x--><c/></COMMENT>", "<COMMENT>\n\t<b/>\n</COMMENT>\n"},
    {"nothing before the root stays but xml", "text<!--c--><!D e><?php?><?xml v=1?><a><b/></a>",
     "<?xml v=\"1\"?>\n\n<a>\n\t<b/>\n</a>\n"},
    {"xml tags merge", "<?xml v=1 e=2?><?xml e=3 f=4?><a></a>", "<?xml v=\"1\" e=\"3\" f=\"4\"?>\n\n<a>\n</a>\n"},
    {"all kinds inside the root stay", "<a>\r\n  one\ttwo<!-- \t- --><?p q=r?><!W v><b/></a>",
     "<a>\n\tone    two\n\t<!-- \t- -->\n\t<?p q=\"r\"?>\n\t<!W v>\n\t<b/>\n</a>\n"},
    {"no entities", "<a b=\"&amp;\">&lt;</a>", "<a b=\"&amp;\">\n\t&lt;\n</a>\n"},
    {"text takes the space behind it along", "<a>\n\tx\n</a>", "<a>\n\tx\n\n</a>\n"},
};

const std::string cGood = "<?xml version='1.0'?>\n<!DOCTYPE show>\n<!-- - -->\n<show:all a=1 b=\"\t2\">\n\ttext"
                          "<!-- c --><one/>\r\n<two x='y'><three></three></two></none></show:all>";

} // namespace

TEST(Parser, errorsTellWhatAndWhere)
{
    for (const auto& error : cErrors) EXPECT_EQ(parseError(error.text), error.message) << error.name;
}

TEST(Parser, documentsAreReadAndWrittenAgain)
{
    for (const auto& document : cDocuments)
    {
        EXPECT_EQ(rewritten(document.text), document.rewritten) << document.name;
    }
}

TEST(Parser, everyPrefixOfADocumentEndsInAnError)
{
    for (std::size_t length = 0; length < cGood.size(); ++length)
    {
        const std::string error = parseError(cGood.substr(0, length));
        EXPECT_NE(error.find("); EOF (when"), std::string::npos) << length << ": " << error;
    }
    EXPECT_EQ(parseError(cGood), "");
}

// What was read before the error can be written like any other document.
TEST(Parser, anyDamagedByteIsReadOrReported)
{
    for (std::size_t place = 0; place < cGood.size(); ++place)
    {
        for (const char byte : {'\0', '<', '>', '/', '"', '\'', '-', '=', '!', '?', ' ', '\n', '\xff'})
        {
            std::string text = cGood;
            text[place] = byte;
            Xml::XmlParser parser;
            const std::string error = parseError(parser, text);
            EXPECT_TRUE(error.empty() || error.rfind("(error at line ", 0) == 0) << error;
            EXPECT_NE(written(parser).find("</" + parser.mName + ">\n"), std::string::npos);
        }
    }
}

TEST(Parser, nestingOfAnyDepthIsReadWrittenAndFreed)
{
    const int depth = 300000;
    std::string text;
    for (int i = 0; i < depth; ++i) text += "<a>\n";
    EXPECT_EQ(parseError(text), "(error at line 300001, col 1); EOF (when reading tag at 300000:4)");
    text += "<b/>\n";
    for (int i = 0; i < depth; ++i) text += "</a>\n";
    Xml::XmlParser parser;
    parser.parse(text);
    EXPECT_EQ(written(parser, ""), text);
}

TEST(Parser, manyAttributesOfOneTagKeepTheirOrder)
{
    const int count = 100000;
    std::string text = "<r><a";
    for (int i = 0; i < count; ++i) text += " n" + std::to_string(i) + "=x";
    for (int i = 0; i < count; ++i) text += " n" + std::to_string(i) + "=" + std::to_string(i);
    text += "/></r>";
    Xml::XmlParser parser;
    parser.parse(text);
    const auto& arguments = parser.getChildren(0)->mArguments;
    ASSERT_EQ(arguments.size(), 100000u);
    for (int i = 0; i < count; i += 999)
    {
        EXPECT_EQ(arguments[static_cast<std::size_t>(i)].name, "n" + std::to_string(i));
        EXPECT_EQ(arguments[static_cast<std::size_t>(i)].value, std::to_string(i));
    }
}

TEST(Parser, readsOnceUntilItIsCleared)
{
    Xml::XmlParser parser;
    EXPECT_EQ(parseError(parser, "<?xml v=1?><a b="), "(error at line 1, col 17); EOF (when reading tag at 1:12)");
    EXPECT_EQ(parseError(parser, "<a><b/>"), "(error at line 1, col 8); EOF (when reading tag at 1:8)");
    EXPECT_EQ(parser.getNumChildren(), 1); // what was read stays
    EXPECT_EQ(parseError(parser, "<a></a>"), "(error at line 1, col 1); Parser has already parsed a xml-file, "
                                             "use clear() first! (when reading tag at -1:-1)");
    parser.clear();
    EXPECT_EQ(parseError(parser, "<c></c>"), "");
    EXPECT_EQ(written(parser), "<?xml v=\"1\"?>\n\n<c>\n</c>\n");
}

TEST(Parser, closedChildOfItsParentsNameCanBeKept)
{
    Xml::XmlParser parser;
    parser.mOnlyClosingTagEnds = true;
    EXPECT_EQ(parseError(parser, "<a><a b=1/>< / a ><a/></a>"), "");
    EXPECT_EQ(written(parser), "<a>\n\t<a b=\"1\"/>\n</a>\n");
    parser.clear();
    EXPECT_EQ(parseError(parser, "<a><a b=1/><?a?><c></c><a/></a> rest"), "");
    EXPECT_EQ(written(parser), "<a>\n\t<a b=\"1\"/>\n\t<?a?>\n\t<c/>\n\t<a/>\n</a>\n");
}

TEST(Parser, longMessagesAreCut)
{
    Xml::XmlNode node(nullptr);
    node.setName(std::string(5000, 'n'));
    EXPECT_EQ(messageOf([&] { node.detachChild(nullptr); }).size(), 2047u);
}
