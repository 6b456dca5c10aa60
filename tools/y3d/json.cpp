#include "json.h"

#include "text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{

std::string numeral(double number)
{
    if (!std::isfinite(number)) return "null";
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", number);
    return text;
}

bool isRow(const Json& list)
{
    return std::all_of(list.begin(), list.end(), [](const Json& item) { return item.is_number_float(); });
}

void print(const Json& value, int level)
{
    if (value.is_number_float())
    {
        std::fputs(numeral(value.get<double>()).c_str(), stdout);
        return;
    }
    if (!value.is_structured() || value.empty())
    {
        std::fputs(value.dump().c_str(), stdout);
        return;
    }
    const bool row = value.is_array() && isRow(value);
    std::putchar(value.is_array() ? '[' : '{');
    const char* separator = "";
    for (const auto& item : value.items())
    {
        std::fputs(separator, stdout);
        if (!row) std::printf("\n%*s", 2 * level + 2, "");
        if (value.is_object()) std::printf("%s: ", Json(item.key()).dump().c_str());
        print(item.value(), level + 1);
        separator = row ? ", " : ",";
    }
    if (!row) std::printf("\n%*s", 2 * level, "");
    std::putchar(value.is_array() ? ']' : '}');
}

} // namespace

Json jsonText(const std::string& bytes)
{
    std::string text;
    for (std::size_t i = 0; i < bytes.size();)
    {
        const std::size_t length = utf8Length(bytes, i);
        const unsigned char byte = static_cast<unsigned char>(bytes[i]);
        if (length != 0)
            text.append(bytes, i, length);
        else
            text += {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3F))};
        i += std::max<std::size_t>(length, 1);
    }
    return text;
}

void printJson(const Json& value)
{
    print(value, 0);
    std::putchar('\n');
}
