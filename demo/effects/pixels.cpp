#include "pixels.h"

#include "effect_helpers.h"

namespace
{

const int SIDE = 72; // of the square in pixels and of the screen in dots
const int SPOT_SIZE = 64;

void drawBackground()
{
    glColor3f(0, 0, 0);
    glBegin(GL_TRIANGLE_STRIP);
    glVertex3f(-1.33f, 1, -2.4f);
    glVertex3f(-1.33f, -1, -2.4f);
    glVertex3f(1.33f, 1, -2.4f);
    glVertex3f(1.33f, -1, -2.4f);
    glEnd();
}

// The dots overlap a little and add up. A dot stands where its pixel was, so the picture is upright.
void drawDots(const unsigned char* pixel)
{
    for (int row = 0; row < SIDE; ++row)
        for (int column = 0; column < SIDE; ++column, pixel += 3)
        {
            PushedMatrix matrix;
            glTranslatef((column - 36) / 9.0f, (row - 36) / 9.0f, 0);
            glColor3ub(pixel[0], pixel[1], pixel[2]);
            glNormal3f(0, 0, 1);
            glScalef(0.5f, 0.5f, 1);
            drawStrip(0, 0, 1, 1, 0.2f, 0.2f);
        }
}

} // namespace

Pixels::~Pixels()
{
    glDeleteTextures(1, &mTexture);
}

void Pixels::setup(AM::ArchiveManager&)
{
    const std::vector<unsigned char> spot = makeSoftSpot(SPOT_SIZE);
    glGenTextures(1, &mTexture);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, SPOT_SIZE, SPOT_SIZE, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, spot.data());
    setTextureFilter(GL_LINEAR);
}

void Pixels::update(float, float, float)
{
    glLoadIdentity();
    glTranslatef(0, 0, -2);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_COLOR_MATERIAL);
    glDisable(GL_TEXTURE_2D);

    static unsigned char pixels[SIDE * SIDE * 3];
    glReadPixels(0, 0, SIDE, SIDE, GL_RGB, GL_UNSIGNED_BYTE, pixels);

    glViewport(0, 0, FRAME_WIDTH, FRAME_HEIGHT);
    glLoadIdentity();
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    drawBackground();

    glTranslatef(0, 0, -10);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
    drawDots(pixels);
}
