#pragma once

#include "xml_parser.h"

#include <memory>
#include <string>

// A text in a heap block of its exact length: a byte read behind it is an error under the address sanitizer.
class ExactBlock
{
public:
    explicit ExactBlock(const std::string& text) : mBytes(new char[text.size()]), mLength(text.size())
    {
        text.copy(mBytes.get(), mLength);
    }

    const char* data() const { return mBytes.get(); }
    int length() const { return static_cast<int>(mLength); }

private:
    std::unique_ptr<char[]> mBytes;
    std::size_t mLength;
};

// What parsing `text` reports; empty if it succeeds.
inline std::string parseError(Xml::XmlParser& parser, const std::string& text)
{
    const ExactBlock block(text);
    try
    {
        parser.parse(block.data(), block.length());
        return "";
    }
    catch (const Xml::XmlException& error)
    {
        return error.what();
    }
}

inline std::string parseError(const std::string& text)
{
    Xml::XmlParser parser;
    return parseError(parser, text);
}

inline std::string written(const Xml::XmlParser& parser, const std::string& indent = "\t")
{
    std::string text = "to be replaced";
    parser.write(text, indent);
    return text;
}

// `text` read and written again.
inline std::string rewritten(const std::string& text)
{
    Xml::XmlParser parser;
    const std::string error = parseError(parser, text);
    return error.empty() ? written(parser) : error;
}

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
