#pragma once

#include "score.h"

#include <map>
#include <string>
#include <vector>

namespace Timeline
{

// The script in the writing of the house: a tag a line, a tab a level, attributes in one order, short numbers, defaults
// left out, comments and single blank lines kept. It means the same, which is checked; throws Failure if it did not.
std::string format(const Score& score);

// `saved`, as Ctrl+S writes it, with the comments of `old`, which it was before. Entries that mean what they meant come
// back as they stood in the old script; others are written anew, with the comments of what is still in them.
std::string mergeComments(const Score& old, const Score& saved);

} // namespace Timeline
