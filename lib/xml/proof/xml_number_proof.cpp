// Every single there is, as text: what formatShortNumber writes against what printf writes. Numbers that it leaves to
// printf are only counted. Ten to twenty minutes of processor time, so no test runs it: run it after a change of
// xml_number.
//   xml_number_proof [PART PARTS]     a part from 0 of so many, to share the work

#include "xml_number.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

int main(int argc, char** argv)
{
    const std::uint64_t patterns = std::uint64_t(1) << 32;
    const std::uint64_t part = argc == 3 ? std::strtoull(argv[1], nullptr, 10) : 0;
    const std::uint64_t parts = argc == 3 ? std::strtoull(argv[2], nullptr, 10) : 1;
    if (argc == 2 || argc > 3 || parts == 0 || part >= parts)
    {
        std::fprintf(stderr, "usage: xml_number_proof [PART PARTS]\n");
        return 2;
    }

    std::uint64_t compared = 0, left = 0, different = 0;
    for (std::uint64_t pattern = patterns * part / parts; pattern < patterns * (part + 1) / parts; ++pattern)
    {
        const std::uint32_t bits = static_cast<std::uint32_t>(pattern);
        float value;
        std::memcpy(&value, &bits, sizeof value);
        Xml::NumberText text;
        const std::string_view ours = Xml::formatShortNumber(static_cast<double>(value), text);
        if (ours.empty())
        {
            ++left;
            continue;
        }
        char expected[64];
        const int length = std::snprintf(expected, sizeof expected, "%.25g", static_cast<double>(value));
        ++compared;
        if (ours == std::string_view(expected, static_cast<std::size_t>(length))) continue;
        if (++different <= 10)
            std::printf("0x%08x: \"%.*s\" instead of \"%s\"\n", bits, static_cast<int>(ours.size()), ours.data(),
                        expected);
    }
    std::printf("part %llu of %llu: %llu patterns: %llu compared, %llu different; %llu left to printf\n",
                static_cast<unsigned long long>(part), static_cast<unsigned long long>(parts),
                static_cast<unsigned long long>(compared + left), static_cast<unsigned long long>(compared),
                static_cast<unsigned long long>(different), static_cast<unsigned long long>(left));
    return different == 0 ? 0 : 1;
}
