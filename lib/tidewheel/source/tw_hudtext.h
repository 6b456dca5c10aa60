#pragma once

#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

namespace Tidewheel
{

// Numbers as the displays write them. The longest is a float of forty digits.
__attribute__((format(printf, 1, 2))) inline std::string formatText(const char* format, ...)
{
    char text[128];
    va_list arguments;
    va_start(arguments, format);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::vsnprintf(text, sizeof(text), format, arguments);
#pragma GCC diagnostic pop
    va_end(arguments);
    return text;
}

// A float without its fraction. Scripts may hold any number: what no int can hold becomes the nearest that can be
// held with room for a sum, and what is no number becomes the lowest, which lies outside every canvas.
inline int truncate(float value)
{
    const float limit = static_cast<float>(INT_MAX / 2 + 1);
    if (!(value > -limit)) return -(INT_MAX / 2 + 1);
    return value < limit ? static_cast<int>(value) : INT_MAX / 2 + 1;
}

// A number of things as the int that rows and parts are counted in.
inline int size(std::size_t count)
{
    return static_cast<int>(count);
}

// The parts of a clock that shows seconds, each whole.
inline int clockMinutes(float seconds)
{
    return truncate(seconds / 60.0f) % 60;
}
inline int clockSeconds(float seconds)
{
    return truncate(seconds) % 60;
}
inline int clockMilliseconds(float seconds)
{
    return truncate(seconds * 1000.0f) % 1000;
}

} // namespace Tidewheel
