#pragma once

#include <array>
#include <cstdint>

namespace Xml
{

// What a byte may be, as flags.
enum ByteClass : std::uint8_t
{
    WordByte = 1, // letters and digits as isalnum knows them in the C locale, whatever the locale is
    SpaceByte = 2,
    ShapedByte = 4, // is not copied into a text as it is, or ends a line
    QuoteByte = 8
};

constexpr std::array<std::uint8_t, 256> makeByteClasses()
{
    std::array<std::uint8_t, 256> classes{};
    for (unsigned int c = '0'; c <= '9'; ++c) classes[c] = WordByte;
    for (unsigned int c = 'A'; c <= 'Z'; ++c) classes[c] = WordByte;
    for (unsigned int c = 'a'; c <= 'z'; ++c) classes[c] = WordByte;
    for (const unsigned char c : {'\t', '\r', '\n'}) classes[c] = SpaceByte | ShapedByte;
    for (const unsigned char c : {'"', '\''}) classes[c] = QuoteByte;
    classes[' '] = SpaceByte;
    return classes;
}

inline constexpr std::array<std::uint8_t, 256> BYTE_CLASSES = makeByteClasses();

// The byte is of one of the `wanted` classes.
inline bool isOfClass(char c, int wanted)
{
    return (BYTE_CLASSES[static_cast<unsigned char>(c)] & wanted) != 0;
}

} // namespace Xml
