#include "loading.h"

#include "effect_helpers.h"
#include "fontrow.h"

namespace
{

const char text[] = "entering sandrift underground";
const int LENGTH = sizeof text - 1;

// The number of the last character to draw: the line is complete before the work is. A share that is no number, as in
// a show without entries, stands for all of it.
int lastCharacter(float position)
{
    const float last = (LENGTH + 10) * position;
    return last < LENGTH ? static_cast<int>(last) : LENGTH;
}

} // namespace

void Loading::setup(AM::ArchiveManager&)
{
    mFont = loadPicture(*mTextureManager, PictureFiles::FONT);
}

void Loading::update(float, float, float position)
{
    GL_CHECKED(glClearColor(0, 0, 0, 1));
    GL_CHECKED(glClear(GL_COLOR_BUFFER_BIT));

    glLoadIdentity();
    glEnable(GL_BLEND);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    mFont->bind();

    const int last = lastCharacter(position);
    for (int i = 0; i < LENGTH && i <= last; ++i)
    {
        const float s = glyphLeftEdge(text[i]);
        const float c = 2 - 1.5f * i / LENGTH; // from overbright to dim along the line
        PushedMatrix matrix;
        glTranslatef(0.02f * i - 0.26500001f, 0, -1);
        glColor4f(c, 0.8f * c, 0.4f * c, 0.9f);
        drawStrip(s, 0, s + GLYPH_WIDTH, 1, 0.01f, 0.01f);
    }

    glDisable(GL_TEXTURE_2D);
    glEnable(GL_LIGHTING);
    glEnable(GL_DEPTH_TEST);
}
