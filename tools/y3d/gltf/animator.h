#pragma once

#include <string>

#include "glb.h"
#include "losses.h"
#include "pieces.h"
#include "y3d_trackcolor4f.h"
#include "y3d_trackfloat.h"
#include "y3d_trackquatf.h"
#include "y3d_trackvector3f.h"

namespace gltf
{

// Writes the tracks of one scene as one animation of a GLB file, as far as they have keys. What has no exact form is
// sampled, what goes on behind the end ends there; both are told with the title of the owner.
class Animator
{
public:
    Animator(Glb& glb, Losses& losses, const Span& span) : mGlb(glb), mLosses(losses), mSpan(span) {}

    // `path` is "translation" or "scale".
    void addVector(int node, const char* path, const y3d::TrackVector3f& track, const std::string& title);

    // `turned` goes behind each rotation.
    void addRotation(int node, const y3d::TrackQuatf& track, const Quat& turned, const std::string& title);

    // Properties by their JSON pointer. Colours become amounts of light divided by `strength`.
    void addFloat(const std::string& pointer, const y3d::TrackFloat& track, const std::string& title);
    void addColor(const std::string& pointer, const y3d::TrackColor4f& track, double strength,
                  const std::string& title);

    // Puts the animation in the file, if anything moves.
    void finish(const std::string& name);

private:
    Pieces cut(const std::vector<const y3d::TrackBlenderFloat*>& curves, const std::string& title, const char* what);
    Sampler sampleAngles(const Pieces& pieces, const Quat& turned) const;
    void addToNode(int node, const char* path, const Sampler& sampler);
    void addToProperty(const std::string& pointer, const Sampler& sampler);

    Glb& mGlb;
    Losses& mLosses;
    const Span mSpan;
    Glb::Json mAnimation;
};

} // namespace gltf
