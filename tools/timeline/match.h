#pragma once

#include "score.h"

#include <memory>
#include <string>
#include <vector>

namespace Timeline
{

using Entries = std::vector<std::unique_ptr<Entry>>;

// Which of the second list is meant by each of the first: its index, or -1 for one that is gone. None is meant twice.
using Partners = std::vector<int>;

// The same entry is one of the same meaning; else of the same name and near in time, or alike but for the time; else
// one that differs in nothing but the name.
Partners matchEntries(const Entries& before, const Entries& after);
Partners matchTriggers(const std::vector<Trigger>& before, const std::vector<Trigger>& after);
Partners matchSplines(const std::vector<Spline>& before, const std::vector<Spline>& after);
Partners matchKeys(const std::vector<Key>& before, const std::vector<Key>& after);

// All that the player reads of an entry and what lies in it, as bytes that are equal for equal entries.
std::string meaning(const Entry& entry);

// The same without name, state, start and end.
std::string innerMeaning(const Entry& entry);

std::string meaning(const Trigger& trigger);
std::string meaning(const Spline& spline);

// All entries of a script.
std::string meaning(const Score& score);

} // namespace Timeline
