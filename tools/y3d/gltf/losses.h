#pragma once

#include <string>
#include <vector>

namespace gltf
{

// What the other format cannot hold, a line for each thing in the order in which it was met. A line that comes again is
// kept once; behind the first thousand they are only counted.
class Losses
{
public:
    void tell(const std::string& line);

    // The lines, with one more that counts the others.
    std::vector<std::string> getLines() const;

private:
    std::vector<std::string> mLines;
    std::size_t mNumOthers = 0;
};

} // namespace gltf
