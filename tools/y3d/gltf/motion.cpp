#include "motion.h"

#include "text.h"
#include "y3d_exception.h"

#include <cmath>

namespace gltf
{

namespace
{

// glTF has the w of a rotation last.
std::vector<double> wFirst(const std::vector<double>& xyzw)
{
    return {xyzw[3], xyzw[0], xyzw[1], xyzw[2]};
}

std::vector<double> taken(const std::vector<float>& values, std::size_t element, int components, bool isRotation)
{
    const auto begin = values.begin() + static_cast<std::ptrdiff_t>(element * components);
    const std::vector<double> result(begin, begin + components);
    return isRotation ? wFirst(result) : result;
}

Sampler readSampler(const tinygltf::AnimationSampler& source, Accessors& accessors, int components, bool isRotation)
{
    const std::vector<float> times = accessors.readFloats(source.input, 1);
    const std::vector<float> values = accessors.readFloats(source.output, components);
    Sampler sampler;
    sampler.mode = source.interpolation == "STEP"          ? Sampler::STEP
                   : source.interpolation == "CUBICSPLINE" ? Sampler::CUBIC
                                                           : Sampler::LINEAR;
    const std::size_t perKey = sampler.mode == Sampler::CUBIC ? 3 : 1;
    if (times.empty() || values.size() != times.size() * perKey * components)
        throw y3d::Exception("has %zu times and %zu values", times.size(), values.size() / components);
    for (std::size_t i = 0; i < times.size(); ++i)
    {
        if (i > 0 && times[i] < times[i - 1]) throw y3d::Exception("has keys that are not in the order of time");
        if (i > 0 && times[i] == times[i - 1]) sampler.keys.pop_back(); // the later one holds from there on
        Sampler::Key key = {times[i], {}, {}, {}};
        if (perKey == 3) key.in = taken(values, 3 * i, components, isRotation);
        key.value = taken(values, perKey * i + perKey / 2, components, isRotation);
        if (perKey == 3) key.out = taken(values, 3 * i + 2, components, isRotation);
        sampler.keys.push_back(key);
    }
    return sampler;
}

std::string pointerOf(const tinygltf::AnimationChannel& channel)
{
    const auto extension = channel.target_extensions.find("KHR_animation_pointer");
    if (extension == channel.target_extensions.end() || !extension->second.Has("pointer")) return "";
    const tinygltf::Value& pointer = extension->second.Get("pointer");
    return pointer.IsString() ? pointer.Get<std::string>() : "";
}

class Reader
{
public:
    Reader(const Model& model, Accessors& accessors, double scale, Losses& losses)
        : mModel(model), mAccessors(accessors), mScale(scale), mLosses(losses)
    {
        for (const tinygltf::Node& node : model.nodes) mMotions.nodes.push_back(readRest(node));
    }

    void add(const tinygltf::Animation& animation, std::size_t number)
    {
        mTitle = "animation " + (animation.name.empty() ? std::to_string(number) : quoted(animation.name));
        for (const tinygltf::AnimationChannel& channel : animation.channels)
        {
            if (channel.sampler < 0 || static_cast<std::size_t>(channel.sampler) >= animation.samplers.size())
                throw y3d::Exception("%s has a channel without a sampler", mTitle.c_str());
            try
            {
                add(channel, animation.samplers[channel.sampler]);
            }
            catch (const y3d::Exception& exception)
            {
                throw y3d::Exception("%s: %s", mTitle.c_str(), exception.what());
            }
        }
    }

    Motions finish()
    {
        for (Motion& motion : mMotions.nodes)
        {
            for (std::optional<Sampler>* keys : {&motion.translationKeys, &motion.rotationKeys, &motion.scaleKeys})
            {
                if (*keys && (*keys)->isConstant()) fold(&motion, keys);
            }
        }
        return mMotions;
    }

private:
    Motion readRest(const tinygltf::Node& node) const
    {
        Motion motion;
        if (node.matrix.size() == 16)
        {
            Mat3 linear;
            for (int i = 0; i < 12; ++i)
            {
                if (i % 4 != 3) linear[i % 4][i / 4] = node.matrix[i];
            }
            const Stretch stretch = decompose(linear);
            const bool isPlain = stretch.right == Affine().linear;
            if (isPlain)
            {
                motion.rotation = quaternionOf(stretch.left);
                motion.scale = stretch.stretch;
            }
            else
                motion.matrix = linear;
            motion.translation = {node.matrix[12], node.matrix[13], node.matrix[14]};
        }
        if (node.translation.size() == 3) motion.translation = vectorOf(node.translation);
        if (node.scale.size() == 3) motion.scale = vectorOf(node.scale);
        if (node.rotation.size() == 4)
        {
            const std::vector<double> r = wFirst(node.rotation);
            motion.rotation = normalized({r[0], r[1], r[2], r[3]});
        }
        for (double& part : motion.translation) part *= mScale;
        for (const double part : {motion.translation[0], motion.translation[1], motion.translation[2], motion.scale[0],
                                  motion.scale[1], motion.scale[2]})
        {
            if (!std::isfinite(part)) throw y3d::Exception("a node stands where there are no numbers");
        }
        return motion;
    }

