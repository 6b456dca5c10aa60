#include "hypno.h"

#include "effect_helpers.h"
#include "fontrow.h"

namespace
{

// The blanks at the front let the flight begin in the empty.
const char text[] = "                sandrift presents at drydocks 2005 - a demo by ruvelo, maril, dawnhouse, ulve and "
                    "tessera - our glacier heart cold";

// Letters fade out of black between 20 and 10 units ahead.
void enableFog()
{
    const GLfloat black[] = {0, 0, 0, 1};
    glFogi(GL_FOG_MODE, GL_LINEAR);
    glFogfv(GL_FOG_COLOR, black);
    glFogf(GL_FOG_DENSITY, 0.8f);
    glFogf(GL_FOG_START, 10);
    glFogf(GL_FOG_END, 20);
    glEnable(GL_FOG);
}

} // namespace

void Hypno::setup(AM::ArchiveManager&)
{
    mFont = loadPicture(*mTextureManager, PictureFiles::FONT);

    mLetters.clear();
    for (const char* character = text; *character; ++character)
    {
        const float i = static_cast<float>(mLetters.size());
        const float angle = 0.25f * i;
        mLetters.push_back(
            {glyphLeftEdge(*character), std::sin(angle), std::cos(angle), -0.25f * i * 180 / 3.1415927f});
    }
}

void Hypno::updateSpline(float, const std::string& name, float value)
{
    if (name == "twist")
        mTwist = value / 10;
    else if (name == "spread")
        mSpread = value / 10;
    else if (name == "alpha")
        mAlpha = value / 10;
}

void Hypno::update(float time, float, float)
{
    glLoadIdentity();
    glEnable(GL_BLEND);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    mFont->bind();
    enableFog();

    glRotatef(90 * time, 0, 0, 1);
    glTranslatef(0, 0, 4 * time - 10);
    float i = 0;
    for (const Letter& letter : mLetters)
    {
        const float half = 0.125f + mTwist * (std::sin(100 * i + 4 * time) / 5 + 0.06666667f);
        PushedMatrix matrix;
        glTranslatef(letter.x + mSpread, letter.y + mSpread, 1.5f * mAlpha - 0.5f * i);
        glRotatef(letter.rotation, 0, 0, 1);
        glColor4f(1, 1, 1, 0.2f * randomUnit() + 0.5f - 0.7f * mSpread + 0.5f * mAlpha);
        drawStrip(letter.s, 0, letter.s + GLYPH_WIDTH, 0.9f, half, half);
        ++i;
    }

    glDisable(GL_FOG);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_LIGHTING);
    glEnable(GL_DEPTH_TEST);
}
