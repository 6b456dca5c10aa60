#include "infinity.h"

#include "boxshape.h"
#include "effect_helpers.h"

namespace
{

// The flight begins anew after this way. The lattice repeats after 3, so that it shows as a small jump.
const float WRAP = 3.52f;

// NaN and infinity, which no sum of real time steps gives, would never come back into the range.
void wrap(float& place)
{
    if (!(std::fabs(place) < 1e6f)) place = 0;
    while (place > WRAP) place -= WRAP;
    while (place < 0) place += WRAP;
}

} // namespace

float Infinity::mytime = 0;

void Infinity::setup(AM::ArchiveManager&)
{
    mPoints.clear();
    for (int x = -18; x <= 18; x += 3)
        for (int y = -18; y <= 18; y += 3)
            for (int z = -18; z <= 18; z += 3)
                mPoints.insert(mPoints.end(), {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)});
}

void Infinity::update(float t, float delta, float)
{
    glLoadIdentity();
    mytime += 15 * delta;
    wrap(mytime);

    glRotatef(20 * std::cos(t), 0, 1, 1);
    glRotatef(25 * std::sin(t), 0, 1, 0);
    glRotatef(10 * std::sin(std::cos(t / 14)), 1, 0, 0);
    glTranslatef(3 * std::sin(t) + 1, 0.5f * std::cos(2 * t) + 1 + 0.25f, -13 - mytime);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_LIGHTING);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);

    for (std::size_t i = 0; i < mPoints.size(); i += 3)
    {
        const float x = mPoints[i];
        const float y = mPoints[i + 1];
        const float z = mPoints[i + 2];
        glEnable(GL_DEPTH_TEST);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        const float distance = std::sqrt(x * x + y * y + (z - mytime) * (z - mytime));
        const float c = 9 - distance / 1.4f;
        glColor4f(0.0638f * c, 0.0512f * c, 0.05f * c, 1);
        drawBoxFaces(x, y, z, 0.7f);

        glLineWidth(3);
        glDepthFunc(GL_LESS);
        glColor4f(0.2f, 0.2f, 0.2f, (z + 6) / 6 - mytime / WRAP);
        PushedMatrix matrix;
        drawBoxOutlines(x, y, z, 0.7007f);
    }
}
