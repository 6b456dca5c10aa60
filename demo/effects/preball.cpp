#include "preball.h"

#include "effect_helpers.h"
#include "landscapeview.h"

namespace
{

const int ROWS = 15;
const int COLUMNS = 20;

void drawBar()
{
    glBegin(GL_QUADS);
    glVertex3f(-1, -1, 0);
    glVertex3f(1, -1, 0);
    glVertex3f(1, 1, 0);
    glVertex3f(-1, 1, 0);
    glEnd();
}

} // namespace

void PreBall::setup(AM::ArchiveManager&)
{
    mPicture = loadPicture(*mTextureManager, PictureFiles::LANDSCAPE);
}

void PreBall::update(float, float, float position)
{
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    mPicture->bind();

    glLoadIdentity();
    glColor4f(1, 1, 1, 1);
    placeLandscape();
    for (int row = 0; row < ROWS; ++row)
        for (int column = 0; column < COLUMNS; ++column) drawTile(row, column, position);

    drawBars(position);
}

// A tile grows from its upper left corner, in size and opacity at once, while its texture slides into place from below.
// Before its turn it is mirrored and fully transparent.
void PreBall::drawTile(int row, int column, float position)
{
    const float grown = std::min(10 * position - static_cast<float>(row * column) / 40, 1.0f);
    glColor4f(1, 1, 1, grown);

    const float rf = static_cast<float>(row) / ROWS;
    const float cf = static_cast<float>(column) / COLUMNS;
    const float s0 = LANDSCAPE_S * cf;
    const float s1 = s0 + LANDSCAPE_S / COLUMNS;
    const float t0 = LANDSCAPE_T * rf + (1 - grown) / 10;
    const float t1 = t0 + LANDSCAPE_T / ROWS;
    const float x0 = 2 * cf - 1;
    const float x1 = x0 + 0.1f * grown;
    const float y0 = 1 - 2 * rf;
    const float y1 = y0 - 0.13333334f * grown;

    glBegin(GL_QUADS);
    glTexCoord2f(s0, t0);
    glVertex3f(x0, y0, 0);
    glTexCoord2f(s1, t0);
    glVertex3f(x1, y0, 0);
    glTexCoord2f(s1, t1);
    glVertex3f(x1, y1, 0);
    glTexCoord2f(s0, t1);
    glVertex3f(x0, y1, 0);
    glEnd();
}

void PreBall::drawBars(float position)
{
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4f(0, 0, 0, position);
    {
        PushedMatrix matrix;
        glTranslatef(0, -2, 0);
        drawBar();
    }
    glTranslatef(0, 2, 0);
    drawBar();
}
