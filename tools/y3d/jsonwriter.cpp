#include "jsonwriter.h"

#include "text.h"

#include <cmath>
#include <cstdio>

namespace
{

std::string escaped(const std::string& text)
{
    std::string result = "\"";
    for (std::size_t i = 0; i < text.size();)
    {
        const std::size_t length = utf8Length(text, i);
        const unsigned char byte = static_cast<unsigned char>(text[i]);
        if (length == 0 || byte < 32 || byte == 127 || byte == '"' || byte == '\\')
        {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04X", byte);
            result += escape;
            ++i;
            continue;
        }
        result.append(text, i, length);
        i += length;
    }
    return result + "\"";
}

// JSON has no infinity and nothing that is not a number.
std::string numeral(float number)
{
    if (!std::isfinite(number)) return "null";
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", number);
    return text;
}

} // namespace

JsonWriter& JsonWriter::key(const std::string& name)
{
    separate();
    std::printf("%s: ", escaped(name).c_str());
    mAfterKey = true;
    return *this;
}

void JsonWriter::value(const std::string& text)
{
    print(escaped(text));
}

void JsonWriter::value(float number)
{
    print(numeral(number));
}

void JsonWriter::values(const std::vector<float>& numbers)
{
    std::string text;
    for (const float number : numbers) text += (text.empty() ? "" : ", ") + numeral(number);
    print("[" + text + "]");
}

void JsonWriter::open(char bracket)
{
    separate();
    std::putchar(bracket);
    mHasItems.push_back(false);
}

void JsonWriter::close(char bracket)
{
    const bool hadItems = mHasItems.back();
    mHasItems.pop_back();
    if (hadItems) std::printf("\n%*s", static_cast<int>(2 * mHasItems.size()), "");
    std::putchar(bracket);
    if (mHasItems.empty()) std::putchar('\n');
}

void JsonWriter::print(const std::string& text)
{
    separate();
    std::fputs(text.c_str(), stdout);
}

void JsonWriter::separate()
{
    if (mAfterKey)
    {
        mAfterKey = false;
        return;
    }
    if (mHasItems.empty()) return;
    std::printf(mHasItems.back() ? ",\n" : "\n");
    std::printf("%*s", static_cast<int>(2 * mHasItems.size()), "");
    mHasItems.back() = true;
}
