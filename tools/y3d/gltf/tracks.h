#pragma once

#include "sampler.h"
#include "y3d_trackcolor4f.h"
#include "y3d_trackfloat.h"
#include "y3d_trackquatf.h"
#include "y3d_trackvector3f.h"

namespace gltf
{

// Samplers as tracks of Y3D. STEP, LINEAR and CUBIC values become the same curves, a tangent a handle a third of the
// way to the next key; so do CUBIC rotations. Rotations at a constant speed are followed within TURN_TOLERANCE. What is
// always the same leaves no keys.
void setTrack(y3d::TrackVector3f* track, const Sampler& sampler);
void setTrack(y3d::TrackQuatf* track, const Sampler& sampler);
void setTrack(y3d::TrackFloat* track, const Sampler& sampler);
void setTrack(y3d::TrackColor4f* track, const Sampler& sampler); // of three numbers; alpha is 1

void setTrack(y3d::TrackVector3f* track, const Vec3& value);
void setTrack(y3d::TrackQuatf* track, const Quat& value);

const double TURN_TOLERANCE = 0.0008; // radians: less than a twentieth of a degree

} // namespace gltf
