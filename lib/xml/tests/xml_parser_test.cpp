#include "xml_testing.h"

#include <gtest/gtest.h>

namespace
{

// What is read, where and with what message it fails, and where the tag began.
const struct
{
    std::string text;
    const char *place, *message, *tag;
} ERRORS[] = {
    {" \n\t", "line 2, col 5", "EOF", "1:1"},
    {"hello", "line 1, col 6", "EOF", "1:6"},
    {"<a/>", "line 1, col 5", "Root tag is closed!", "1:1"},
    {"<r>\n\t<a_b c=\"1\"/>\n</r>", "line 2, col 8", "'=' expected!", "1:4"},
    {std::string("<a \0>", 5), "line 1, col 5", "'=' expected!", "1:1"},
    {"<a\nb='x\n'>", "line 2, col 5", "You must close the value using '", "1:1"},
    {"<a b=\"\t\n\"", "line 1, col 11", "You must close the value using \"", "1:1"},
    {"<!---->", "line 1, col 6", "Xml: Ill formatted comment!", "1:1"},
    {"<!-- a --->", "line 1, col 10", "Xml: Ill formatted comment!", "1:1"},
    {"<!-- a --", "line 1, col 9", "EOF", "1:1"},
    {"<!>", "line 1, col 2", "EOF", "1:1"},
    {"<?xml a=1>", "line 1, col 10", "Xml: Ill formed <?xml?> tag, forgot to close it using '?>'?", "1:1"},
    {"<?xml ?a>", "line 1, col 7", "Xml: Ill formed <?xml?> tag", "1:1"},
    {"<!a b [>", "line 1, col 7", "Xml: Ill formed <!...> tag, unexpected byte 0x5b", "1:1"},
    {"<a><b></a>", "line 1, col 11", "EOF", "1:11"}, // </a> is a child of b
    {"<a>\n<b/>\n", "line 3, col 1", "EOF", "2:5"},
};

// What is read, and what is written of it with an indent of one dot.
const struct
{
    const char *text, *written;
} DOCUMENTS[] = {
    {"< a x=1 y='2' x=\"3\" ></ a >rest <", "<a x=\"3\" y=\"2\">\n</a>\n"},
    {"<a><b></b><b/><b / ></a>", "<a>\n.<b/>\n.<b/>\n.<b/>\n</a>\n"},
    {"<a></b><c></d></c></a>", "<a>\n.<b/>\n.<c>\n..<d/>\n.</c>\n</a>\n"}, // stray closing tags are children
    {"<a><b><b/><c/></a>", "<a>\n.<b/>\n.<c/>\n</a>\n"},                   // <b/> ends b
    {"<a><b/><?a?><c/></a>", "<a>\n.<b/>\n</a>\n"},
    {"<COMMENT><b/><!--x--><c/></COMMENT>", "<COMMENT>\n.<b/>\n</COMMENT>\n"},
    {"text<!--c--><!D e><?php?><?xml v=1?><a><b/></a>", "<?xml v=\"1\"?>\n\n<a>\n.<b/>\n</a>\n"},
    {"<?xml v=1 e=2?><?xml e=3 f=4?><a></a>", "<?xml v=\"1\" e=\"3\" f=\"4\"?>\n\n<a>\n</a>\n"},
    {"<a>\r\n  one\ttwo<!-- \t- --><?p q=r?><!W v><b/></a>",
     "<a>\n.one    two\n.<!-- \t- -->\n.<?p q=\"r\"?>\n.<!W v>\n.<b/>\n</a>\n"},
    {"<a b=\"&amp;\">&lt;</a>", "<a b=\"&amp;\">\n.&lt;\n</a>\n"},
    {"<a>\n\tx\n</a>", "<a>\n.x\n\n</a>\n"}, // text takes the space behind it along
};

const std::string GOOD = "<?xml version='1.0'?>\n<!DOCTYPE show>\n<!-- - -->\n<show:all a=1 b=\"\t2\">\n\ttext"
                         "<!-- c --><one/>\r\n<two x='y'><three></three></two></none></show:all>";

} // namespace

TEST(Parser, errorsTellWhatAndWhere)
{
    for (const auto& [text, place, message, tag] : ERRORS)
    {
        Xml::XmlParser parser;
        EXPECT_EQ(parseError(parser, text),
                  std::string("(error at ") + place + "); " + message + " (when reading tag at " + tag + ")");
    }
}

TEST(Parser, documentsAreReadAndWrittenAgain)
{
    for (const auto& document : DOCUMENTS)
    {
        Xml::XmlParser parser;
        EXPECT_EQ(parseError(parser, document.text), "");
        EXPECT_EQ(written(parser, "."), document.written);
        EXPECT_TRUE(plainTagsAgree(document.text));
    }
}

TEST(Parser, everyPrefixOfADocumentEndsInAnError)
{
    for (std::size_t length = 0; length <= GOOD.size(); ++length)
    {
        Xml::XmlParser parser;
        const std::string error = parseError(parser, GOOD.substr(0, length));
        EXPECT_EQ(error.find("); EOF (when") != std::string::npos, length < GOOD.size()) << error;
    }
}

// What was read before the error can be written like any other document.
TEST(Parser, anyDamagedByteIsReadOrReported)
{
    for (std::size_t place = 0; place < GOOD.size(); ++place)
    {
        for (const char byte : {'\0', '<', '>', '/', '"', '\'', '-', '=', '!', '?', ' ', '\n', '\xff'})
        {
            std::string text = GOOD;
            text[place] = byte;
            Xml::XmlParser parser;
            const std::string error = parseError(parser, text);
            EXPECT_TRUE(error.empty() || error.rfind("(error at line ", 0) == 0) << error;
            EXPECT_NE(written(parser).find("</" + parser.mName + ">\n"), std::string::npos);
            EXPECT_TRUE(plainTagsAgree(text)) << text;
        }
    }
}

TEST(Parser, nestingOfAnyDepthIsReadWrittenAndFreed)
{
    const int depth = 300000;
    std::string text;
    for (int i = 0; i < depth; ++i) text += "<a>\n";
    text += "<b/>\n";
    for (int i = 0; i < depth; ++i) text += "</a>\n";
    Xml::XmlParser parser;
    parser.parse(text);
    EXPECT_TRUE(written(parser, "") == text);
    parser.clear();
    EXPECT_EQ(parseError(parser, text.substr(0, 4 * depth)),
              "(error at line 300001, col 1); EOF (when reading tag at 300000:4)");
}

TEST(Parser, manyAttributesOfOneTagKeepTheirOrder)
{
    std::string text = "<r><a", expected;
    for (const char* value : {"x", "y"})
        for (int i = 0; i < 50000; ++i) text += " n" + std::to_string(i) + "=" + value;
    for (int i = 0; i < 50000; ++i) expected += " n" + std::to_string(i) + "=\"y\"";
    Xml::XmlParser parser;
    parser.parse(text + "/></r>");
    EXPECT_TRUE(written(parser) == "<r>\n\t<a" + expected + "/>\n</r>\n");
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
    EXPECT_EQ(parseError(parser, "<a><a b=1/><?a?><c></c><a/> < / a ><d/></a>"), "");
    EXPECT_EQ(written(parser), "<a>\n\t<a b=\"1\"/>\n\t<?a?>\n\t<c/>\n\t<a/>\n</a>\n");
}
