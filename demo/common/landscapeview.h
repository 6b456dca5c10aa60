#pragma once

#include "landscape.h"

#include "tw_glinclude.h"

// The view of the landscape in which `preball` ends and with which `ball` goes on: what it shows of the picture, as
// shares of width and height, on a rectangle from -1 to 1.

const float LANDSCAPE_S = static_cast<float>(LANDSCAPE_SHOWN_WIDTH) / LANDSCAPE_WIDTH;
const float LANDSCAPE_T = static_cast<float>(LANDSCAPE_SHOWN_HEIGHT) / LANDSCAPE_HEIGHT;

// Moves that rectangle from the viewer, so that it fills the width.
inline void placeLandscape()
{
    glTranslatef(0, 0, -2.4f);
    glScalef(1.333f, 0.8453039f, 1);
}
