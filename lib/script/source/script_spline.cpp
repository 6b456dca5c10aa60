#include "script_spline.h"

#include <algorithm>
#include <cmath>

namespace Script
{

namespace
{

using Key = Spline::Key;

// Index of the last key in list order that lies strictly before `u`, 0 if there is none.
std::size_t findSegment(const std::vector<Key*>& keys, float u)
{
    std::size_t i = keys.size() - 1;
    while (i > 0 && !(u > keys[i]->time)) --i;
    return i;
}

// How far `u` lies on the way from key `a` to key `b`, 0 to 1.
float fraction(float u, const Key& a, const Key& b)
{
    return (u - a.time) / (b.time - a.time);
}

float linear(float u, const Key& a, const Key& b)
{
    return a.value + fraction(u, a, b) * (b.value - a.value);
}

// The keys a and c are the ends of the group, b pulls the curve. The weight of b is that of c, not the 2 f g of a
// quadratic Bezier curve, and b's time plays no part: scripts are made by eye for this shape.
float bezier(float u, const Key& a, const Key& b, const Key& c)
{
    const float f = fraction(u, a, c);
    const float g = 1.0f - f;
    return g * g * a.value + f * f * b.value + f * f * c.value;
}

// The cubic over one segment, f from 0 to 1, with the tangents in value units per segment (Hermite):
// p0 + m0 f + c2 f^2 + c3 f^3.
struct Cubic
{
    Cubic(const Key& a, const Key& b)
        : p0(a.value), m0(a.tangent), c2(3.0f * (b.value - a.value) - 2.0f * a.tangent - b.tangent),
          c3(2.0f * (a.value - b.value) + a.tangent + b.tangent)
    {
    }

    float at(float f) const { return p0 + m0 * f + c2 * (f * f) + c3 * (f * f * f); }

    float p0, m0, c2, c3;
};

// The tangent of the inner key `c` between `p` and `n`: the slopes to both sides, the nearer neighbour counting more.
float innerTangent(const Key& p, const Key& c, const Key& n)
{
    const float a = c.time - p.time;
    const float b = n.time - c.time;
    return ((n.value - c.value) * a - (p.value - c.value) * b) / (a + b);
}

void setTangents(const std::vector<Key*>& keys)
{
    const std::size_t count = keys.size();
    if (count == 0) return;
    if (count == 1)
    {
        keys[0]->tangent = 0.0f;
        return;
    }
    keys[0]->tangent = keys[1]->value - keys[0]->value;
    for (std::size_t i = 1; i + 1 < count; ++i) keys[i]->tangent = innerTangent(*keys[i - 1], *keys[i], *keys[i + 1]);
    keys[count - 1]->tangent = keys[count - 1]->value - keys[count - 2]->value;
}

} // namespace

Spline::~Spline()
{
    for (Key* key : mKeys) delete key;
}

float Spline::getSplineValue(float time) const
{
    if (mKeys.empty()) return mValueOffset;

    const float u = (time - mTimeOffset) / mTimeScale;
    const std::size_t i = findSegment(mKeys, u);
    const std::size_t last = mKeys.size() - 1;
    const Key& key = *mKeys[i];
    float value;
    if (mKeys[0]->time > u || i == last || mType == "square")
        value = key.value;
    else if (mType == "linear" || (mType == "bezier" && i + 1 == last))
        value = linear(u, key, *mKeys[i + 1]);
    else if (mType == "bezier")
    {
        const std::size_t group = 2 * (i / 2);
        value = bezier(u, *mKeys[group], *mKeys[group + 1], *mKeys[group + 2]);
    }
    else
        value = Cubic(key, *mKeys[i + 1]).at(fraction(u, key, *mKeys[i + 1]));
    return value * mValueScale + mValueOffset;
}

void Spline::recalculate()
{
    mMax = mMin = mKeys.empty() ? 0.0f : mKeys[0]->value;
    const bool isSmooth = mType == "smooth";
    if (isSmooth) setTangents(mKeys);
    for (const Key* key : mKeys) widen(key->value);

    for (std::size_t i = 0; isSmooth && i + 1 < mKeys.size(); ++i)
    {
        // Two points of the segment where the curve may leave the range of its ends.
        const Cubic cubic(*mKeys[i], *mKeys[i + 1]);
        const float x = 3.0f * cubic.m0 - cubic.c2;
        if (!(std::fabs(cubic.c2) > 0.0001f && x > 0.0001f)) continue;
        const float r = std::sqrt(x) * -cubic.c2 / (3.0f * cubic.c2);
        for (const float u : {r - 0.33333334f, -(r + 0.33333334f)})
        {
            if (0.0f <= u && u < 1.0f) widen(cubic.at(u));
        }
    }
    mAbsMax = std::max(std::fabs(mMax), std::fabs(mMin));
}

void Spline::update(Callback* callback, float time)
{
    callback->updateSpline(time, mName, getSplineValue(time));
}

void Spline::widen(float value)
{
    mMax = std::max(mMax, value);
    mMin = std::min(mMin, value);
}

} // namespace Script
