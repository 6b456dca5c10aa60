#include "text.h"

#include <cstdio>

std::size_t utf8Length(const std::string& text, std::size_t position)
{
    const auto byte = [&](std::size_t i) {
        return position + i < text.size() ? static_cast<unsigned char>(text[position + i]) : 0u;
    };
    const unsigned int first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    for (std::size_t i = 1; i < length; ++i)
    {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    const unsigned int second = byte(1);
    if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F)) return 0;
    if ((first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F)) return 0;
    return length;
}

std::string quoted(const std::string& name)
{
    const std::size_t maxLength = 100;
    std::string text = "'";
    for (std::size_t i = 0; i < name.size();)
    {
        if (i >= maxLength) return text + "...'";
        const unsigned char byte = static_cast<unsigned char>(name[i]);
        const std::size_t length = utf8Length(name, i);
        const bool isControl =
            byte < 32 || byte == 127 || (byte == 0xC2 && static_cast<unsigned char>(name[i + 1]) < 0xA0);
        if (length != 0 && !isControl)
        {
            text.append(name, i, length);
            i += length;
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", byte);
        text += escape;
        ++i;
    }
    return text + "'";
}

std::string shown(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

std::string shown(const MathBase::Vector3f& value)
{
    return "(" + shown(value.x) + ", " + shown(value.y) + ", " + shown(value.z) + ")";
}

std::string shown(const MathBase::AABBpointsf& value)
{
    return shown(value.mMin) + " to " + shown(value.mMax);
}

std::string counted(std::size_t number, const char* one, const char* many)
{
    return std::to_string(number) + " " + (number == 1 ? one : many);
}
