#pragma once

#include "y3d_submesh.h"

// The vertex cache that meshes are prepared for when nothing else is asked: entries.
const int DEFAULT_CACHE = 16;

// Vertices that a first-in first-out cache has to load for all triangles.
std::size_t countMisses(const y3d::Submesh& submesh, std::size_t cacheSize);

// Merges equal vertices and drops unused ones, and puts triangles and vertices in an order for a cache of `cacheSize`
// entries, or leaves the order as it was where that loads fewer vertices; 0 keeps the order. The submesh must be free
// of the faults that faultOfSubmesh finds.
void improveOrder(y3d::Submesh* submesh, int cacheSize);
