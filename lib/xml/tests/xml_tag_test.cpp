#include "xml_number.h"
#include "xml_testing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <utility>

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
    const std::pair<double, const char*> cases[] = {
        {-0.0, "-0"},
        {0.1f, "0.1000000014901161193847656"},
        {1e24, "999999999999999983222784"},
        {static_cast<double>(3.4028235e38f), "3.402823466385288598117042e+38"},
    };
    XmlTag tag;
    for (const auto& [value, text] : cases)
    {
        tag.setValue("x", value);
        EXPECT_EQ(tag.getValue("x"), text);
    }
    tag.setValue("i", 0);
    tag.setValue("n", -2147483647 - 1);
    EXPECT_EQ(tag.getValue("i"), "0");
    EXPECT_EQ(tag.getValue("n"), "-2147483648");
    EXPECT_EQ(tag.mArguments.size(), 3u);
}

// A sample of all singles, and doubles of all sizes; xml_number_proof goes through every single.
TEST(XmlTag, numbersReadAsPrintfWritesThem)
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 100000; ++i)
    {
        const std::uint64_t bits = random();
        const std::uint32_t half = static_cast<std::uint32_t>(bits);
        float single;
        double value;
        std::memcpy(&single, &half, sizeof single);
        std::memcpy(&value, &bits, sizeof value);
        if (i % 3 == 1) value = static_cast<double>(single);
        if (i % 3 == 2) value = std::ldexp(static_cast<double>(bits >> 44), static_cast<int>(bits % 128) - 64);
        char expected[64];
        std::snprintf(expected, sizeof expected, "%.25g", value);
        Xml::NumberText text;
        ASSERT_EQ(Xml::formatNumber(value, text), expected);
    }
}

// Kind, closed or not, name, attributes and the place behind the tag.
TEST(XmlTag, parseReadsOneTagOfAnyKind)
{
    const std::pair<std::string, std::string> cases[] = {
        {" <a b=1 c='2\"' />x", "0 closed a b=1; c=2\"; 17"},
        {"< / a:b >", "0 closed a:b 9"},
        {"<a / b = 1 >", "0 closed a b=1; 12"},
        {"<a b=\"\tx\r\"/>", "0 closed a b=    x; 12"},
        {"<a b= c=\"\"/>", "0 closed a b=c; =; 12"},
        {"<!-- a -- \t\r\n-->", "1 closed COMMENT content= a -- \t\r\n; 16"},
        {"<?php a=b?>", "2 closed php a=b; 11"},
        {"<!DOCTYPE html \"x y\">", "3 closed SPECIAL_EXCLAIM DOCTYPE=html; =x y; 21"},
        {"\n\tone\t two \r\n<", "4 closed !!!text content=one     two \n; 13"},
    };
    XmlTag tag; // read into again and again
    for (const auto& [text, expected] : cases)
    {
        const auto block = exactBlock(text);
        Xml::BufferReader reader(block.get(), static_cast<unsigned int>(text.size()));
        tag.parse(reader);
        std::string read = std::to_string(tag.mType) + (tag.mClosed ? " closed " : " open ") + tag.mName + " ";
        for (const auto& argument : tag.mArguments) read += argument.name + "=" + argument.value + "; ";
        EXPECT_EQ(read + std::to_string(reader.mPos), expected);
    }
}
