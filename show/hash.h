#pragma once

#include <cstdint>

namespace Show
{

// What the makers scatter things with: every bit of the result depends on every bit of `value`.
inline uint32_t scramble(uint32_t value)
{
    value ^= value >> 15;
    value *= 0x2C1B3C6Du;
    value ^= value >> 12;
    value *= 0x297A2D39u;
    return value ^ (value >> 15);
}

// The upper 24 bits as a number from 0 up to, not including, 1.
inline float unit(uint32_t value)
{
    return float(value >> 8) / 16777216.0f;
}

} // namespace Show