    static Vec3 vectorOf(const std::vector<double>& v) { return {v[0], v[1], v[2]}; }

    void add(const tinygltf::AnimationChannel& channel, const tinygltf::AnimationSampler& sampler)
    {
        const std::string pointer = pointerOf(channel);
        if (!pointer.empty())
        {
            addProperty(pointer, sampler);
            return;
        }
        if (channel.target_path == "weights") mLosses.tell(mTitle + " moves morph targets, which are left out");
        const bool isRotation = channel.target_path == "rotation";
        const bool isKnown = isRotation || channel.target_path == "translation" || channel.target_path == "scale";
        const int node = channel.target_node;
        if (!isKnown || node < 0 || static_cast<std::size_t>(node) >= mMotions.nodes.size()) return;

        Motion& motion = mMotions.nodes[node];
        std::optional<Sampler>& keys = isRotation                             ? motion.rotationKeys
                                       : channel.target_path == "translation" ? motion.translationKeys
                                                                              : motion.scaleKeys;
        if (keys || motion.matrix)
        {
            mLosses.tell(mTitle + " moves node " + quoted(mModel.nodes[node].name) +
                         (motion.matrix ? ", which has a matrix; that is left out"
                                        : " like another one before it; that is left out"));
            return;
        }
        keys = readSampler(sampler, mAccessors, isRotation ? 4 : 3, isRotation);
        if (channel.target_path == "translation") keys = keys->moved({scaling({mScale, mScale, mScale}), {0, 0, 0}});
    }

    void addProperty(const std::string& pointer, const tinygltf::AnimationSampler& source)
    {
        const bool isColor = pointer.size() > 6 && pointer.compare(pointer.size() - 6, 6, "/color") == 0;
        const bool isKnown =
            pointer.rfind("/cameras/", 0) == 0 || pointer.rfind("/extensions/KHR_lights_punctual/lights/", 0) == 0;
        if (!isKnown)
            mLosses.tell(mTitle + " moves " + quoted(pointer) + ", which is left out");
        else
            mMotions.properties[pointer] = readSampler(source, mAccessors, isColor ? 3 : 1, false);
    }

    // Keys that say one thing are a value at rest.
    static void fold(Motion* motion, std::optional<Sampler>* keys)
    {
        if (keys == &motion->rotationKeys)
            motion->rotation = (*keys)->getRotation(0);
        else
            (keys == &motion->scaleKeys ? motion->scale : motion->translation) = (*keys)->getVector(0);
        keys->reset();
    }

    const Model& mModel;
    Accessors& mAccessors;
    const double mScale;
    Losses& mLosses;
    Motions mMotions;
    std::string mTitle; // of the animation that is being read
};

} // namespace

bool Motion::turns() const
{
    return matrix || rotationKeys || angleBetween(rotation, Quat()) > 1e-7;
}

bool Motion::scalesEvenly() const
{
    const auto isEven = [](double x, double y, double z) {
        return std::fabs(x - y) <= 1e-6 * std::fabs(x) && std::fabs(x - z) <= 1e-6 * std::fabs(x);
    };
    const auto isEvenList = [&](const std::vector<double>& v) { return v.empty() || isEven(v[0], v[1], v[2]); };
    if (matrix) return false;
    if (!scaleKeys) return isEven(scale[0], scale[1], scale[2]);
    for (const Sampler::Key& key : scaleKeys->keys)
    {
        if (!isEvenList(key.value) || !isEvenList(key.in) || !isEvenList(key.out)) return false;
    }
    return true;
}

Affine Motion::getMatrix(double time) const
{
    const Vec3 place = translationKeys ? translationKeys->getVector(time) : translation;
    if (matrix) return {*matrix, place};
    const Quat turn = rotationKeys ? rotationKeys->getRotation(time) : rotation;
    return {rotationOf(turn) * scaling(scaleKeys ? scaleKeys->getVector(time) : scale), place};
}

Motions readMotions(const Model& model, Accessors& accessors, const std::string& animation, double scale,
                    Losses& losses)
{
    Reader reader(model, accessors, scale, losses);
    bool found = animation.empty();
    for (std::size_t i = 0; i < model.animations.size(); ++i)
    {
        const bool isWanted = model.animations[i].name == animation || std::to_string(i) == animation;
        if (!animation.empty() && (!isWanted || found)) continue;
        found = true;
        reader.add(model.animations[i], i);
    }
    if (!found) throw y3d::Exception("has no animation %s", quoted(animation).c_str());
    return reader.finish();
}

} // namespace gltf
