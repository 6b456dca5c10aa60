#pragma once

// The bitmap font of the letter effects, "font.png": one row of glyphs, each in a column of 10 texels of a texture 1024
// wide. The columns hold a to z, 0 to 9 and !?@:;.,()><-+*/\ in this order; there are no capitals.

// The width of a glyph in s: a little less than 9 of a column's 10 texels, which keeps the filter out of the next
// glyph.
const float GLYPH_WIDTH = 0.008765625f;

// The left edge of a character's glyph in s. A character that the font lacks, a blank too, gets an empty column.
float glyphLeftEdge(char character);
