#pragma once

#include "xml_parser.h"

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
