#pragma once

#include <cstdint>

namespace y3d
{

// The number of a vertex in its submesh. Three in a row are a triangle.
using Index = std::uint32_t;

} // namespace y3d
