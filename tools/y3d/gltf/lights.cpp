#include "lights.h"

#include "shading.h"
#include "text.h"
#include "tracks.h"
#include "y3d_exception.h"

#include <algorithm>
#include <memory>

namespace gltf
{

namespace
{

const double DEFAULT_DISTANCE = 25.0; // of lamps whose range has no end
const double SUN_BACKSET = 1e5, SUN_DISTANCE = 1e10;

bool isSun(const tinygltf::Light& light)
{
    return light.type == "directional";
}

// What a light of ours had as full when it was exported; 0 for others.
double ownFull(const tinygltf::Light& light)
{
    if (!light.extras.IsObject() || !light.extras.Has("y3d") || !light.extras.Get("y3d").IsObject()) return 0.0;
    const tinygltf::Value& full = light.extras.Get("y3d").Get("full");
    return full.IsNumber() ? full.GetNumberAsDouble() : 0.0;
}

} // namespace

Lights::Lights(const Model& model, const Motions& motions, double scale, Losses& losses)
    : mModel(model), mMotions(motions), mScale(scale), mLosses(losses)
{
    for (const tinygltf::Light& light : model.lights)
    {
        if (ownFull(light) > 0) continue;
        double& full = isSun(light) ? mFullSun : mFullLamp;
        full = std::max(full, light.intensity);
    }
}

const tinygltf::Light& Lights::find(int number) const
{
    if (number < 0 || number >= static_cast<int>(mModel.lights.size()))
        throw y3d::Exception("there is no light %d", number);
    return mModel.lights[number];
}

double Lights::getBackset(int number) const
{
    return isSun(find(number)) ? SUN_BACKSET : 0.0;
}

double Lights::getFullIntensity(const tinygltf::Light& light) const
{
    if (ownFull(light) > 0) return ownFull(light);
    return isSun(light) ? mFullSun : mFullLamp;
}

y3d::Light* Lights::make(int number, const std::string& name) const
{
    const tinygltf::Light& source = find(number);
    const std::string title = "light " + quoted(name);
    auto light = std::make_unique<y3d::Light>();
    light->mName = name;
    light->mLightFlag = false;
    light->mEnergy.mCurve.mBaseValue = 1.0f;
    setTrack(&light->mScale, Vec3{1, 1, 1});
    setColor(light.get(), source, number);
    const double part = source.intensity / getFullIntensity(source);
    if (ownFull(source) == 0 && getFullIntensity(source) > 1.0 && part < 1.0)
        mLosses.tell(title + " is dimmed to " + shown(static_cast<float>(part)) +
                     ", the part that it has of the strongest one");

    const double range = source.range > 0 ? source.range : DEFAULT_DISTANCE;
    light->mDistance.mCurve.mBaseValue = static_cast<float>(isSun(source) ? SUN_DISTANCE : range * mScale);
    const std::string property = "/extensions/KHR_lights_punctual/lights/" + std::to_string(number);
    const auto reach = mMotions.properties.find(property + "/range");
    if (reach != mMotions.properties.end() && !isSun(source))
    {
        const double s = mScale;
        setTrack(&light->mDistance, reach->second.moved({scaling({s, s, s}), {0, 0, 0}}));
    }
    if (isSun(source)) mLosses.tell(title + " is a sun; it shines from a point far away");
    if (source.type == "spot") mLosses.tell(title + " is a spot; it shines in all directions");
    return light.release();
}

// What a screen shows of colour times intensity; where they move, at the keys of both.
void Lights::setColor(y3d::Light* light, const tinygltf::Light& source, int number) const
{
    const std::string property = "/extensions/KHR_lights_punctual/lights/" + std::to_string(number);
    const auto colors = mMotions.properties.find(property + "/color");
    const auto strengths = mMotions.properties.find(property + "/intensity");
    const bool colorMoves = colors != mMotions.properties.end(), strengthMoves = strengths != mMotions.properties.end();
    Vec3 color = {1, 1, 1};
    if (source.color.size() >= 3) color = {source.color[0], source.color[1], source.color[2]};
    const auto shownAt = [&](double time) {
        const Vec3 now = colorMoves ? colors->second.getVector(time) : color;
        const double strength = strengthMoves ? strengths->second.getValue(time)[0] : source.intensity;
        std::vector<double> result;
        for (const double part : now)
            result.push_back(toScreen(std::max(part * strength, 0.0) / getFullIntensity(source)));
        return result;
    };

    Sampler keys;
    for (const auto& moving : {colors, strengths})
    {
        if (moving == mMotions.properties.end()) continue;
        keys.mode = moving->second.mode == Sampler::STEP ? Sampler::STEP : Sampler::LINEAR;
        for (const Sampler::Key& key : moving->second.keys) keys.keys.push_back({key.time, {}, {}, {}});
    }
    if (keys.keys.empty()) keys.keys.push_back({0, {}, {}, {}});
    std::sort(keys.keys.begin(), keys.keys.end(),
              [](const Sampler::Key& a, const Sampler::Key& b) { return a.time < b.time; });
    const auto end = std::unique(keys.keys.begin(), keys.keys.end(),
                                 [](const Sampler::Key& a, const Sampler::Key& b) { return a.time == b.time; });
    keys.keys.erase(end, keys.keys.end());
    for (Sampler::Key& key : keys.keys) key.value = shownAt(key.time);
    setTrack(&light->mLightColor, keys);
}

} // namespace gltf
