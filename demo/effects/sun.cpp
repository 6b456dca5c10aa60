#include "sun.h"

#include "effect_helpers.h"

namespace
{

const int STARS = 2000;

} // namespace

void Sun::setup(AM::ArchiveManager&)
{
    mTexture = loadPicture(*mTextureManager, PictureFiles::SUN);
    for (int i = 0; i < STARS; ++i)
    {
        auto star = std::make_unique<stardate>();
        star->x = 2 * randomUnit() - 1;
        star->y = 2 * randomUnit() - 1;
        star->z = 0;
        star->size = 0.05f * randomUnit() + 0.025f;
        mStars.push_back(std::move(star));
    }
}

void Sun::updateSpline(float, const std::string& name, float value)
{
    if (name == "width")
        mWidth = value / 10;
    else if (name == "cone")
        mCone = value / 10;
    else if (name == "alpha")
        mAlpha = value / 10;
    else if (name == "base")
        mBase = value / 10;
    else if (name == "rotate")
        mRotate = value;
}

void Sun::update(float time, float delta, float)
{
    glLoadIdentity();
    glTranslatef(0, 0, -1.5f);
    glEnable(GL_BLEND);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    mTexture->bind();
    glRotatef(mRotate, 0, 0, 1);

    for (const std::unique_ptr<stardate>& star : mStars)
    {
        glColor4f(1, 1, 1, (0.1f * randomUnit() + 0.2f) * mAlpha);
        // Big sparks climb faster. Only the top wraps: after a jump back in time some lie below -1 for a while.
        star->y += delta * star->size;
        if (star->y > 1) star->y -= 2;
        const float leaning = star->y * mWidth + star->x;
        const float wide = leaning + leaning * mBase;
        const float x = wide + star->y * mCone * wide;

        PushedMatrix matrix;
        glTranslatef(x, star->y, star->z);
        glRotatef(star->size * (-time * 2000), 0, 0, 1);
        const float size = star->size;
        glBegin(GL_QUADS);
        glTexCoord2f(0, 0);
        glVertex3f(-size, size, star->z);
        glTexCoord2f(1, 0);
        glVertex3f(size, size, star->z);
        glTexCoord2f(1, 1);
        glVertex3f(size, -size, star->z);
        glTexCoord2f(0, 1);
        glVertex3f(-size, -size, star->z);
        glEnd();
    }
}
