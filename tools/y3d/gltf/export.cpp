#include "export.h"

#include "animator.h"
#include "glb.h"
#include "nodes.h"
#include "shading.h"
#include "surfaces.h"
#include "text.h"
#include "y3d_camera.h"
#include "y3d_chunks.h"
#include "y3d_exception.h"
#include "y3d_light.h"
#include "y3d_scene.h"

#include <algorithm>
#include <cmath>

namespace gltf
{

namespace
{

using Json = Glb::Json;

// The view of the player.
const double PI = 3.14159265358979324;
const double FARTHEST_LAMP = 1000.0; // beyond that the sums of other programs have no use for it
const double ASPECT = 4.0 / 3.0, NEAR_PLANE = 0.1, FAR_PLANE = 2000.0;

double lastKeyOf(const y3d::SceneNode& node)
{
    double last = 0.0;
    for (const NamedTrack& track : tracksOf(node))
    {
        for (const NamedCurve& curve : track.curves)
        {
            if (!curve.curve->mKeys.empty()) last = std::max<double>(last, curve.curve->mKeys.back().mPoint.x);
        }
    }
    for (const y3d::SceneNode* child : node.mChildren) last = std::max(last, lastKeyOf(*child));
    return last;
}

bool turns(const y3d::TrackQuatf& track)
{
    return !track.isStatic() || angleBetween(toQuat(track.getValue(0)), Quat()) > 1e-7;
}

bool scalesEvenly(const y3d::TrackVector3f& track)
{
    const MathBase::Vector3f scale = track.getValue(0);
    return track.isStatic() && scale.x == scale.y && scale.y == scale.z;
}

class SceneWriter
{
public:
    SceneWriter(const ExportOptions& options, const y3d::Scene& scene, Glb& glb, Surfaces& surfaces, Losses& losses)
        : mScene(scene), mGlb(glb), mSurfaces(surfaces), mLosses(losses),
          mAnimator(glb, losses, {options.length >= 0 ? options.length : lastKeyOf(scene), options.fps})
    {
    }

    void run()
    {
        Json nodes = Json::array();
        for (const y3d::SceneNode* child : mScene.mChildren) append(&nodes, addNode(*child, true));
        Json scene = {{"name", mScene.getName()}};
        if (!nodes.empty()) scene["nodes"] = nodes;
        mGlb.add("scenes", scene);
        mAnimator.finish(mScene.getName());
    }

private:
    static void append(Json* nodes, int node)
    {
        if (node >= 0) nodes->push_back(node);
    }

    // The number of the node; -1 for what the player does not come to either.
    int addNode(const y3d::SceneNode& node, bool isTop)
    {
        const std::string title = titleOf(node);
        const int type = node.getType();
        if (type == y3d::CHUNK_ARMATURE || (type == y3d::CHUNK_CAMERA && !isTop))
        {
            mLosses.tell(title + " is left out, as the player does");
            return -1;
        }
        if (type == y3d::CHUNK_CAMERA || type == y3d::CHUNK_LIGHT)
        {
            if (node.getNumChildren() != 0)
                mLosses.tell(title + ": what lies below it is left out, as the player does");
            return type == y3d::CHUNK_CAMERA ? addCamera(static_cast<const y3d::Camera&>(node), title)
                                             : addLight(static_cast<const y3d::Light&>(node), title);
        }
        return addPlace(node, title);
    }

    // Scale is applied after rotation here and before it in glTF. Where that makes a difference, a node that only
    // scales goes above one that only turns.
    int addPlace(const y3d::SceneNode& node, const std::string& title)
    {
        const bool hasPivot = turns(node.getRotation()) && !scalesEvenly(node.getScale());
        Json json = {{"name", node.getName()}};
        if (node.getType() == y3d::CHUNK_MESHINSTANCE)
        {
            const int mesh = mSurfaces.addMesh(static_cast<const y3d::MeshInstance&>(node));
            if (mesh >= 0) json["mesh"] = mesh;
        }
        setRotation(&json, toQuat(node.getRotation().getValue(0)));
        if (!hasPivot) setPlace(&json, node);

        const int number = mGlb.add("nodes", json);
        Json children = Json::array();
        for (const y3d::SceneNode* child : node.mChildren) append(&children, addNode(*child, false));
        if (!children.empty()) mGlb.description["nodes"][number]["children"] = children;

        int place = number;
        if (hasPivot)
        {
            Json pivot = {{"name", node.getName() + ".pivot"}, {"children", Json::array({number})}};
            setPlace(&pivot, node);
            place = mGlb.add("nodes", pivot);
        }
        mAnimator.addVector(place, "translation", node.getPosition(), title);
        mAnimator.addVector(place, "scale", node.getScale(), title);
        mAnimator.addRotation(number, node.getRotation(), Quat(), title);
        return place;
    }

    static void setPlace(Json* json, const y3d::SceneNode& node)
    {
        setVector(json, "translation", node.getPosition().getValue(0), 0.0f);
        setVector(json, "scale", node.getScale().getValue(0), 1.0f);
    }

