#pragma once

#include "y3d_color4f.h"

namespace gltf
{

// Colours of glTF are amounts of light, those of the show are what a screen is given. These are the two ways of the
// usual curve between them (sRGB), which goes on above 1.
double toScreen(double light);
double toLight(double screen);

// How a surface of glTF shines, in the terms of OpenGL. With a = roughness squared, a highlight is as wide as that of
// the exponent n = 2 / a^2 - 2 (Blinn's model), and its strength is F (n + 2) / 8, where F, what is mirrored straight
// ahead, goes from 0.04 to the colour itself as the surface turns to metal. OpenGL's exponent ends at 127.
struct Shine
{
    y3d::Color4f specular;
    float hardness; // twice the exponent, as Y3D has it
};
Shine shineOf(const y3d::Color4f& color, double roughness, double metalness);

// The roughness of a hardness, and how much of a metal comes nearest to a highlight of such a colour.
double roughnessOf(float hardness);
double metalnessOf(const y3d::Color4f& color, const y3d::Color4f& specular, float hardness);

} // namespace gltf
