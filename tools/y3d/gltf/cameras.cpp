#include "cameras.h"

#include "text.h"
#include "tracks.h"
#include "y3d_exception.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace gltf
{

namespace
{

const std::size_t MAX_SAMPLES = 100000; // nearly an hour at 30 a second
const double JUST_BEFORE = 1e-5;        // seconds in front of a step, where a sampled curve still has the value before

bool isEven(const Mat3& m)
{
    const Mat3 square = transposed(m) * m;
    const double size = square[0][0];
    const auto isNear = [&](double value, double wanted) { return std::fabs(value - wanted) <= 1e-5 * size; };
    return determinant(m) > 0 && isNear(square[1][1], size) && isNear(square[2][2], size) && isNear(square[0][1], 0) &&
           isNear(square[0][2], 0) && isNear(square[1][2], 0);
}

// All times at which a chain must be looked at, ascending.
std::vector<double> timesOf(const Motions& motions, const Chain& chain, double fps)
{
    std::vector<double> times;
    for (const int node : chain)
    {
        const Motion& motion = motions.nodes[node];
        for (const std::optional<Sampler>* keys : {&motion.translationKeys, &motion.rotationKeys, &motion.scaleKeys})
        {
            if (!*keys) continue;
            for (const Sampler::Key& key : (*keys)->keys)
            {
                if ((*keys)->mode == Sampler::STEP) times.push_back(std::max(key.time - JUST_BEFORE, 0.0));
                times.push_back(key.time);
            }
        }
    }
    const auto ends = std::minmax_element(times.begin(), times.end());
    const double first = *ends.first, last = *ends.second;
    if ((last - first) * fps > MAX_SAMPLES) throw y3d::Exception("its animation is too long to be sampled");
    for (double frame = std::ceil(first * fps); frame < last * fps; ++frame) times.push_back(frame / fps);
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

void followExactly(y3d::Camera* camera, const Affine& above, const Motion& motion)
{
    const Quat turned = orientationOf(above.linear);
    if (motion.translationKeys)
        setTrack(&camera->mPosition, motion.translationKeys->moved(above));
    else
        setTrack(&camera->mPosition, above * motion.translation);
    if (motion.rotationKeys)
        setTrack(&camera->mRotation, motion.rotationKeys->turned(turned, QUARTER_TURN_X));
    else
    {
        const Quat own = motion.matrix ? orientationOf(*motion.matrix) : motion.rotation;
        setTrack(&camera->mRotation, turned * own * QUARTER_TURN_X);
    }
}

void followSampled(y3d::Camera* camera, const Motions& motions, const Chain& chain, const std::vector<double>& times)
{
    Sampler places, turns;
    for (const double time : times)
    {
        const Affine world = getWorldMatrix(motions, chain, time);
        const Quat turn = orientationOf(world.linear) * QUARTER_TURN_X;
        places.keys.push_back({time, {world.origin.begin(), world.origin.end()}, {}, {}});
        turns.keys.push_back({time, {turn.w, turn.x, turn.y, turn.z}, {}, {}});
    }
    setTrack(&camera->mPosition, places);
    setTrack(&camera->mRotation, turns);
}

} // namespace

Affine getWorldMatrix(const Motions& motions, const Chain& chain, double time)
{
    Affine world;
    for (const int node : chain) world = world * motions.nodes[node].getMatrix(time);
    return world;
}

y3d::Camera* makeCamera(const tinygltf::Camera& source, const std::string& property, const Motions& motions,
                        const Chain& chain, const std::string& name, double fps, Losses& losses)
{
    auto camera = std::make_unique<y3d::Camera>();
    camera->mName = name;
    setTrack(&camera->mScale, Vec3{1, 1, 1});
    camera->mFov.mCurve.mBaseValue = static_cast<float>(source.perspective.yfov);
    const auto zoom = motions.properties.find(property + "/perspective/yfov");
    if (zoom != motions.properties.end()) setTrack(&camera->mFov, zoom->second);

    const Chain aboveChain(chain.begin(), chain.end() - 1);
    const Affine above = getWorldMatrix(motions, aboveChain, 0);
    const bool stands =
        std::none_of(aboveChain.begin(), aboveChain.end(), [&](int node) { return motions.nodes[node].moves(); });
    const bool moves = !stands || motions.nodes[chain.back()].moves();
    if (stands && isEven(above.linear))
        followExactly(camera.get(), above, motions.nodes[chain.back()]);
    else
        followSampled(camera.get(), motions, chain, moves ? timesOf(motions, chain, fps) : std::vector<double>{0});
    if (!stands)
    {
        losses.tell("camera " + quoted(name) + " moves with nodes above it; its way is sampled " + shown(float(fps)) +
                    " times a second");
    }
    if (!isEven(above.linear))
        losses.tell("camera " + quoted(name) + " is stretched by nodes above it; it is not here");
    return camera.release();
}

} // namespace gltf
