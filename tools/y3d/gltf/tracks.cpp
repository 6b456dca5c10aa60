#include "tracks.h"

#include <algorithm>

namespace gltf
{

namespace
{

using y3d::TrackBlenderFloat;

int interpolationOf(Sampler::Mode mode)
{
    return mode == Sampler::STEP     ? TrackBlenderFloat::INTERPOLATION_CONSTANT
           : mode == Sampler::LINEAR ? TrackBlenderFloat::INTERPOLATION_LINEAR
                                     : TrackBlenderFloat::INTERPOLATION_BEZIER;
}

MathBase::Vector2f point(double time, double value)
{
    return {static_cast<float>(time), static_cast<float>(value)};
}

// Without keys where nothing moves, unless they are to be `kept`.
void setCurve(TrackBlenderFloat* curve, const Sampler& sampler, int component, bool kept)
{
    const std::vector<Sampler::Key>& keys = sampler.keys;
    curve->clear();
    curve->mBaseValue = static_cast<float>(keys.front().value[component]);
    const bool moves = std::any_of(keys.begin(), keys.end(), [&](const Sampler::Key& key) {
        const bool isLevel = key.in.empty() || (key.in[component] == 0.0 && key.out[component] == 0.0);
        return key.value[component] != keys.front().value[component] || !isLevel;
    });
    if (!moves && !kept) return;

    curve->mInterpolation = interpolationOf(sampler.mode);
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        const Sampler::Key& key = keys[i];
        const double value = key.value[component];
        const double before = (i > 0 ? key.time - keys[i - 1].time : 1.0) / 3.0;
        const double behind = (i + 1 < keys.size() ? keys[i + 1].time - key.time : 1.0) / 3.0;
        double in = 0.0, out = 0.0;
        if (sampler.mode == Sampler::CUBIC)
        {
            in = key.in[component];
            out = key.out[component];
        }
        else if (sampler.mode == Sampler::LINEAR)
        {
            in = i > 0 && before > 0 ? (value - keys[i - 1].value[component]) / (3.0 * before) : 0.0;
            out = i + 1 < keys.size() && behind > 0 ? (keys[i + 1].value[component] - value) / (3.0 * behind) : 0.0;
        }
        curve->mKeys.push_back({point(key.time - before, value - before * in), point(key.time, value),
                                point(key.time + behind, value + behind * out)});
    }
}

} // namespace

void setTrack(y3d::TrackVector3f* track, const Sampler& sampler)
{
    setCurve(&track->mX, sampler, 0, false);
    setCurve(&track->mY, sampler, 1, false);
    setCurve(&track->mZ, sampler, 2, false);
}

void setTrack(y3d::TrackFloat* track, const Sampler& sampler)
{
    setCurve(&track->mCurve, sampler, 0, false);
}

void setTrack(y3d::TrackColor4f* track, const Sampler& sampler)
{
    setCurve(&track->mR, sampler, 0, false);
    setCurve(&track->mG, sampler, 1, false);
    setCurve(&track->mB, sampler, 2, false);
    track->mA.mBaseValue = 1.0f;
}

void setTrack(y3d::TrackQuatf* track, const Sampler& sampler)
{
    const Sampler keys = sampler.mode == Sampler::CUBIC ? sampler : refinedRotation(sampler, TURN_TOLERANCE);
    // All four or none: a base value is brought to length 1 by its reader, and half of one would not fit the curves.
    const bool moves = !keys.isConstant();
    track->mEuler = false;
    setCurve(&track->mW, keys, 0, moves);
    setCurve(&track->mX, keys, 1, moves);
    setCurve(&track->mY, keys, 2, moves);
    setCurve(&track->mZ, keys, 3, moves);
}

void setTrack(y3d::TrackVector3f* track, const Vec3& value)
{
    setTrack(track, Sampler{Sampler::STEP, {{0.0, {value[0], value[1], value[2]}, {}, {}}}});
}

void setTrack(y3d::TrackQuatf* track, const Quat& value)
{
    const Quat unit = normalized(value);
    setTrack(track, Sampler{Sampler::STEP, {{0.0, {unit.w, unit.x, unit.y, unit.z}, {}, {}}}});
}

} // namespace gltf
