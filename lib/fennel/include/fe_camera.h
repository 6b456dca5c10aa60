#pragma once

#include "mb_frustum.h"
#include "mb_matrix4x4col.h"
#include "mb_quatf.h"
#include "mb_vector3f.h"
#include "y3d_trackfloat.h"
#include "y3d_trackquatf.h"
#include "y3d_trackvector3f.h"

#include <string>

namespace Fennel
{

// A camera. Unrotated it looks along negative y with negative z up: straight down, for y is up in a scene.
class Camera
{
public:
    // Brings matrices and frusta in line with position, scale, rotation, field of view, aspect, near and far. With far
    // not behind near the finite projection is the identity and its frustum has no planes.
    void updateMatrices();

    // Loads the projection and leaves the modelview mode on.
    void activate() const;

    // Loads the view matrix, so that what follows can draw in the scene's world space.
    void deactivate() const;

    MathBase::Vector3f mPosition;
    MathBase::Vector3f mScale = {1, 1, 1};
    MathBase::Quatf mRotation;
    float mFov = 0; // full vertical angle in radians
    float mAspect = 1.3333334f;
    float mNear = 0.1f;
    float mFar = 500.0f;
    MathBase::Frustum mFrustum;              // world space
    MathBase::Frustum mFrustumInfinite;      // without a far plane
    MathBase::Matrix4x4Col mMatCamera;       // camera to world
    MathBase::Matrix4x4Col mMatCameraInv;    // world to camera
    MathBase::Matrix4x4Col mMatProj;         // the one that draws
    MathBase::Matrix4x4Col mMatProjInfinite; // with the far plane at infinity
    std::string mName;
    y3d::TrackVector3f mPositionTrack;
    y3d::TrackVector3f mScaleTrack;
    y3d::TrackQuatf mRotationTrack;
    y3d::TrackFloat mFovTrack;
};

} // namespace Fennel
