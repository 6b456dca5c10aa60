#include "rings.h"

#include "effect_helpers.h"

#include <algorithm>
#include <cmath>

namespace
{

const int CORNERS = 64;
const int MOST_RINGS = 50;
const float HALF_LIFE = 0.2f; // seconds

void drawRing(float inner, float outer)
{
    glBegin(GL_QUAD_STRIP);
    for (int i = 0; i <= CORNERS; ++i)
    {
        const float angle = 6.2831853f * static_cast<float>(i) / CORNERS;
        const float x = std::cos(angle) * 0.75f, y = std::sin(angle); // the screen is 4 to 3
        glVertex2f(x * inner, y * inner);
        glVertex2f(x * outer, y * outer);
    }
    glEnd();
}

} // namespace

void Rings::resetTriggers()
{
    mBeat = 0;
    mBeatTime = 0;
}

// Triggers and splines only store; update() computes from the time, so that seeking shows what playing shows.
void Rings::executeTrigger(float time, const std::string& name, const std::string& value)
{
    if (name != "beat") return;
    mBeat = readFloat(value);
    mBeatTime = time;
}

void Rings::updateSpline(float, const std::string& name, float value)
{
    if (name == "count")
        mCount = value;
    else if (name == "alpha")
        mAlpha = value;
}

void Rings::update(float time, float, float)
{
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);

    FullScreenFrame frame;
    const float swell = 1 + mBeat * std::exp2((mBeatTime - time) / HALF_LIFE);
    const int count = static_cast<int>(std::clamp(mCount, 0.0f, static_cast<float>(MOST_RINGS)));
    for (int i = 0; i < count; ++i)
    {
        const float share = static_cast<float>(i + 1) / static_cast<float>(count);
        glColor4f(0.9f, 0.35f + 0.4f * share, 0.2f + 0.6f * share, mAlpha * (1.1f - share));
        drawRing(share * swell, share * swell + 0.02f);
    }
}
