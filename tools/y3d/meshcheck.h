#pragma once

#include <string>
#include <vector>

#include "y3d_mesh.h"
#include "y3d_submesh.h"

// What stops the player when it loads a submesh.
std::vector<std::string> faultsOf(const y3d::Submesh& submesh);

// What it passes over, or draws otherwise than it is meant.
std::vector<std::string> oddsOf(const y3d::Submesh& submesh);

// True when positions, normals or texture coordinates are no numbers.
bool hasWildNumbers(const y3d::Submesh& submesh);

// True when the box lies around the boxes of all submeshes.
bool holdsSubmeshes(const y3d::Mesh& mesh);
