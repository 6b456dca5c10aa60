#pragma once

// The layout of "font.png": one row of letters, each in a column of its own, in this order. The rest of the row is
// empty.

const int FONT_WIDTH = 1024; // texels
const int FONT_HEIGHT = 16;
const int FONT_COLUMN = 10; // of which a letter fills nine

const char FONT_LETTERS[] = "abcdefghijklmnopqrstuvwxyz0123456789!?@:;.,()><-+*/\\";
