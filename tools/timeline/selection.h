#pragma once

#include "score.h"

#include <string>
#include <vector>

namespace Timeline
{

// How entries are named on the command line, for help texts.
extern const char ENTRY_HELP[];

// The entries that `word` names: a number as print shows it ("12", "12.1"), a name (all of that name), or NAME@TIME
// (those of the name that start at this time of the show, else those that run then). Throws Failure if there are none.
std::vector<const Entry*> select(const Score& score, const std::string& word);

// All of them, each once, in the order of the script. An entry in a selected entry goes with it and is left out.
std::vector<const Entry*> select(const Score& score, const std::vector<std::string>& words);

// The one that `word` names. Throws Failure if there are more.
const Entry& selectOne(const Score& score, const std::string& word);

// A place in a script: the node, and the attribute of it.
struct Place
{
    const Node* node;
    std::string attribute;
};

// ENTRY/ATTRIBUTE, ENTRY/INPUT/ATTRIBUTE or ENTRY/INPUT/key[N]/ATTRIBUTE, where INPUT is the name of a trigger or
// spline, with [N] for the N-th of that name, or trigger[N], spline[N]; effect[N] is an entry in the entry. Numbers
// count from 1. Throws Failure for a path that leads nowhere, or to more than one place.
Place findPlace(const Score& score, const std::string& path);

} // namespace Timeline
