#include "xml_testing.h"

#include <gtest/gtest.h>

#include <cmath>

using Xml::XmlTag;

TEST(XmlTag, firstOfTwoAttributesOfOneNameIsReadAndSet)
{
    XmlTag tag;
    tag.mArguments = {{"a", "1"}, {"b", "2"}, {"a", "3"}};
    EXPECT_EQ(tag.getValue("a"), "1");
    tag.setValue("a", "4");
    EXPECT_EQ(tag.mArguments[0].value, "4");
    EXPECT_EQ(tag.mArguments[2].value, "3");
    EXPECT_EQ(&tag.getValue("A"), &Xml::emptyString);
}

TEST(XmlTag, numbersBecomeText)
{
    const struct
    {
        double value;
        const char* text;
    } cases[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {-0.5, "-0.5"},
        {1.5, "1.5"},
        {0.1f, "0.1000000014901161193847656"},
        {16777216.0f, "16777216"},
        {1e24, "999999999999999983222784"},
        {1e25, "1.000000000000000090596966e+25"},
        {static_cast<double>(3.4028235e38f), "3.402823466385288598117042e+38"},
        {static_cast<double>(1.4e-45f), "1.40129846432481707092373e-45"},
        {INFINITY, "inf"},
        {-NAN, "-nan"},
    };
    XmlTag tag;
    for (const auto& number : cases)
    {
        tag.setValue("x", number.value);
        EXPECT_EQ(tag.getValue("x"), number.text);
    }
    tag.setValue("i", 0);
    tag.setValue("n", -2147483647 - 1);
    EXPECT_EQ(tag.getValue("i"), "0");
    EXPECT_EQ(tag.getValue("n"), "-2147483648");
    EXPECT_EQ(tag.mArguments.size(), 3u);
}

// A tag of its own, read into an object that was used before.
TEST(XmlTag, parseReadsOneTagOfAnyKind)
{
    const struct
    {
        const char* text;
        XmlTag::Type type;
        bool closed;
        const char* name;
        std::string attributes; // name=value;...
        unsigned int pos;       // behind the tag
    } cases[] = {
        {" <a b=1 c='2\"' />x", XmlTag::Normal, true, "a", "b=1;c=2\";", 17},
        {"< a:b >", XmlTag::Normal, false, "a:b", "", 7},
        {"< / a >", XmlTag::Normal, true, "a", "", 7},
        {"<a / b = 1 >", XmlTag::Normal, true, "a", "b=1;", 12},
        {"<a b=\"\tx\r\"/>", XmlTag::Normal, true, "a", "b=    x;", 12},
        {"<a b= c=\"\"/>", XmlTag::Normal, true, "a", "b=c;=;", 12},
        {"<!-- a -- \t\r\n-->", XmlTag::Comment, true, "COMMENT", "content= a -- \t\r\n;", 16},
        {"<?php a=b?>", XmlTag::SpecialQuestion, true, "php", "a=b;", 11},
        {"<!DOCTYPE html \"x y\">", XmlTag::SpecialExclaim, true, "SPECIAL_EXCLAIM", "DOCTYPE=html;=x y;", 21},
        {"\n\tone\t two \r\n<", XmlTag::Text, true, "!!!text", "content=one     two \n;", 13},
    };
    XmlTag tag;
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(expected.text);
        const ExactBlock block(expected.text);
        Xml::BufferReader reader(block.data(), static_cast<unsigned int>(block.length()));
        EXPECT_EQ(messageOf([&] { tag.parse(reader); }), "");
        EXPECT_EQ(tag.mType, expected.type);
        EXPECT_EQ(tag.mClosed, expected.closed);
        EXPECT_EQ(tag.mName, expected.name);
        std::string attributes;
        for (const auto& argument : tag.mArguments) attributes += argument.name + "=" + argument.value + ";";
        EXPECT_EQ(attributes, expected.attributes);
        EXPECT_EQ(reader.mPos, expected.pos);
    }
}
