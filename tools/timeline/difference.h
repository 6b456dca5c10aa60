#pragma once

#include "score.h"

#include <string>
#include <vector>

namespace Timeline
{

struct Difference
{
    std::string kind;  // "added", "removed", "moved" (another layer) or "changed"
    std::string entry; // as messages name it; in the first script, unless it was added
    double time;       // of the show, seconds
    std::string text;  // the whole of it in words
};

// What the player would do otherwise with the second script, in the order of the first one.
std::vector<Difference> differences(const Score& before, const Score& after);

} // namespace Timeline
