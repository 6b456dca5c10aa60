#pragma once

#include <string>
#include <vector>

#include "y3d_armature.h"
#include "y3d_manager.h"
#include "y3d_scenenode.h"

// The nodes of a scene as the commands walk over them.

struct NamedCurve
{
    const char* component;
    const y3d::TrackBlenderFloat* curve;
};

struct NamedTrack
{
    const char* name;
    std::vector<NamedCurve> curves;
};

// "camera", "mesh instance" and so on.
const char* kindOf(const y3d::SceneNode& node);

// "camera 'eye'".
std::string titleOf(const y3d::SceneNode& node);

// All tracks that a node of its class has in a file: none for a scene.
std::vector<NamedTrack> tracksOf(const y3d::SceneNode& node);

// The number of nodes below it, at any depth.
std::size_t countBelow(const y3d::SceneNode& node);

// The number of bones, this one and those below it.
std::size_t countBones(const y3d::Armature::Bone& bone);

// The number of nodes in all scenes, the scenes themselves and the bones that lie below others among them.
std::size_t countNodes(const y3d::Manager& manager);

// Tells that the loader has dropped so many of them.
std::string leftOut(std::size_t count);
