#pragma once

#include "xml_parser.h"
#include "xml_plaintag.h"

#include <array>
#include <memory>
#include <string>

// The text of the XmlException that `action` throws; empty if it throws none.
template <class Action> std::string messageOf(Action action)
{
    try
    {
        action();
        return "";
    }
    catch (const Xml::XmlException& error)
    {
        return error.what();
    }
}

// A copy in a heap block of its exact length: a byte read behind it is an error under the address sanitizer.
inline std::unique_ptr<char[]> exactBlock(const std::string& text)
{
    std::unique_ptr<char[]> block(new char[text.size()]);
    text.copy(block.get(), text.size());
    return block;
}

// What parsing `text` reports; empty if it succeeds.
inline std::string parseError(Xml::XmlParser& parser, const std::string& text)
{
    return messageOf([&] { parser.parse(exactBlock(text).get(), static_cast<int>(text.size())); });
}

inline std::string written(const Xml::XmlParser& parser, const std::string& indent = "\t")
{
    std::string text = "to be replaced";
    parser.write(text, indent);
    return text;
}

// Goes through `text` tag by tag: where the short way for plain tags reads one, the long way reads the same.
inline bool plainTagsAgree(const std::string& text)
{
    const auto block = exactBlock(text);
    Xml::BufferReader reader(block.get(), static_cast<unsigned int>(text.size()));
    const auto positionOf = [](const Xml::BufferReader& at) {
        return std::array<long, 5>{at.mPos, at.mLine, at.mColumn, at.mTagLine, at.mTagColumn};
    };
    const auto textOf = [](const Xml::XmlTag& tag) {
        std::string all = std::to_string(tag.mType) + (tag.mClosed ? "closed" : "open") + tag.mName;
        for (const auto& argument : tag.mArguments) all += "\n" + argument.name + "\n" + argument.value;
        return all;
    };
    Xml::PlainTag plain;
    for (;;)
    {
        Xml::BufferReader shortWay = reader;
        const bool isPlain = plain.read(shortWay);
        Xml::XmlTag tag, shortTag;
        if (!messageOf([&] { tag.parse(reader); }).empty()) return !isPlain;
        if (!isPlain) continue;
        plain.copyTo(shortTag);
        if (textOf(tag) != textOf(shortTag) || positionOf(reader) != positionOf(shortWay)) return false;
    }
}
