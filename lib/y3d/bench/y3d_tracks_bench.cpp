// Evaluation of animation curves: one curve with few and with many keys, played forwards, backwards and at random, and
// all tracks of a large scene.

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "y3d_trackblenderfloat.h"
#include "y3d_trackquatf.h"
#include "y3d_trackvector3f.h"

using namespace y3d;
using MathBase::Vector2f;

namespace
{

const float KEYS_PER_SECOND = 25.0f;
const float FRAMES_PER_SECOND = 60.0f;

// A wave with smooth handles, a third of a segment long.
TrackBlenderFloat makeCurve(int interpolation, int64_t keys)
{
    TrackBlenderFloat curve;
    curve.mInterpolation = interpolation;
    for (int64_t i = 0; i < keys; ++i)
    {
        const float time = static_cast<float>(i) / KEYS_PER_SECOND;
        const float value = std::sin(time);
        const Vector2f handle(0.3f / KEYS_PER_SECOND, 0.3f / KEYS_PER_SECOND * std::cos(time));
        curve.mKeys.push_back({Vector2f(time, value) - handle, Vector2f(time, value), Vector2f(time, value) + handle});
    }
    return curve;
}

enum Order
{
    FORWARDS,
    BACKWARDS,
    RANDOM
};

// The times of 10,000 frames within the keys, in the order in which they are asked for.
std::vector<float> makeTimes(Order order, int64_t keys)
{
    const float duration = static_cast<float>(keys - 1) / KEYS_PER_SECOND;
    std::vector<float> times(10000);
    unsigned int state = 1;
    for (std::size_t i = 0; i < times.size(); ++i)
    {
        state = state * 1664525u + 1013904223u;
        const float frame = std::fmod(static_cast<float>(i) / FRAMES_PER_SECOND, duration);
        times[i] = order == FORWARDS    ? frame
                   : order == BACKWARDS ? duration - frame
                                        : static_cast<float>(state >> 8) / 16777216.0f * duration;
    }
    return times;
}

// One value of a curve; the argument is its number of keys.
void getValue(benchmark::State& state, int interpolation, Order order)
{
    const TrackBlenderFloat curve = makeCurve(interpolation, state.range(0));
    const std::vector<float> times = makeTimes(order, state.range(0));
    std::size_t i = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(curve.getValue(times[i]));
        if (++i == times.size()) i = 0;
    }
}

// The position, rotation and scale of 10,000 nodes for one frame: three, four and three curves of ten keys each.
void tracksOf10000Nodes(benchmark::State& state, int interpolation)
{
    struct Node
    {
        TrackVector3f position;
        TrackQuatf rotation;
        TrackVector3f scale;
    };
    Node node;
    const TrackBlenderFloat curve = makeCurve(interpolation, 10);
    node.position.mX = node.position.mY = node.position.mZ = curve;
    node.rotation.mW = node.rotation.mX = node.rotation.mY = node.rotation.mZ = curve;
    node.scale = node.position;
    const std::vector<Node> nodes(10000, node);
    const std::vector<float> times = makeTimes(FORWARDS, 10);
    std::size_t i = 0;
    for (auto _ : state)
    {
        for (const Node& each : nodes)
        {
            benchmark::DoNotOptimize(each.position.getValue(times[i]));
            benchmark::DoNotOptimize(each.rotation.getValue(times[i]));
            benchmark::DoNotOptimize(each.scale.getValue(times[i]));
        }
        if (++i == times.size()) i = 0;
    }
}

} // namespace

BENCHMARK_CAPTURE(getValue, linear forwards, TrackBlenderFloat::INTERPOLATION_LINEAR, FORWARDS)
    ->Arg(2)
    ->Arg(100)
    ->Arg(10000);
BENCHMARK_CAPTURE(getValue, linear backwards, TrackBlenderFloat::INTERPOLATION_LINEAR, BACKWARDS)
    ->Arg(2)
    ->Arg(100)
    ->Arg(10000);
BENCHMARK_CAPTURE(getValue, linear random, TrackBlenderFloat::INTERPOLATION_LINEAR, RANDOM)
    ->Arg(2)
    ->Arg(100)
    ->Arg(10000);
BENCHMARK_CAPTURE(getValue, bezier forwards, TrackBlenderFloat::INTERPOLATION_BEZIER, FORWARDS)
    ->Arg(2)
    ->Arg(100)
    ->Arg(10000);
BENCHMARK_CAPTURE(getValue, bezier backwards, TrackBlenderFloat::INTERPOLATION_BEZIER, BACKWARDS)
    ->Arg(2)
    ->Arg(100)
    ->Arg(10000);
BENCHMARK_CAPTURE(getValue, bezier random, TrackBlenderFloat::INTERPOLATION_BEZIER, RANDOM)
    ->Arg(2)
    ->Arg(100)
    ->Arg(10000);
BENCHMARK_CAPTURE(tracksOf10000Nodes, linear, TrackBlenderFloat::INTERPOLATION_LINEAR)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(tracksOf10000Nodes, bezier, TrackBlenderFloat::INTERPOLATION_BEZIER)->Unit(benchmark::kMicrosecond);
