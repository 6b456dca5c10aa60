#include "fontrow.h"

#include "font_picture.h"

#include <cstring>

float glyphLeftEdge(char character)
{
    const int EMPTY_COLUMN = 86;

    const char* glyph = character ? std::strchr(FONT_LETTERS, character) : nullptr;
    return static_cast<float>(glyph ? glyph - FONT_LETTERS : EMPTY_COLUMN) * FONT_COLUMN / FONT_WIDTH;
}
