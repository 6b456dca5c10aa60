#pragma once

namespace y3d
{

// A colour with alpha; 1 is full. 16 bytes in a file, in this order.
struct Color4f
{
    Color4f() = default;
    Color4f(float red, float green, float blue, float alpha) : r(red), g(green), b(blue), a(alpha) {}

    float r = 0.0f;
    float g = 0.0f;
    float b = 0.0f;
    float a = 0.0f;
};

} // namespace y3d