    static void setVector(Json* json, const char* key, const MathBase::Vector3f& v, float usual)
    {
        if (!std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z))
            throw y3d::Exception("a node has values that are no numbers");
        if (v.x != usual || v.y != usual || v.z != usual) (*json)[key] = {v.x, v.y, v.z};
    }

    static void setRotation(Json* json, const Quat& turn)
    {
        const Quat q = normalized(turn);
        if (q.w != 1.0) (*json)["rotation"] = {q.x, q.y, q.z, q.w};
    }

    int addCamera(const y3d::Camera& camera, const std::string& title)
    {
        const MathBase::Vector3f scale = camera.getScale().getValue(0);
        if (!camera.getScale().isStatic() || scale.x != 1 || scale.y != 1 || scale.z != 1)
            mLosses.tell(title + ": its scale is left out");
        const float fov = std::clamp(camera.getFov().getValue(0), 1e-3f, 3.14f);
        const int number = mGlb.add(
            "cameras",
            {{"name", camera.getName()},
             {"type", "perspective"},
             {"perspective", {{"aspectRatio", ASPECT}, {"yfov", fov}, {"zfar", FAR_PLANE}, {"znear", NEAR_PLANE}}}});
        Json json = {{"name", camera.getName()}, {"camera", number}};
        setVector(&json, "translation", camera.getPosition().getValue(0), 0.0f);
        setRotation(&json, toQuat(camera.getRotation().getValue(0)) * QUARTER_TURN_BACK_X);
        const int node = mGlb.add("nodes", json);
        mAnimator.addVector(node, "translation", camera.getPosition(), title);
        mAnimator.addRotation(node, camera.getRotation(), QUARTER_TURN_BACK_X, title);
        mAnimator.addFloat("/cameras/" + std::to_string(number) + "/perspective/yfov", camera.getFov(), title);
        return node;
    }

    int addLight(const y3d::Light& light, const std::string& title)
    {
        const y3d::Color4f color = light.getLightColor().getValue(0);
        const double strength = strengthOf(light.getLightColor());
        Json parts = Json::array();
        for (const float part : {color.r, color.g, color.b}) parts.push_back(toLight(std::max(part, 0.0f)) / strength);
        const float distance = light.getDistance().getValue(0);
        const bool hasRange = distance > 0 && std::isfinite(distance);
        // As bright as here, for a surface of matt white, at the distance of half the brightness.
        const double reach = hasRange ? std::min<double>(distance, FARTHEST_LAMP) : 1.0;
        const double full = PI / 2 * reach * reach;
        Json json = {{"name", light.getName()},
                     {"type", "point"},
                     {"color", parts},
                     {"intensity", full * strength},
                     {"extras", {{"y3d", {{"full", full}}}}}};
        if (hasRange) json["range"] = distance;

        mGlb.use("KHR_lights_punctual");
        Json& lights = mGlb.description["extensions"]["KHR_lights_punctual"]["lights"];
        const std::size_t number = lights.size();
        lights.push_back(json);
        Json place = {{"name", light.getName()}, {"extensions", {{"KHR_lights_punctual", {{"light", number}}}}}};
        setVector(&place, "translation", light.getPosition().getValue(0), 0.0f);
        const int node = mGlb.add("nodes", place);
        mAnimator.addVector(node, "translation", light.getPosition(), title);
        const std::string pointer = "/extensions/KHR_lights_punctual/lights/" + std::to_string(number);
        mAnimator.addColor(pointer + "/color", light.getLightColor(), strength, title);
        mAnimator.addFloat(pointer + "/range", light.getDistance(), title);
        return node;
    }

    // The brightest that the light ever is, at least 1: colours of glTF end there, and the intensity does not.
    static double strengthOf(const y3d::TrackColor4f& track)
    {
        double strength = 1.0;
        for (const y3d::TrackBlenderFloat* curve : {&track.mR, &track.mG, &track.mB})
        {
            strength = std::max(strength, toLight(curve->getValue(0)));
            for (const y3d::TrackBlenderFloat::Key& key : curve->mKeys)
                strength =
                    std::max({strength, toLight(key.mPoint.y), toLight(key.mHandleIn.y), toLight(key.mHandleOut.y)});
        }
        return std::isfinite(strength) ? strength : 1.0;
    }

    const y3d::Scene& mScene;
    Glb& mGlb;
    Surfaces& mSurfaces;
    Losses& mLosses;
    Animator mAnimator;
};

} // namespace

std::vector<unsigned char> exportScenes(const y3d::Manager& manager, const std::string& pictures,
                                        const ExportOptions& options, Losses& losses)
{
    Glb glb;
    Surfaces surfaces(manager, pictures, glb, losses);
    for (const y3d::Scene* scene : manager.mScenes) SceneWriter(options, *scene, glb, surfaces, losses).run();
    if (!manager.mScenes.empty()) glb.description["scene"] = 0;
    return glb.build();
}

} // namespace gltf
