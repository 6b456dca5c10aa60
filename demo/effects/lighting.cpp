#include "lighting.h"

#include "effect_helpers.h"

namespace
{

const int FLASHES = 20;
const int POINTS = 50;
const int SEGMENTS = POINTS - 1;

} // namespace

void Lighting::setup(AM::ArchiveManager&)
{
    mFlashes.clear();
    float lastRadius = 0; // of the last point of the flash before
    for (int f = 0; f < FLASHES; ++f)
    {
        flash stroke;
        stroke.r = stroke.g = stroke.b = randomUnit() * 0.5f * 0.3f;
        const float basePhaseX = 5555 * randomUnit();
        const float basePhaseY = 5555 * randomUnit();
        const float basePhaseZ = 5555 * randomUnit();
        const float baseSpeedX = 5 * randomUnit() + 5;
        const float baseSpeedY = 5 * randomUnit() + 15;
        const float baseSpeedZ = 5 * randomUnit() + 15;

        stroke.points.push_back({-1, 0.01f, 0, 0, 0, 0, lastRadius});
        for (int i = 1; i < SEGMENTS; ++i)
        {
            point p;
            p.phaseX = basePhaseX + 55 * randomUnit();
            p.phaseY = basePhaseY + 55 * randomUnit();
            p.phaseZ = basePhaseZ + 55 * randomUnit();
            p.speedX = baseSpeedX + randomUnit() / 5;
            p.speedY = baseSpeedY + randomUnit() / 5;
            p.speedZ = baseSpeedZ + randomUnit() / 5;
            p.radius = (randomUnit() / 28) * std::sin(static_cast<float>(i) / 50 * 3.14159265f);
            stroke.points.push_back(p);
            lastRadius = p.radius;
        }
        stroke.points.push_back({1, 0.01f, 0, 0, 0, 0, lastRadius});
        mFlashes.push_back(std::move(stroke));
    }
}

void Lighting::updateSpline(float, const std::string& name, float value)
{
    if (name == "alpha")
        mAlpha = value / 10;
    else if (name == "mod")
        mMod = value / 10;
}

void Lighting::update(float, float delta, float)
{
    glLoadIdentity();
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    glTranslatef(0, -0.05f, -1.8f);

    for (std::size_t f = 0; f < mFlashes.size(); ++f)
    {
        const float share = static_cast<float>(f) / static_cast<float>(mFlashes.size());
        glLineWidth(3);
        if (share < 0.6f) glLineWidth(4);
        if (share < 0.3f) glLineWidth(5);
        drawFlash(mFlashes[f], delta);
    }
}

// The points lie on a straight line and each runs on a small circle about its place there. Where a segment begins, the
// circle is widened by `mod`; where it ends, it is not. A point moves on between the two.
void Lighting::drawFlash(flash& stroke, float delta) const
{
    const point& first = stroke.points.front();
    const point& last = stroke.points.back();
    const float dx = last.phaseX - first.phaseX;
    const float dy = last.phaseY - first.phaseY;
    const float dz = last.phaseZ - first.phaseZ;
    const auto vertex = [&](const point& p, int i, float radius) {
        const float at = static_cast<float>(i);
        glColor4f(stroke.r, stroke.g, stroke.b, mAlpha * std::sin(3.14f * at / SEGMENTS));
        glVertex3f(first.phaseX + dx * at / SEGMENTS + radius * std::sin(p.phaseX),
                   first.phaseY + dy * at / SEGMENTS + radius * std::cos(p.phaseY),
                   first.phaseZ + dz * at / SEGMENTS + radius * std::sin(p.phaseZ));
    };

    glBegin(GL_LINES);
    for (int i = 0; i < SEGMENTS; ++i)
    {
        const point& from = stroke.points[static_cast<std::size_t>(i)];
        point& to = stroke.points[static_cast<std::size_t>(i) + 1];
        vertex(from, i, mMod * from.radius);
        vertex(to, i + 1, to.radius);
        if (i + 1 == SEGMENTS) continue;
        to.phaseX += delta * to.speedX;
        to.phaseY += delta * to.speedY;
        to.phaseZ += delta * to.speedZ;
    }
    glEnd();
}
