#include "y3d_trackblenderfloat.h"

#include "cl_readbuffer.h"
#include "cl_writebuffer.h"

#include <cmath>
#include <cstdio>

namespace y3d
{

using MathBase::Vector2f;

// Keys go between memory and file in one step.
static_assert(sizeof(TrackBlenderFloat::Key) == 24, "a key lies in memory as in a file, as six floats without gaps");

namespace
{

const unsigned int MODES_SIZE = 2; // two bytes in front of the keys

// Collects the roots of a segment's time polynomial. A root that lies outside the segment is overwritten by the next.
class RootList
{
public:
    explicit RootList(float* roots) : mRoots(roots) {}

    void add(double root)
    {
        const float rounded = static_cast<float>(root);
        mRoots[mCount] = rounded;
        // A little more than 0 to 1: the ends belong to the segment, whatever the rounding made of them.
        if (rounded >= -1e-10 && rounded <= 1.000001) ++mCount;
    }

    int getCount() const { return mCount; }

private:
    float* mRoots;
    int mCount = 0;
};

// u^3 + 3 a u^2 + b u + c = 0 by Cardano's formulas. With u = y - a it becomes y^3 + 3 p y + 2 q = 0, whose
// discriminant d tells the number of real roots.
void solveCubic(double a, double b, double c, RootList& roots)
{
    const double p = b / 3.0 - a * a;
    const double q = (2.0 * a * a * a - a * b + c) / 2.0;
    const double d = q * q + p * p * p;

    if (d > 0.0)
    {
        const double t = std::sqrt(d);
        roots.add(Sqrt3d(t - q) + Sqrt3d(-q - t) - a);
    }
    else if (d == 0.0)
    {
        const double t = Sqrt3d(-q);
        roots.add(2.0 * t - a);
        roots.add(-t - a);
    }
    else if (d < 0.0)
    {
        const double phi = std::acos(-q / std::sqrt(-(p * p * p)));
        const double t = std::sqrt(-p);
        const double cp = std::cos(phi / 3.0);
        const double sp = std::sqrt(3.0 - 3.0 * cp * cp);
        roots.add(2.0 * t * cp - a);
        roots.add(-t * (cp + sp) - a);
        roots.add(-t * (cp - sp) - a);
    }
}

// c2 u^2 + c1 u + c0 = 0
void solveQuadratic(double c2, double c1, double c0, RootList& roots)
{
    const double e = c1 * c1 - 4.0 * c2 * c0;
    if (e > 0.0)
    {
        const double root = std::sqrt(e);
        roots.add((-c1 - root) / (2.0 * c2));
        roots.add((-c1 + root) / (2.0 * c2));
    }
    else if (e == 0.0)
    {
        roots.add(-c1 / (2.0 * c2));
    }
}

// The value on the straight line through two points.
float alongLine(const Vector2f& from, const Vector2f& to, float time)
{
    const float a = (time - from.x) / (to.x - from.x);
    return (1.0f - a) * from.y + a * to.y;
}

} // namespace

double Sqrt3d(double x)
{
    if (x == 0.0) return 0.0;
    return x < 0.0 ? -std::exp(std::log(-x) / 3.0) : std::exp(std::log(x) / 3.0);
}

void TrackBlenderFloat::clear()
{
    *this = TrackBlenderFloat();
}

void TrackBlenderFloat::loadKeys(ChunkLib::ReadBuffer& buffer)
{
    buffer.read(mInterpolation);
    buffer.read(mExtrapolation);

    const unsigned int length = buffer.getLength();
    mKeys.clear();
    mLastKey = -1;
    mKeys.resize(length < MODES_SIZE ? 0 : (length - MODES_SIZE) / sizeof(Key));
    buffer.readBytes(mKeys.data(), static_cast<unsigned int>(mKeys.size() * sizeof(Key)));
    if (mInterpolation == INTERPOLATION_BEZIER) correctHandles();
}

// Where the two handles inside a segment together are longer in time than the segment, both are scaled down so that
// they end at the same time.
void TrackBlenderFloat::correctHandles()
{
    for (std::size_t i = 0; i + 1 < mKeys.size(); ++i)
    {
        Key& a = mKeys[i];
        Key& b = mKeys[i + 1];
        const Vector2f h1 = a.mPoint - a.mHandleOut;
        const Vector2f h2 = b.mPoint - b.mHandleIn;
        const float len = b.mPoint.x - a.mPoint.x;
        const float sum = std::fabs(h1.x) + std::fabs(h2.x);
        if (sum == 0.0f || !(sum > len)) continue;

        const float fac = len / sum;
        a.mHandleOut = a.mPoint - fac * h1;
        b.mHandleIn = b.mPoint - fac * h2;
    }
}

void TrackBlenderFloat::writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const
{
    if (mKeys.empty()) return;

    buffer.openChunk(id);
    buffer.write(mInterpolation);
    buffer.write(mExtrapolation);
    for (const Key& key : mKeys) buffer.writeBytes(&key, sizeof key);
    buffer.closeChunk();
}

float TrackBlenderFloat::getValue(float time) const
{
    if (mKeys.empty()) return mBaseValue;

    const Key& first = mKeys.front();
    const Key& last = mKeys.back();
    const float duration = last.mPoint.x - first.mPoint.x;
    float t = time;
    float offset = 0.0f;
    float value;

    if (time < first.mPoint.x)
    {
        if (extrapolate(first.mPoint, first.mHandleIn, time, &value)) return value;
        wrap(time, first.mPoint.x + duration, &t, &offset);
    }
    if (time >= last.mPoint.x)
    {
        if (extrapolate(last.mPoint, last.mHandleOut, time, &value)) return value;
        wrap(time, first.mPoint.x, &t, &offset);
    }

    const int segment = findSegment(t);
    if (segment == -1) return last.mPoint.y + offset;
    return evaluateSegment(mKeys[segment], mKeys[segment + 1], t, offset);
}

// The value at a time outside the keys, of which `end` is the nearest and `handle` its outer handle. False when the
// mode takes it from another time instead.
bool TrackBlenderFloat::extrapolate(const Vector2f& end, const Vector2f& handle, float time, float* value) const
{
    // A single key, or several at one time, make no cycle.
    const bool cyclic = mExtrapolation == EXTRAPOLATION_CYCLIC || mExtrapolation == EXTRAPOLATION_CYCLIC_OFFSET;
    const bool instant = mKeys.front().mPoint.x == mKeys.back().mPoint.x;
    const bool constant = mExtrapolation == EXTRAPOLATION_CONSTANT || (cyclic && instant);
    if (!constant && mExtrapolation != EXTRAPOLATION_LINEAR) return false;

    // Along the handle; a handle at its key's own time has no direction to follow in time, and the key's value stays.
    const bool flat = constant || mInterpolation == INTERPOLATION_CONSTANT || handle.x == end.x;
    *value = flat ? end.y : alongLine(end, handle, time);
    return true;
}

// Brings a time outside the keys into their range: `*t` becomes the time within it, `*offset` what the cycles in
// between have added. `cycleStart` is the end of the range that a remainder, with the sign of its dividend, counts
// from. At whole cycles rounding can leave the range: what comes out ahead of the first key is meant to be at it, and
// in a cycle without offset what comes out behind the last key to be at that one.
void TrackBlenderFloat::wrap(float time, float cycleStart, float* t, float* offset) const
{
    const Vector2f& first = mKeys.front().mPoint;
    const Vector2f& last = mKeys.back().mPoint;
    const float duration = last.x - first.x;
    if (mExtrapolation == EXTRAPOLATION_CYCLIC)
    {
        *t = cycleStart + std::fmod(time - first.x, duration);
        if (first.x<last.x&& * t> last.x) *t = last.x;
    }
    else if (mExtrapolation == EXTRAPOLATION_CYCLIC_OFFSET)
    {
        const float cycle = std::floor((time - first.x) / duration);
        *t = time - cycle * duration;
        *offset = cycle * (last.y - first.y);
    }
    else
    {
        return; // an unknown mode
    }
    if (first.x < last.x && *t < first.x) *t = first.x;
}

// True when there is such a segment and the time lies from its first key up to but not at its second.
bool TrackBlenderFloat::isSegment(int segment, float time) const
{
    return segment >= 0 && segment < static_cast<int>(mKeys.size()) - 1 && mKeys[segment].mPoint.x <= time &&
           time < mKeys[segment + 1].mPoint.x;
}

// The segment that holds the time, or -1. Two keys have only one segment, which takes all times that extrapolation has
// brought here, but for two: in an unknown mode it has brought nothing, and the time may lie outside; and where a cycle
// with offset was rounded to its end or behind it, only a straight line goes on there without a jump.
int TrackBlenderFloat::findSegment(float time) const
{
    if (mKeys.size() == 2)
    {
        if (mExtrapolation > EXTRAPOLATION_CYCLIC_OFFSET && !isSegment(0, time)) return -1;
        const bool jumps = mExtrapolation == EXTRAPOLATION_CYCLIC_OFFSET && mInterpolation != INTERPOLATION_LINEAR;
        if (jumps && mKeys[0].mPoint.x < mKeys[1].mPoint.x && time >= mKeys[1].mPoint.x) return -1;
        return mLastKey = 0;
    }

    if (mLastKey != -1)
    {
        if (isSegment(mLastKey, time)) return mLastKey;
        if (isSegment(mLastKey + 1, time)) return ++mLastKey;
    }

    const int count = static_cast<int>(mKeys.size());
    int lo = 0;
    int hi = count - 1;
    while (lo <= hi)
    {
        const int mid = (lo + hi) / 2;
        if (mKeys[mid].mPoint.x > time)
        {
            hi = mid - 1;
        }
        else if (mid + 1 < count && time < mKeys[mid + 1].mPoint.x)
        {
            return mLastKey = mid;
        }
        else
        {
            lo = mid + 1;
        }
    }
    return -1;
}

// The value between two keys, with `offset` added. Keys out of order leave every time outside them; that is told, and
// the curve is followed all the same.
float TrackBlenderFloat::evaluateSegment(const Key& a, const Key& b, float time, float offset) const
{
    if (a.mPoint.x > b.mPoint.x)
    {
        std::printf("error (%f,%f),%f!\n", a.mPoint.x, b.mPoint.x, time);
    }

    if (mInterpolation == INTERPOLATION_LINEAR) return alongLine(a.mPoint, b.mPoint, time) + offset;
    if (mInterpolation != INTERPOLATION_BEZIER) return a.mPoint.y + offset;

    float roots[3];
    if (solveForTime(a, b, time, roots) == 0)
    {
        std::printf("error, solveForTime returned zero\n");
        return a.mPoint.y + offset;
    }
    const float u = roots[0];
    const float v = 1.0f - u;
    return v * v * v * a.mPoint.y + 3.0f * v * v * u * a.mHandleOut.y + 3.0f * v * u * u * b.mHandleIn.y +
           u * u * u * b.mPoint.y + offset;
}

int TrackBlenderFloat::solveForTime(const Key& a, const Key& b, float time, float* roots) const
{
    const double q0 = a.mPoint.x;
    const double q1 = a.mHandleOut.x;
    const double q2 = b.mHandleIn.x;
    const double q3 = b.mPoint.x;

    // The Bezier polynomial by powers of u, less the time: c3 u^3 + c2 u^2 + c1 u + c0 = 0
    const double c0 = q0 - time;
    const double c1 = 3.0 * (q1 - q0);
    const double c2 = 3.0 * (q0 - 2.0 * q1 + q2);
    const double c3 = q3 - q0 + 3.0 * (q1 - q2);

    RootList found(roots);
    if (c3 != 0.0)
    {
        solveCubic(c2 / c3 / 3.0, c1 / c3, c0 / c3, found);
    }
    else if (c2 != 0.0)
    {
        solveQuadratic(c2, c1, c0, found);
    }
    else if (c1 != 0.0)
    {
        found.add(-c0 / c1);
    }
    else if (c0 == 0.0)
    {
        found.add(0.0); // all of the segment lies at one time
    }
    return found.getCount();
}

bool TrackBlenderFloat::isStatic() const
{
    return mKeys.empty() || (mKeys.size() == 1 && mExtrapolation == EXTRAPOLATION_CONSTANT);
}

} // namespace y3d
