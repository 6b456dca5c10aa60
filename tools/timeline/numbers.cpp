#include "numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace Timeline
{

namespace
{

// Names are compared up to here.
const std::size_t LONGEST = 64;

} // namespace

double readDouble(const std::string& text)
{
    return std::atof(text.c_str());
}

float readFloat(const std::string& text)
{
    return static_cast<float>(readDouble(text));
}

int readInt(const std::string& text)
{
    return std::atoi(text.c_str());
}

bool isNumber(const std::string& text)
{
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || !std::isfinite(static_cast<float>(number))) return false;
    while (*end == ' ') ++end;
    return end == text.c_str() + text.size();
}

bool isWholeNumber(const std::string& text)
{
    char* end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str() || number != static_cast<int>(number)) return false;
    while (*end == ' ') ++end;
    return end == text.c_str() + text.size();
}

std::string shortest(float number)
{
    if (number == 0.0f) return "0"; // also for -0
    char text[64];
    const float size = std::fabs(number);
    const bool isPlain = size >= 1e-5f && size < 1e9f;
    const std::to_chars_result result = isPlain
                                            ? std::to_chars(text, text + sizeof text, number, std::chars_format::fixed)
                                            : std::to_chars(text, text + sizeof text, number);
    const std::string written(text, result.ptr);
    // Text is read as a double and then rounded to a single, twice rounded; 9 digits are always enough for that too.
    if (!std::isfinite(number) || readFloat(written) == number) return written;
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(number));
    return text;
}

std::string readable(double number)
{
    char text[64];
    std::snprintf(text, sizeof text, std::fabs(number) < 1e15 ? "%.3f" : "%.6g", number);
    std::string result = text;
    if (result.find('.') != std::string::npos && result.find('e') == std::string::npos)
    {
        while (result.back() == '0') result.pop_back();
        if (result.back() == '.') result.pop_back();
    }
    return result == "-0" ? "0" : result;
}

int distance(std::string_view a, std::string_view b)
{
    a = a.substr(0, LONGEST);
    b = b.substr(0, LONGEST);
    std::vector<int> before, last(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) last[j] = static_cast<int>(j);
    for (std::size_t i = 1; i <= a.size(); ++i)
    {
        row[0] = static_cast<int>(i);
        for (std::size_t j = 1; j <= b.size(); ++j)
        {
            const int replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = last;
        std::swap(last, row);
    }
    return last[b.size()];
}

} // namespace Timeline
