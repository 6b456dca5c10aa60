#pragma once

#include <string>
#include <string_view>

namespace Timeline
{

// A number as the player reads it: what stands at the front of the text, 0 if there is none.
float readFloat(const std::string& text);
double readDouble(const std::string& text);
int readInt(const std::string& text);

// The whole text is one finite number, as atof reads it, with nothing behind it but blanks.
bool isNumber(const std::string& text);
bool isWholeNumber(const std::string& text);

// The shortest text that reads back to the same single. Plain decimals, but for the very large and the very small.
std::string shortest(float number);
inline std::string shortest(double number)
{
    return shortest(static_cast<float>(number));
}

// A number as people like to read it: three decimals at most, none that are 0.
std::string readable(double number);

// The name among `known` that is near enough to `name` to have been meant, or an empty text.
template <class Names> std::string nearest(const std::string& name, const Names& known);

// How many letters must be added, dropped, replaced or swapped with their neighbour to turn one into the other.
int distance(std::string_view a, std::string_view b);

template <class Names> std::string nearest(const std::string& name, const Names& known)
{
    std::string best;
    int bestDistance = name.size() < 4 ? 2 : 3; // one letter, or two
    for (const std::string& candidate : known)
    {
        const int away = distance(name, candidate);
        if (away >= bestDistance || away >= static_cast<int>(candidate.size())) continue;
        best = candidate;
        bestDistance = away;
    }
    return best;
}

} // namespace Timeline
