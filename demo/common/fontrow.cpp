#include "fontrow.h"

#include <cstring>

float glyphLeftEdge(char character)
{
    static const char glyphs[] = "abcdefghijklmnopqrstuvwxyz0123456789!?@:;.,()><-+*/\\";
    const int EMPTY_COLUMN = 86;

    const char* glyph = character ? std::strchr(glyphs, character) : nullptr;
    return static_cast<float>(glyph ? glyph - glyphs : EMPTY_COLUMN) * 0.009765625f;
}
