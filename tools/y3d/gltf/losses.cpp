#include "losses.h"

#include <algorithm>

namespace gltf
{

namespace
{

const std::size_t MAX_LINES = 1000;

}

void Losses::tell(const std::string& line)
{
    if (std::find(mLines.begin(), mLines.end(), line) != mLines.end()) return;
    if (mLines.size() < MAX_LINES)
        mLines.push_back(line);
    else
        ++mNumOthers;
}

std::vector<std::string> Losses::getLines() const
{
    std::vector<std::string> lines = mLines;
    if (mNumOthers != 0) lines.push_back(std::to_string(mNumOthers) + " more of such lines are left out");
    return lines;
}

} // namespace gltf
