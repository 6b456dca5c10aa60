#pragma once

// The bitmap font of the letter effects, one row of glyphs; font_picture.h tells its layout. There are no capitals.

// The width of a glyph in s: a little less than 9 of a column's 10 texels, which keeps the filter out of the next
// glyph.
const float GLYPH_WIDTH = 0.008765625f;

// The left edge of a character's glyph in s. A character that the font lacks, a blank too, gets an empty column.
float glyphLeftEdge(char character);
