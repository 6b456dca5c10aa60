#pragma once

#include "tw_glinclude.h"

// The six faces of an axis-parallel cube about a centre, for the effects that draw many of them.

// One GL_QUADS of all faces, in half the cube's width.
void drawBoxFaces(float x, float y, float z, float half);
// Six line strips, one around each face; each stays open after its third side.
void drawBoxOutlines(float x, float y, float z, float half);
