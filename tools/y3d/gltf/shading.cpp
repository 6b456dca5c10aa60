#include "shading.h"

#include <algorithm>
#include <cmath>

namespace gltf
{

namespace
{

const double MIRRORED = 0.04; // by what is no metal
const double MAX_EXPONENT = 127.0;

} // namespace

double toScreen(double light)
{
    if (light <= 0.0031308) return 12.92 * light;
    return 1.055 * std::pow(light, 1.0 / 2.4) - 0.055;
}

double toLight(double screen)
{
    if (screen <= 0.04045) return screen / 12.92;
    return std::pow((screen + 0.055) / 1.055, 2.4);
}

Shine shineOf(const y3d::Color4f& color, double roughness, double metalness)
{
    const double a = std::max(roughness * roughness, 1e-3);
    const double exponent = std::clamp(2.0 / (a * a) - 2.0, 0.0, MAX_EXPONENT);
    const auto part = [&](float own) {
        const double mirrored = MIRRORED + metalness * (own - MIRRORED);
        return static_cast<float>(std::min(mirrored * (exponent + 2.0) / 8.0, 1.0));
    };
    return {{part(color.r), part(color.g), part(color.b), 1.0f}, static_cast<float>(2.0 * exponent)};
}

double roughnessOf(float hardness)
{
    const double exponent = std::clamp(hardness / 2.0, 0.0, MAX_EXPONENT);
    return std::pow(2.0 / (exponent + 2.0), 0.25);
}

double metalnessOf(const y3d::Color4f& color, const y3d::Color4f& specular, float hardness)
{
    const double exponent = std::clamp(hardness / 2.0, 0.0, MAX_EXPONENT);
    const double mirrored = 8.0 * (specular.r + specular.g + specular.b) / 3.0 / (exponent + 2.0);
    const double own = (color.r + color.g + color.b) / 3.0;
    if (own <= MIRRORED) return 0.0;
    return std::clamp((mirrored - MIRRORED) / (own - MIRRORED), 0.0, 1.0);
}

} // namespace gltf
