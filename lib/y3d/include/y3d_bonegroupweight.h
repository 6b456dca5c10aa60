#pragma once

#include <cstdint>

namespace y3d
{

// One weight of a bone group. Nothing here tells which of the two values is the vertex and which the weight, so both
// travel as the raw 32 bits of the file.
struct BoneGroupWeight
{
    std::uint32_t mFirst = 0;
    std::uint32_t mSecond = 0;
};

} // namespace y3d
