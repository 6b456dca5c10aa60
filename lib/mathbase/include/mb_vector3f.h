#pragma once

#include <cassert>
#include <cmath>

namespace MathBase
{

// A point, a direction or a size in space.
struct Vector3f
{
    Vector3f() = default;
    Vector3f(float pX, float pY, float pZ) : x(pX), y(pY), z(pZ) {}

    // The components by number, 0 to 2.
    float operator[](int index) const
    {
        assert(index>=0 && index<3);
        return index == 0 ? x : index == 1 ? y : z;
    }
    float& operator[](int index)
    {
        assert(index>=0 && index<3);
        return index == 0 ? x : index == 1 ? y : z;
    }

    float length() const { return std::sqrt(x * x + y * y + z * z); }

    // Brings the length to 1. It must be above 1E-10; who has data from outside asks length() first.
    void normalize()
    {
        const float length = this->length();
        assert(length>1E-10);
        x /= length;
        y /= length;
        z /= length;
    }

    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
};

inline Vector3f operator+(const Vector3f& a, const Vector3f& b)
{
    return Vector3f(a.x + b.x, a.y + b.y, a.z + b.z);
}
inline Vector3f operator-(const Vector3f& a, const Vector3f& b)
{
    return Vector3f(a.x - b.x, a.y - b.y, a.z - b.z);
}
inline Vector3f operator*(float factor, const Vector3f& v)
{
    return Vector3f(factor * v.x, factor * v.y, factor * v.z);
}
inline float dot(const Vector3f& a, const Vector3f& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

} // namespace MathBase
