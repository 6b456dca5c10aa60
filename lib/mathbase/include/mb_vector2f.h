#pragma once

namespace MathBase
{

// Two floats; what they mean is the owner's business (a time and a value in a curve's key).
struct Vector2f
{
    Vector2f() = default;
    Vector2f(float pX, float pY) : x(pX), y(pY) {}

    float x = 0.0f;
    float y = 0.0f;
};

inline Vector2f operator+(const Vector2f& a, const Vector2f& b)
{
    return Vector2f(a.x + b.x, a.y + b.y);
}
inline Vector2f operator-(const Vector2f& a, const Vector2f& b)
{
    return Vector2f(a.x - b.x, a.y - b.y);
}
inline Vector2f operator*(float factor, const Vector2f& v)
{
    return Vector2f(factor * v.x, factor * v.y);
}

} // namespace MathBase
