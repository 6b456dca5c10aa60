#pragma once

#include <string>

#include "y3d_submesh.h"

// Why the triangles of a submesh cannot be worked on, or an empty text.
std::string faultOfTriangles(const y3d::Submesh& submesh);

// Why preparing a submesh would fail or spoil it, or an empty text.
std::string faultOfSubmesh(const y3d::Submesh& submesh);
