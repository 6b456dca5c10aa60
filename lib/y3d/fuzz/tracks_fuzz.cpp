// Loads any bytes as a scene file and evaluates all its animation tracks: at the keys, between them, around them, and
// at times that are no times. Rotations are always sound, and of a curve with keys in order each value is the same
// whether the segment before was remembered or not.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "y3d_armature.h"
#include "y3d_camera.h"
#include "y3d_exception.h"
#include "y3d_light.h"
#include "y3d_manager.h"
#include "y3d_scene.h"

using namespace y3d;

namespace
{

std::vector<float> timesFor(const TrackBlenderFloat& curve)
{
    std::vector<float> times = {0.0f, -1e30f, 1e9f, -INFINITY, INFINITY, std::nanf("")};
    const std::size_t count = std::min<std::size_t>(curve.mKeys.size(), 32);
    for (std::size_t i = 0; i < count; ++i)
    {
        const float time = curve.mKeys[i].mPoint.x;
        const float duration = curve.mKeys.back().mPoint.x - curve.mKeys.front().mPoint.x;
        for (const float factor : {0.0f, 0.01f, -1.0f, 2.7f, -3.3f}) times.push_back(time + factor * duration);
        times.push_back(0.5f * (time + curve.mKeys[std::min(i + 1, count - 1)].mPoint.x));
    }
    return times;
}

// Also for times that are no numbers.
bool isOutOfOrder(const TrackBlenderFloat::Key& a, const TrackBlenderFloat::Key& b)
{
    return !(a.mPoint.x <= b.mPoint.x);
}

// The roots that are valid lie within the segment, by a little more than rounding.
void solve(const TrackBlenderFloat& curve, const TrackBlenderFloat::Key& a, const TrackBlenderFloat::Key& b)
{
    for (const float time : {a.mPoint.x, b.mPoint.x, 0.5f * (a.mPoint.x + b.mPoint.x), 2.0f * b.mPoint.x})
    {
        float roots[3];
        const int count = curve.solveForTime(a, b, time, roots);
        if (std::any_of(roots, roots + count, [](float root) { return !(root >= -1e-9f && root <= 1.00001f); }))
        {
            std::abort();
        }
    }
}

void evaluate(const TrackBlenderFloat& curve)
{
    TrackBlenderFloat fresh = curve;
    const bool sorted = std::adjacent_find(curve.mKeys.begin(), curve.mKeys.end(), isOutOfOrder) == curve.mKeys.end();
    for (const float time : timesFor(curve))
    {
        fresh.mLastKey = -1;
        const float value = curve.getValue(time);
        const float again = fresh.getValue(time);
        if (sorted && !(value == again) && !(std::isnan(value) && std::isnan(again))) std::abort();
    }
    for (std::size_t i = 1; i < curve.mKeys.size(); ++i) solve(curve, curve.mKeys[i - 1], curve.mKeys[i]);
    curve.isStatic();
}

void evaluate(const TrackVector3f& track)
{
    for (const TrackBlenderFloat* curve : {&track.mX, &track.mY, &track.mZ}) evaluate(*curve);
    track.getValue(1.0f);
    track.isStatic();
}

void evaluate(const TrackQuatf& track)
{
    for (const TrackBlenderFloat* curve : {&track.mW, &track.mX, &track.mY, &track.mZ})
    {
        evaluate(*curve);
        for (const float time : timesFor(*curve))
        {
            const float length = track.getValue(time).length();
            if (!(std::fabs(length - 1.0f) < 1e-3f)) std::abort();
        }
    }
    track.isStatic();
}

void evaluate(const TrackColor4f& track)
{
    for (const TrackBlenderFloat* curve : {&track.mR, &track.mG, &track.mB, &track.mA}) evaluate(*curve);
    track.getValue(1.0f);
}

void evaluate(const Armature::Bone& bone)
{
    evaluate(bone.mRotation);
    for (const Armature::Bone* child : bone.mChildren) evaluate(*child);
}

void evaluate(const SceneNode& node)
{
    evaluate(node.getPosition());
    evaluate(node.getRotation());
    evaluate(node.getScale());
    if (const Camera* camera = dynamic_cast<const Camera*>(&node)) evaluate(camera->getFov().mCurve);
    if (const Armature* armature = dynamic_cast<const Armature*>(&node)) evaluate(armature->mBoneRoot);
    if (const Light* light = dynamic_cast<const Light*>(&node))
    {
        evaluate(light->getLightColor());
        evaluate(light->getDistance().mCurve);
        evaluate(light->getEnergy().mCurve);
    }
    for (const SceneNode* child : node.mChildren) evaluate(*child);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Manager manager;
    try
    {
        manager.load(data, static_cast<int>(size));
    }
    catch (const Exception&)
    {
        return 0; // no scene file
    }
    for (const Scene* scene : manager.mScenes) evaluate(*scene);
    return 0;
}
