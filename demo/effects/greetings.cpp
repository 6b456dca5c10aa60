#include "greetings.h"

#include "effect_helpers.h"

namespace
{

const float ROW = 1.0f / GREETING_ROWS; // in t

} // namespace

void Greetings::setup(AM::ArchiveManager&)
{
    mPicture = loadPicture(*mTextureManager, PictureFiles::GREETINGS);
}

void Greetings::executeTrigger(float, const std::string& name, const std::string& value)
{
    if (name == "text")
    {
        for (int i = 0; i < GREETING_ROWS; ++i)
            if (value == greets[i]) mRow = i * ROW;
    }
    else if (name == "size")
        mSize = readFloat(value);
    else if (name == "r")
        mRed = readFloat(value);
    else if (name == "g")
        mGreen = readFloat(value);
    else if (name == "b")
        mBlue = readFloat(value);
}

void Greetings::updateSpline(float, const std::string& name, float value)
{
    if (name == "alpha")
        mAlpha = value / 10;
    else if (name == "posx")
        mPosX = value / 10;
    else if (name == "posy")
        mPosY = value / 10;
}

void Greetings::update(float, float, float)
{
    glLoadIdentity();
    glEnable(GL_BLEND);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    mPicture->bind();
    setTextureFilter(GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);

    glTranslatef(0.5f * mPosX + 0.3f, mPosY, -1.2f);
    glColor4f(mRed, mGreen, mBlue, mAlpha);
    const float margin = 0.0017f; // keeps the filter out of the neighbouring rows
    drawStrip(0, mRow + margin, 1, mRow + ROW - margin, 64 * mSize, mSize);

    glDisable(GL_TEXTURE_2D);
    glEnable(GL_LIGHTING);
    glEnable(GL_DEPTH_TEST);
}
