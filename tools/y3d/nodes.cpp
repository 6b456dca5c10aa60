#include "nodes.h"

#include "text.h"
#include "y3d_camera.h"
#include "y3d_chunks.h"
#include "y3d_light.h"
#include "y3d_scene.h"

namespace
{

NamedTrack namedTrack(const char* name, const y3d::TrackFloat& track)
{
    return {name, {{"value", &track.mCurve}}};
}

NamedTrack namedTrack(const char* name, const y3d::TrackVector3f& track)
{
    return {name, {{"x", &track.mX}, {"y", &track.mY}, {"z", &track.mZ}}};
}

NamedTrack namedTrack(const char* name, const y3d::TrackQuatf& track)
{
    if (track.mEuler) return {name, {{"x", &track.mX}, {"y", &track.mY}, {"z", &track.mZ}}};
    return {name, {{"w", &track.mW}, {"x", &track.mX}, {"y", &track.mY}, {"z", &track.mZ}}};
}

NamedTrack namedTrack(const char* name, const y3d::TrackColor4f& track)
{
    return {name, {{"r", &track.mR}, {"g", &track.mG}, {"b", &track.mB}, {"a", &track.mA}}};
}

// Itself and all below it, and the bones that lie below others.
std::size_t countWithBones(const y3d::SceneNode& node)
{
    std::size_t count = 1;
    if (node.getType() == y3d::CHUNK_ARMATURE)
        count += countBones(static_cast<const y3d::Armature&>(node).mBoneRoot) - 1;
    for (const y3d::SceneNode* child : node.mChildren) count += countWithBones(*child);
    return count;
}

} // namespace

const char* kindOf(const y3d::SceneNode& node)
{
    switch (node.getType())
    {
    case y3d::CHUNK_SCENE:
        return "scene";
    case y3d::CHUNK_CAMERA:
        return "camera";
    case y3d::CHUNK_MESHINSTANCE:
        return "mesh instance";
    case y3d::CHUNK_DUMMY:
        return "dummy";
    case y3d::CHUNK_LIGHT:
        return "light";
    default:
        return "armature";
    }
}

std::string titleOf(const y3d::SceneNode& node)
{
    return std::string(kindOf(node)) + " " + quoted(node.getName());
}

std::vector<NamedTrack> tracksOf(const y3d::SceneNode& node)
{
    if (node.getType() == y3d::CHUNK_SCENE) return {};

    std::vector<NamedTrack> tracks = {namedTrack("position", node.getPosition()),
                                      namedTrack("rotation", node.getRotation()), namedTrack("scale", node.getScale())};
    if (node.getType() == y3d::CHUNK_CAMERA)
    {
        tracks.push_back(namedTrack("fov", static_cast<const y3d::Camera&>(node).getFov()));
    }
    if (node.getType() == y3d::CHUNK_LIGHT)
    {
        const y3d::Light& light = static_cast<const y3d::Light&>(node);
        tracks.push_back(namedTrack("color", light.getLightColor()));
        tracks.push_back(namedTrack("energy", light.getEnergy()));
        tracks.push_back(namedTrack("distance", light.getDistance()));
    }
    return tracks;
}

std::size_t countBones(const y3d::Armature::Bone& bone)
{
    std::size_t count = 1;
    for (const y3d::Armature::Bone* child : bone.mChildren) count += countBones(*child);
    return count;
}

std::string leftOut(std::size_t count)
{
    return counted(count, "node or bone", "nodes and bones") + " left out, since too many of the others are empty";
}

std::size_t countNodes(const y3d::Manager& manager)
{
    std::size_t count = 0;
    for (const y3d::Scene* scene : manager.mScenes) count += countWithBones(*scene);
    return count;
}

std::size_t countBelow(const y3d::SceneNode& node)
{
    std::size_t count = node.mChildren.size();
    for (const y3d::SceneNode* child : node.mChildren) count += countBelow(*child);
    return count;
}
