#include "sampler.h"

#include <algorithm>
#include <cmath>

namespace gltf
{

namespace
{

const int MAX_PARTS = 64; // of a half turn; 16 are enough for a tenth of a degree

Quat toQuat(const std::vector<double>& v)
{
    return {v[0], v[1], v[2], v[3]};
}

std::vector<double> toVector(const Quat& q)
{
    return {q.w, q.x, q.y, q.z};
}

std::vector<double> hermite(const Sampler::Key& a, const Sampler::Key& b, double s)
{
    const double length = b.time - a.time;
    const double s2 = s * s, s3 = s2 * s;
    std::vector<double> value(a.value.size());
    for (std::size_t i = 0; i < value.size(); ++i)
    {
        value[i] = (2 * s3 - 3 * s2 + 1) * a.value[i] + (s3 - 2 * s2 + s) * length * a.out[i] +
                   (3 * s2 - 2 * s3) * b.value[i] + (s3 - s2) * length * b.in[i];
    }
    return value;
}

template <class Map> Sampler mapped(const Sampler& sampler, const Map& map)
{
    Sampler result = sampler;
    for (Sampler::Key& key : result.keys)
    {
        key.value = map(key.value, true);
        if (!key.in.empty()) key.in = map(key.in, false);
        if (!key.out.empty()) key.out = map(key.out, false);
    }
    return result;
}

// The largest angle between a turn at a constant speed and the straight way through the components.
double errorOfStraightWay(const Quat& a, const Quat& b, int parts)
{
    const Quat end = slerp(a, b, 1.0 / parts);
    double largest = 0.0;
    for (const double s : {0.15, 0.21, 0.3})
    {
        const Quat straight = normalized(
            {a.w + s * (end.w - a.w), a.x + s * (end.x - a.x), a.y + s * (end.y - a.y), a.z + s * (end.z - a.z)});
        largest = std::max(largest, angleBetween(straight, slerp(a, end, s)));
    }
    return largest;
}

} // namespace

std::vector<double> Sampler::getValue(double time) const
{
    const auto next = std::upper_bound(keys.begin(), keys.end(), time,
                                       [](double moment, const Key& key) { return moment < key.time; });
    if (next == keys.begin()) return keys.front().value;
    const Key& a = *(next - 1);
    if (next == keys.end() || mode == STEP) return a.value;

    const Key& b = *next;
    const double s = (time - a.time) / (b.time - a.time);
    const bool isRotation = a.value.size() == 4;
    if (mode == CUBIC) return hermite(a, b, s);
    if (isRotation) return toVector(slerp(normalized(toQuat(a.value)), normalized(toQuat(b.value)), s));

    std::vector<double> value(a.value.size());
    for (std::size_t i = 0; i < value.size(); ++i) value[i] = a.value[i] + s * (b.value[i] - a.value[i]);
    return value;
}

Vec3 Sampler::getVector(double time) const
{
    const std::vector<double> value = getValue(time);
    return {value[0], value[1], value[2]};
}

Quat Sampler::getRotation(double time) const
{
    return normalized(toQuat(getValue(time)));
}

bool Sampler::isConstant() const
{
    const auto isZero = [](const std::vector<double>& tangent) {
        return std::all_of(tangent.begin(), tangent.end(), [](double part) { return part == 0.0; });
    };
    return std::all_of(keys.begin(), keys.end(), [&](const Key& key) {
        return key.value == keys.front().value && isZero(key.in) && isZero(key.out);
    });
}

Sampler Sampler::moved(const Affine& map) const
{
    return mapped(*this, [&](const std::vector<double>& v, bool isPoint) {
        const Vec3 source = {v[0], v.size() > 1 ? v[1] : 0.0, v.size() > 2 ? v[2] : 0.0};
        const Vec3 result = isPoint ? map * source : map.linear * source;
        return std::vector<double>(result.begin(), result.end());
    });
}

Sampler Sampler::turned(const Quat& before, const Quat& behind) const
{
    return mapped(*this, [&](const std::vector<double>& v, bool) { return toVector(before * toQuat(v) * behind); });
}

Sampler refinedRotation(const Sampler& sampler, double tolerance)
{
    Sampler result;
    result.mode = sampler.mode;
    for (const Sampler::Key& key : sampler.keys)
    {
        Quat rotation = normalized(toQuat(key.value));
        if (!result.keys.empty())
        {
            const Sampler::Key last = result.keys.back();
            const Quat before = toQuat(last.value);
            if (dot(before, rotation) < 0) rotation = {-rotation.w, -rotation.x, -rotation.y, -rotation.z};

            int parts = 1;
            while (sampler.mode == Sampler::LINEAR && parts < MAX_PARTS &&
                   errorOfStraightWay(before, rotation, parts) > tolerance)
                ++parts;
            for (int i = 1; i < parts; ++i)
            {
                const double s = static_cast<double>(i) / parts;
                result.keys.push_back(
                    {last.time + s * (key.time - last.time), toVector(slerp(before, rotation, s)), {}, {}});
            }
        }
        result.keys.push_back({key.time, toVector(rotation), {}, {}});
    }
    return result;
}

} // namespace gltf
