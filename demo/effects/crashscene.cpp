#include "crashscene.h"

#include "effect_helpers.h"
#include "render2texture.h"

int crashType = 0;

namespace
{

const float TILE_WIDTH = 1.33333f; // the height is 1
const int TILES = 10;              // a row and a column

// A tile's share of the texture that holds the picture.
const float TILE_S = static_cast<float>(FRAME_WIDTH) / TILES / COPY_SIZE;
const float TILE_T = static_cast<float>(FRAME_HEIGHT) / TILES / COPY_SIZE;

void drawDimmingLayer()
{
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    {
        FullScreenFrame frame;
        glColor4f(0, 0, 0, 0.9f);
        drawFullScreenQuad();
    }
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
}

void turnTile(float v)
{
    switch (crashType)
    {
    case 0:
        glRotatef(90 * v, 0, 1, 0);
        break;
    case 1:
        glRotatef(90 * v, 1, 0, 0);
        break;
    case 2:
        glRotatef(-90 * v, 0, 1, 0);
        break;
    case 3:
        glRotatef(-90 * v, 1, 0, 0);
        break;
    }
}

// The tile of column j and row i, with its lower left corner at the origin: its piece of the picture and an outline.
void drawTile(int i, int j, float v)
{
    const float sine = std::sin(v * 3.1415927f * 0.5f);
    const float s0 = j * TILE_S;
    const float t0 = i * TILE_T;
    const float s1 = s0 + TILE_S;
    const float t1 = t0 + TILE_T;

    glColor4f(1, 1, 1, 1 - 0.8f * sine);
    glBegin(GL_TRIANGLE_STRIP);
    glTexCoord2f(s0, t1);
    glVertex3f(0, 1, 0);
    glTexCoord2f(s0, t0);
    glVertex3f(0, 0, 0);
    glTexCoord2f(s1, t1);
    glVertex3f(TILE_WIDTH, 1, 0);
    glTexCoord2f(s1, t0);
    glVertex3f(TILE_WIDTH, 0, 0);
    glEnd();

    glColor4f(1, 1, 1, 0.4f - 0.2f * sine);
    glLineWidth(2);
    glBegin(GL_LINE_STRIP);
    glVertex3f(TILE_WIDTH, 1, 0);
    glVertex3f(TILE_WIDTH, 0, 0);
    glVertex3f(0, 0, 0);
    glVertex3f(0, 1, 0);
    glVertex3f(TILE_WIDTH, 1, 0);
    glEnd();
}

} // namespace

// The one seeding of the run: the random numbers of all effects hang on it, so every run shows the same.
void CrashScene::setup(AM::ArchiveManager&)
{
    mColor = 1;
    std::srand(38912);
}

void CrashScene::executeTrigger(float time, const std::string& name, const std::string& value)
{
    if (name == "speed")
        mSpeed = readFloat(value);
    else if (name == "crash")
    {
        mCrashTime = time;
        crashType = (crashType + 1) % 4;
    }
    else if (name == "color")
        mColor = value == "white" ? 1.0f : 0.0f;
}

void CrashScene::update(float time, float, float)
{
    const float v = 1 - std::min((time - mCrashTime) * mSpeed, 1.0f); // from 1 at the crash down to 0

    glBindTexture(GL_TEXTURE_2D, render_texture);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glNormal3f(0, 0, 1);

    if (v > 0) drawDimmingLayer();
    drawTiles(v);

    glDisable(GL_BLEND);
    glEnable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
}

// The tiles stand apart by half as much again at v 1 and close up as v falls. At 0 they are done: the matrices still
// go their way, and nothing is drawn.
void CrashScene::drawTiles(float v)
{
    glLoadIdentity();
    for (int i = 0; i < TILES; ++i)
    {
        const float y = -5.0f + i;
        float x = -6.66665f;
        for (int j = 0; j < TILES; ++j, x += TILE_WIDTH)
        {
            glEnable(GL_TEXTURE_2D);
            glEnable(GL_BLEND);
            glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_DST_ALPHA);
            PushedMatrix matrix;
            glTranslatef(x + 0.5f * x * v, y + 0.5f * y * v, -11.5f);
            turnTile(v);
            glTranslatef(0, 0, 4 * v);
            if (v > 0) drawTile(i, j, v);
        }
    }
}
