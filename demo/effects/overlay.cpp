#include "overlay.h"

#include "effect_helpers.h"

void Overlay::setup(AM::ArchiveManager&)
{
    mPicture = loadPicture(*mTextureManager, PictureFiles::OVERLAY);
}

void Overlay::updateSpline(float, const std::string& name, float value)
{
    if (name == "alpha") mAlpha = value / 100;
}

void Overlay::update(float, float, float)
{
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    mPicture->bind();
    GL_CHECKED(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR));
    GL_CHECKED(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR));
    GL_CHECKED(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP));
    GL_CHECKED(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP));

    FullScreenFrame frame;
    glColor4f(1, 1, 1, mAlpha);
    glBegin(GL_QUADS);
    pictureCorners(1, 1);
    glEnd();
}
