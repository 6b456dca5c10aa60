#pragma once

#include "effecttable.h"
#include "findings.h"
#include "score.h"

#include <string>
#include <vector>

namespace Timeline
{

// What is wrong with a script, or likely not meant, sorted by line. A text that is no document gives one finding.
std::vector<Finding> checkScript(const std::string& text, const std::string& path, const EffectTable& effects);

} // namespace Timeline
