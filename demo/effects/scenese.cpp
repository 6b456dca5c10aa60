#include "scenese.h"

#include "effect_helpers.h"

void Scenese::setup(AM::ArchiveManager&)
{
    mPicture = loadPicture(*mTextureManager, PictureFiles::BANNER);
}

void Scenese::executeTrigger(float time, const std::string& name, const std::string& value)
{
    if (name == "jump")
    {
        mJumpStart = time;
        mJumpHeight = -mJumpHeight;
    }
    else if (name == "jumpspeed")
        mJumpSpeed = readFloat(value);
    else if (name == "jumpheight")
        mJumpHeight = readFloat(value);
}

void Scenese::updateSpline(float, const std::string& name, float value)
{
    if (name == "alpha")
        mAlpha = value / 10;
    else if (name == "offset")
        mOffset = value / 10;
    else if (name == "zoom")
        mZoom = value / 10;
}

// A jump is half a wave, after which the banner rests. Before the first trigger an entry begins with one.
void Scenese::update(float time, float, float position)
{
    const float phase = std::min((time - mJumpStart) * mJumpSpeed, 3.141592f);
    const float y = std::sin(phase) * mJumpHeight;

    glEnable(GL_BLEND);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    mPicture->bind();

    glLoadIdentity();
    glTranslatef(5 - 10 * position, y + mOffset, mZoom - 1.975f);
    glBegin(GL_QUADS);
    glColor4f(1, 1, 1, 0.45f * mAlpha);
    pictureCorners(4, 1);
    glEnd();
}
