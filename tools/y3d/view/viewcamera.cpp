#include "view/viewcamera.h"

#include <algorithm>
#include <cmath>

namespace
{

using MathBase::Vector3f;

const float QUARTER_TURN = 1.5707964f;
const float HIGHEST = 1.55f; // just below a quarter turn, where around loses its meaning

} // namespace

void ViewCamera::lookAt(const MathBase::AABBpointsf& box)
{
    mTarget = box.getCenter();
    mDistance = std::max(box.getMinSphereRadiusFromCenter(), 1e-3f) / std::sin(mFov / 2);
    mAround = 0.6f;
    mUp = 0.35f;
}

void ViewCamera::takeOver(const Fennel::Camera& camera, const MathBase::AABBpointsf& box)
{
    // The camera's matrix has what it sees to the right, above and behind in its columns.
    const MathBase::Matrix4x4Col& m = camera.mMatCamera;
    const Vector3f behind(m[8], m[9], m[10]);
    const float length = std::max(behind.length(), 1e-6f);
    mUp = std::asin(std::clamp(behind.y / length, -1.0f, 1.0f));
    mUp = std::clamp(mUp, -HIGHEST, HIGHEST);
    mAround = std::atan2(behind.x, behind.z);
    mFov = camera.mFov;
    mDistance = std::max((box.getCenter() - camera.mPosition).length(), 1e-2f);
    mTarget = camera.mPosition + direction(0, 0, -mDistance);
}

void ViewCamera::orbit(float around, float up)
{
    mAround = std::remainder(mAround + around, 4 * QUARTER_TURN);
    mUp = std::clamp(mUp + up, -HIGHEST, HIGHEST);
}

void ViewCamera::turn(float around, float up)
{
    const Vector3f place = mTarget + direction(0, 0, mDistance);
    orbit(around, up);
    mTarget = place + direction(0, 0, -mDistance);
}

void ViewCamera::pan(float right, float up)
{
    const float height = 2 * mDistance * std::tan(mFov / 2);
    mTarget = mTarget + direction(right * height, up * height, 0);
}

void ViewCamera::zoom(float factor)
{
    mDistance = std::clamp(mDistance * factor, 1e-3f, 1e6f);
}

void ViewCamera::fly(float right, float up, float ahead)
{
    mTarget = mTarget + direction(right * mDistance, up * mDistance, -ahead * mDistance);
}

Fennel::Camera ViewCamera::getCamera() const
{
    Fennel::Camera camera;
    camera.mPosition = mTarget + direction(0, 0, mDistance);
    camera.mRotation = rotation();
    camera.mFov = mFov;
    return camera;
}

// From the camera's own axes (right, up, behind) to the world's.
Vector3f ViewCamera::direction(float x, float y, float z) const
{
    const float ca = std::cos(mAround), sa = std::sin(mAround), cu = std::cos(mUp), su = std::sin(mUp);
    const float forwardY = y * cu + z * su;
    const float forwardZ = z * cu - y * su;
    return Vector3f(x * ca + forwardZ * sa, forwardY, forwardZ * ca - x * sa);
}

// A turn about y after a turn about x, which starts a quarter turn away since an unrotated camera looks down.
MathBase::Quatf ViewCamera::rotation() const
{
    const float halfX = (QUARTER_TURN - mUp) / 2, halfY = mAround / 2;
    return MathBase::Quatf(std::cos(halfY) * std::cos(halfX), std::cos(halfY) * std::sin(halfX),
                           std::sin(halfY) * std::cos(halfX), -std::sin(halfY) * std::sin(halfX));
}
