#pragma once

#include "mb_vector3f.h"

#include <cassert>
#include <cmath>

namespace MathBase
{

// A rotation as a quaternion, w first. A new one does not rotate.
struct Quatf
{
    Quatf() = default;
    Quatf(float pW, float pX, float pY, float pZ) : w(pW), x(pX), y(pY), z(pZ) {}

    float length() const { return std::sqrt(w * w + x * x + y * y + z * z); }

    // Brings the length to 1. It must be above 1E-10; values from outside go through normalizeOrIdentity().
    void normalize()
    {
        const float length = this->length();
        assert(length>1E-10);
        w /= length;
        x /= length;
        y /= length;
        z /= length;
    }

    // The same for values from a file: what has no usable length (zero, too small or too large for a float, not a
    // number) becomes the rotation that does nothing.
    void normalizeOrIdentity()
    {
        const float length = this->length();
        if (length > 1E-10 && std::isfinite(length))
        {
            normalize();
        }
        else
        {
            *this = Quatf();
        }
    }

    // The opposite rotation: the conjugate divided by the squared norm, which must be above 1E-13.
    void invert()
    {
        const float norm2 = w * w + x * x + y * y + z * z;
        assert(norm2>1E-13);
        w /= norm2;
        x /= -norm2;
        y /= -norm2;
        z /= -norm2;
    }

    // The rotation of Blender's euler angles, in radians. The result is not normalised.
    void fromBlenderEuler(const Vector3f& e)
    {
        const float ci = std::cos(e.x * 0.5f), si = std::sin(e.x * 0.5f);
        const float cj = std::cos(e.y * 0.5f), sj = std::sin(e.y * 0.5f);
        const float ch = std::cos(e.z * 0.5f), sh = std::sin(e.z * 0.5f);

        w = cj * ci * ch + sj * si * sh;
        x = cj * si * ch - sj * ci * sh;
        y = cj * ci * sh - sj * si * ch;
        z = -(sj * ci * ch + cj * si * sh);
    }

    float w = 1.0f;
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
};

} // namespace MathBase
