#include "xml_number.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

// A binary number m * 2^-k is m * 5^k units of 10^-k. Where that product fits an integer, its decimal digits are the
// exact digits of the number, and cutting them to 25 is a matter of text.

namespace Xml
{

namespace
{

__extension__ using Wide = unsigned __int128;

const int MAX_BITS = 126;        // of the integer; its upper part of 19 digits then fits 64 bits
const int MAX_DIGITS = 38;       // that such an integer has
const int PRECISION = 25;        // significant digits that stay
const int MIN_FIXED_POINT = -4;  // decimal exponent from which on a number is written without an exponent
const int LARGEST_POWER = 53;    // 5^53 has 124 bits
const int MANTISSA_BITS = 52;    // of a double
const int EXPONENT_BIAS = 1075;  // of the mantissa taken as an integer
const int EXPONENT_MASK = 0x7ff; // all set: infinite or no number
const std::uint64_t LOWER_PART = 10000000000000000000u; // 10^19

struct PowerOfFive
{
    Wide value;
    int bits;
};

constexpr std::array<PowerOfFive, LARGEST_POWER + 1> makePowersOfFive()
{
    std::array<PowerOfFive, LARGEST_POWER + 1> powers{};
    Wide power = 1;
    for (PowerOfFive& entry : powers)
    {
        entry.value = power;
        for (Wide rest = power; rest > 0; rest >>= 1) ++entry.bits;
        power *= 5;
    }
    return powers;
}

constexpr std::array<PowerOfFive, LARGEST_POWER + 1> POWERS_OF_FIVE = makePowersOfFive();

constexpr std::array<char, 200> makePairs()
{
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i)
    {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

constexpr std::array<char, 200> PAIRS = makePairs(); // 00 01 ... 99

// Writes the digits of `value` in front of `end`, without leading zeros, and returns where they begin.
char* writeDigits(std::uint64_t value, char* end)
{
    for (; value >= 100; value /= 100) std::memcpy(end -= 2, &PAIRS[2 * (value % 100)], 2);
    if (value >= 10)
        std::memcpy(end -= 2, &PAIRS[2 * value], 2);
    else if (value > 0)
        *--end = static_cast<char>('0' + value);
    return end;
}

char* writeDigits(Wide value, char* end)
{
    if (value >> 64 == 0) return writeDigits(static_cast<std::uint64_t>(value), end);
    char* const middle = end - 19;
    char* const first = writeDigits(static_cast<std::uint64_t>(value % LOWER_PART), end);
    std::fill(middle, first, '0');
    return writeDigits(static_cast<std::uint64_t>(value / LOWER_PART), middle);
}

// The digits of a number, the first of which is not 0, and the power of ten that the first one counts.
struct Decimal
{
    char* first;
    char* end;
    int exponent;
};

// Rounds to PRECISION digits, a half to the even neighbour, and drops zeros at the end.
void round(Decimal& decimal)
{
    if (decimal.end - decimal.first > PRECISION)
    {
        char* const cut = decimal.first + PRECISION;
        const bool isMore = std::any_of(cut + 1, decimal.end, [](char digit) { return digit != '0'; });
        const bool isOdd = (cut[-1] - '0') % 2 != 0;
        decimal.end = cut;
        if (*cut > '5' || (*cut == '5' && (isMore || isOdd)))
        {
            while (decimal.end > decimal.first && decimal.end[-1] == '9') --decimal.end;
            if (decimal.end == decimal.first)
            {
                *decimal.end++ = '1';
                ++decimal.exponent;
            }
            else
            {
                ++decimal.end[-1];
            }
        }
    }
    while (decimal.end - decimal.first > 1 && decimal.end[-1] == '0') --decimal.end;
}

char* writeExponent(int exponent, char* to)
{
    *to++ = 'e';
    *to++ = exponent < 0 ? '-' : '+';
    const std::size_t size = static_cast<std::size_t>(exponent < 0 ? -exponent : exponent); // below 100
    return std::copy_n(&PAIRS[2 * size], 2, to);
}

char* writeDecimal(const Decimal& decimal, char* to)
{
    const int point = decimal.exponent + 1; // digits ahead of the point
    if (decimal.exponent < MIN_FIXED_POINT || decimal.exponent >= PRECISION)
    {
        *to++ = *decimal.first;
        if (decimal.end - decimal.first > 1) *to++ = '.';
        return writeExponent(decimal.exponent, std::copy(decimal.first + 1, decimal.end, to));
    }
    if (point <= 0)
    {
        *to++ = '0';
        *to++ = '.';
        return std::copy(decimal.first, decimal.end, std::fill_n(to, -point, '0'));
    }
    if (decimal.end - decimal.first <= point)
    {
        to = std::copy(decimal.first, decimal.end, to);
        return std::fill_n(to, point - (decimal.end - decimal.first), '0');
    }
    to = std::copy_n(decimal.first, point, to);
    *to++ = '.';
    return std::copy(decimal.first + point, decimal.end, to);
}

int countBits(std::uint64_t value)
{
    return 64 - __builtin_clzll(value);
}

} // namespace

std::string_view formatShortNumber(double value, NumberText& text)
{
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    const int rawExponent = static_cast<int>(bits >> MANTISSA_BITS) & EXPONENT_MASK;
    const std::uint64_t rawMantissa = bits & ((std::uint64_t(1) << MANTISSA_BITS) - 1);

    char* to = text.data();
    if (bits >> 63) *to++ = '-';
    const auto result = [&text](const char* end) {
        return std::string_view(text.data(), static_cast<std::size_t>(end - text.data()));
    };
    if (value == 0.0)
    {
        *to++ = '0';
        return result(to);
    }
    if (rawExponent == 0 || rawExponent == EXPONENT_MASK) return {};

    std::uint64_t mantissa = rawMantissa | std::uint64_t(1) << MANTISSA_BITS;
    const int zeros = __builtin_ctzll(mantissa);
    mantissa >>= zeros;
    const int exponent = rawExponent - EXPONENT_BIAS + zeros;
    const int decimals = exponent < 0 ? -exponent : 0;
    if (decimals > LARGEST_POWER) return {};
    const PowerOfFive& power = POWERS_OF_FIVE[static_cast<std::size_t>(decimals)];
    if (countBits(mantissa) + (exponent < 0 ? power.bits : exponent) > MAX_BITS) return {};

    const Wide units = exponent < 0 ? mantissa * power.value : Wide(mantissa) << exponent;
    char digits[MAX_DIGITS];
    char* const end = digits + MAX_DIGITS;
    Decimal decimal{writeDigits(units, end), end, 0};
    decimal.exponent = static_cast<int>(decimal.end - decimal.first) - 1 - decimals;
    round(decimal);
    return result(writeDecimal(decimal, to));
}

std::string_view formatNumber(double value, NumberText& text)
{
    const std::string_view shortText = formatShortNumber(value, text);
    if (!shortText.empty()) return shortText;
    const int length = std::snprintf(text.data(), text.size(), "%.25g", value);
    return std::string_view(text.data(), static_cast<std::size_t>(length));
}

} // namespace Xml
