#pragma once

#include "effecttable.h"
#include "findings.h"
#include "show.h"

#include <vector>

namespace Timeline
{

// What is wrong with a whole show but for its scripts: the configuration, the scene descriptions that effects read, and
// the files that all of them name. Every registered effect reads its files while the program loads, also one that no
// script names.
std::vector<Finding> checkShow(Show& show, const EffectTable& effects);

} // namespace Timeline
