#pragma once

#include "mb_matrix4x4col.h"
#include "mb_vector3f.h"

#include <cmath>

namespace MathBase
{

// A box along the axes, told by two corners. A new one is the single point at the origin; the first point of a set goes
// into both corners, the others through includePoint().
struct AABBpointsf
{
    AABBpointsf() = default;
    AABBpointsf(const Vector3f& minimum, const Vector3f& maximum) : mMin(minimum), mMax(maximum) {}

    Vector3f getCenter() const { return 0.5f * (mMin + mMax); }

    // Grows the box as far as p needs, component by component.
    void includePoint(const Vector3f& p)
    {
        for (int i = 0; i < 3; ++i)
        {
            if (p[i] < mMin[i]) mMin[i] = p[i];
            if (p[i] > mMax[i]) mMax[i] = p[i];
        }
    }

    // The box around the eight corners of `box` after the transform; `box` may be this box itself.
    void setTransformed(const AABBpointsf& box, const Matrix4x4Col& m)
    {
        const AABBpointsf source = box;
        for (int i = 0; i < 8; ++i)
        {
            const Vector3f corner(i & 1 ? source.mMax.x : source.mMin.x, i & 2 ? source.mMax.y : source.mMin.y,
                                  i & 4 ? source.mMax.z : source.mMin.z);
            const Vector3f moved = m.transformPoint(corner);
            if (i == 0) mMin = mMax = moved;
            includePoint(moved);
        }
    }

    // The radius of the smallest sphere around the middle of the box that holds both corners.
    float getMinSphereRadiusFromCenter() const
    {
        const Vector3f center = getCenter();
        const Vector3f toMin = mMin - center;
        const Vector3f toMax = mMax - center;
        const float squareMin = toMin.x * toMin.x + toMin.y * toMin.y + toMin.z * toMin.z;
        const float squareMax = toMax.x * toMax.x + toMax.y * toMax.y + toMax.z * toMax.z;
        return std::sqrt(squareMin > squareMax ? squareMin : squareMax);
    }

    Vector3f mMin;
    Vector3f mMax;
};

} // namespace MathBase
