#include "sandrift.h"

#include "effect_helpers.h"

void Sandrift::setup(AM::ArchiveManager&)
{
    mPictures[0] = loadPicture(*mTextureManager, PictureFiles::LOGO_GHOST);
    mPictures[1] = loadPicture(*mTextureManager, PictureFiles::LOGO);
}

void Sandrift::resetTriggers()
{
    mWhich = 0;
}

void Sandrift::executeTrigger(float, const std::string& name, const std::string&)
{
    if (name == "change") mWhich = 1;
}

void Sandrift::updateSpline(float, const std::string& name, float value)
{
    if (name == "alpha") mAlpha = value / 10;
}

void Sandrift::update(float, float, float)
{
    glEnable(GL_BLEND);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    mPictures[mWhich]->bind();
    GL_CHECKED(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR));
    GL_CHECKED(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR));
    GL_CHECKED(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP));
    GL_CHECKED(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP));

    // The logo overhangs the screen to both sides.
    FullScreenFrame frame;
    glBegin(GL_QUADS);
    glColor4f(1, 1, 1, mAlpha);
    pictureCorners(1.28f, 0.42666668f);
    glEnd();
}
