#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Fennel
{

// Sorts `entries` by the number that `numberOf(entry)` gives, the smallest first; equal ones keep their order. It
// counts instead of comparing, byte by byte from the lowest, and so takes as many passes as the range of the numbers
// has bytes: one or two for the objects of a scene, whose numbers lie close together. `room` is scratch memory, to be
// kept from one sort to the next.
template <typename Entry, typename NumberOf>
void sortByNumber(std::vector<Entry>& entries, std::vector<Entry>& room, NumberOf numberOf)
{
    if (entries.size() < 2) return;

    std::uint64_t least = numberOf(entries.front());
    std::uint64_t most = least;
    for (const Entry& entry : entries)
    {
        least = std::min<std::uint64_t>(least, numberOf(entry));
        most = std::max<std::uint64_t>(most, numberOf(entry));
    }

    room = entries;
    for (int shift = 0; shift < 64 && (most - least) >> shift != 0; shift += 8)
    {
        const auto digitOf = [&](const Entry& entry) { return (numberOf(entry) - least) >> shift & 0xff; };
        std::size_t places[256] = {};
        for (const Entry& entry : entries) ++places[digitOf(entry)];
        std::size_t place = 0;
        for (std::size_t& first : places)
        {
            const std::size_t count = first;
            first = place;
            place += count;
        }
        for (const Entry& entry : entries) room[places[digitOf(entry)]++] = entry;
        entries.swap(room);
    }
}

} // namespace Fennel
