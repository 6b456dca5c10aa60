#pragma once

#include <string>
#include <vector>

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
