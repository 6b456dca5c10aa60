#pragma once

#include <array>
#include <string_view>

namespace Xml
{

// Room for a number as text: a sign, 25 digits, a point, four zeros or an exponent, and printf's closing zero.
using NumberText = std::array<char, 40>;

// `value` as printf writes it with "%.25g", byte for byte, in the C locale. The view lies in `text`.
std::string_view formatNumber(double value, NumberText& text);

// The same, but only for what has a short way: the sum of its digits' weights fits a 126-bit integer, as it does for
// 0 and for all singles whose smallest digit is worth at least 2^-43. An empty view otherwise.
std::string_view formatShortNumber(double value, NumberText& text);

} // namespace Xml
