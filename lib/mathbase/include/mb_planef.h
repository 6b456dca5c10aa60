#pragma once

#include "mb_vector3f.h"

#include <cassert>
#include <cmath>

namespace MathBase
{

// The plane n . p + d = 0 with the normal n = (x, y, z). A point is on its inner side when n . p + d is positive. A new
// plane has every point on its inner side.
struct Planef
{
    Planef() = default;
    Planef(float normalX, float normalY, float normalZ, float distance)
        : x(normalX), y(normalY), z(normalZ), d(distance)
    {
    }

    // The signed distance of a point, in lengths of the normal.
    float distanceTo(const Vector3f& p) const { return x * p.x + y * p.y + z * p.z + d; }

    float normalLength() const { return std::sqrt(x * x + y * y + z * z); }

    // Brings the normal to the length 1, and d with it. The length must be above 1E-10; a plane from data that may be
    // degenerate asks normalLength() first.
    void normalize() { divide(normalLength()); }

    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    float d = 1.0f;

private:
    static void checkLength(float d) { assert(d>1E-10); }

    void divide(float length)
    {
        checkLength(length);
        x /= length;
        y /= length;
        z /= length;
        d /= length;
    }
};

} // namespace MathBase
