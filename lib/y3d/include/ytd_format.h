#pragma once

namespace ytd
{

// A format is a set of these bits, one for each attribute that the vertices of a buffer have. Two more bits, 64 and
// 128, are counted with 12 bytes each and otherwise unknown.
const unsigned int FORMAT_POSITION = 1; // 12 bytes
const unsigned int FORMAT_NORMAL = 2;   // 12 bytes
const unsigned int FORMAT_UVW_0 = 4;    // 8 bytes: two of the three coordinates, as in the next
const unsigned int FORMAT_UVW_1 = 8;
const unsigned int FORMAT_COLOR_0 = 16; // 16 bytes, as in the next
const unsigned int FORMAT_COLOR_1 = 32;

// Whether blocks of a format can be built and drawn: positions, with or without normals and the first texture channel,
// and nothing else. In a vertex the texture coordinates come first, then the normal, then the position, without gaps:
// GL_V3F, GL_N3F_V3F, GL_T2F_V3F and GL_T2F_N3F_V3F.
inline bool canBeDrawn(unsigned int format)
{
    return (format | FORMAT_NORMAL | FORMAT_UVW_0) == (FORMAT_POSITION | FORMAT_NORMAL | FORMAT_UVW_0);
}

} // namespace ytd
