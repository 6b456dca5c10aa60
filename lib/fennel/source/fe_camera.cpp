#include "fe_camera.h"

#include "fe_nodematrix.h"

#include "tw_glinclude.h"

#include <cmath>

namespace Fennel
{

namespace
{

const float QUARTER_TURN = 1.5707964f;

MathBase::Matrix4x4Col rotationAboutX(float radians)
{
    MathBase::Matrix4x4Col matrix;
    matrix[5] = std::cos(radians);
    matrix[6] = std::sin(radians);
    matrix[9] = -std::sin(radians);
    matrix[10] = std::cos(radians);
    return matrix;
}

// The part of a projection that does not depend on the far plane.
MathBase::Matrix4x4Col projection(float fov, float aspect, float nearPlane)
{
    const float top = std::tan(fov / 2) * nearPlane;
    const float bottom = -top;
    const float right = aspect * top;
    const float left = aspect * bottom;

    MathBase::Matrix4x4Col matrix;
    matrix[0] = 2 * nearPlane / (right - left);
    matrix[5] = 2 * nearPlane / (top - bottom);
    matrix[8] = (right + left) / (right - left);
    matrix[9] = (top + bottom) / (top - bottom);
    matrix[11] = -1;
    matrix[15] = 0;
    return matrix;
}

} // namespace

void Camera::updateMatrices()
{
    // The quarter turn takes GL's camera, which looks along negative z, to the scene's, which looks along negative y.
    mMatCamera = nodeMatrix(mRotation, mScale, mPosition);
    mMatCamera.multiplyFromRight(rotationAboutX(-QUARTER_TURN));

    MathBase::Quatf inverse = mRotation;
    inverse.invert();
    MathBase::Matrix4x4Col rotation;
    rotation.setFromQuat(inverse);
    MathBase::Matrix4x4Col scale;
    MathBase::Matrix4x4Col translation;
    for (int i = 0; i < 3; ++i)
    {
        scale[5 * i] = 1 / mScale[i];
        translation[12 + i] = -mPosition[i];
    }
    mMatCameraInv = rotationAboutX(QUARTER_TURN);
    mMatCameraInv.multiplyFromRight(scale);
    mMatCameraInv.multiplyFromRight(rotation);
    mMatCameraInv.multiplyFromRight(translation);

    mMatProjInfinite = projection(mFov, mAspect, mNear);
    mMatProjInfinite[10] = -1;
    mMatProjInfinite[14] = -2 * mNear;
    mFrustumInfinite.buildGLInfinite(mMatProjInfinite, mMatCameraInv);

    if (mFar > mNear)
    {
        mMatProj = projection(mFov, mAspect, mNear);
        mMatProj[10] = -(mFar + mNear) / (mFar - mNear);
        mMatProj[14] = -2 * mFar * mNear / (mFar - mNear);
        mFrustum.buildGL(mMatProj, mMatCameraInv);
    }
    else
    {
        mMatProj.setIdentity();
        mFrustum.mNumPlanes = 0;
    }
}

void Camera::activate() const
{
    GL_CHECKED(glMatrixMode(GL_PROJECTION));
    GL_CHECKED(glLoadMatrixf(mMatProj.m));
    GL_CHECKED(glMatrixMode(GL_MODELVIEW));
}

void Camera::deactivate() const
{
    GL_CHECKED(glMatrixMode(GL_MODELVIEW));
    GL_CHECKED(glLoadMatrixf(mMatCameraInv.m));
}

} // namespace Fennel
