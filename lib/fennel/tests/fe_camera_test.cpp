#include "fe_camera.h"

#include <gtest/gtest.h>

namespace
{

void expectMatrix(const MathBase::Matrix4x4Col& matrix, const float (&expected)[16])
{
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(matrix[i], expected[i], 2e-6f) << "element " << i;
}

bool sees(const MathBase::Frustum& frustum, const MathBase::Vector3f& point)
{
    for (int i = 0; i < frustum.mNumPlanes; ++i)
    {
        if (frustum.mPlanes[i].distanceTo(point) <= 0) return false;
    }
    return true;
}

// The tangent of half its field of view is 1, so the picture is as high as 2 times the distance, and twice as wide.
Fennel::Camera cameraAt(const MathBase::Vector3f& position)
{
    Fennel::Camera camera;
    camera.mPosition = position;
    camera.mFov = 1.5707964f;
    camera.mAspect = 2;
    camera.mNear = 1;
    camera.mFar = 3;
    camera.updateMatrices();
    return camera;
}

} // namespace

TEST(Camera, unrotatedLooksDownAndItsMatricesInvertEachOther)
{
    const Fennel::Camera camera = cameraAt({1, 2, 3});
    expectMatrix(camera.mMatCamera, {1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 1, 2, 3, 1});
    expectMatrix(camera.mMatCameraInv, {1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, -1, 3, -2, 1});
    expectMatrix(camera.mMatProj, {0.5f, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0});
    expectMatrix(camera.mMatProjInfinite, {0.5f, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, -1, 0, 0, -2, 0});
}

// To the world the scale applies after the rotation, and back after the inverse rotation too: only an even scale makes
// one the inverse of the other.
TEST(Camera, scaleAppliesAlongTheWorldsAxes)
{
    Fennel::Camera camera = cameraAt({0, 0, 0});
    camera.mRotation = MathBase::Quatf(0.70710678f, 0, 0, 0.70710678f); // a quarter turn about z
    camera.mScale = {2, 4, 0.5f};
    camera.updateMatrices();
    expectMatrix(camera.mMatCamera, {0, 4, 0, 0, 0, 0, -0.5f, 0, -2, 0, 0, 0, 0, 0, 0, 1});
    expectMatrix(camera.mMatCameraInv, {0, 0, -0.25f, 0, 0.5f, 0, 0, 0, 0, -2, 0, 0, 0, 0, 0, 1});
}

TEST(Camera, frustumEndsAtItsPlanes)
{
    Fennel::Camera camera = cameraAt({0, 10, 0}); // looks down; x is to the right, up is negative z
    const MathBase::Vector3f inside[] = {{3.9f, 8, 1.9f}, {-3.9f, 8, -1.9f}, {0, 8.9f, 0}, {0, 7.1f, 0}};
    const MathBase::Vector3f outside[] = {{4.1f, 8, 0}, {-4.1f, 8, 0}, {0, 8, 2.1f}, {0, 8, -2.1f}, {0, 9.1f, 0}};
    for (const MathBase::Frustum& frustum : {camera.mFrustum, camera.mFrustumInfinite})
    {
        for (const auto& point : inside) EXPECT_TRUE(sees(frustum, point)) << point.x << " " << point.y;
        for (const auto& point : outside) EXPECT_FALSE(sees(frustum, point)) << point.x << " " << point.y;
    }
    EXPECT_FALSE(sees(camera.mFrustum, {0, 6.9f, 0}));
    EXPECT_TRUE(sees(camera.mFrustumInfinite, {0, 6.9f, 0}));

    camera.mFar = camera.mNear;
    camera.updateMatrices();
    EXPECT_EQ(camera.mFrustum.mNumPlanes, 0);
    expectMatrix(camera.mMatProj, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});

    // What a broken file may hold must not reach an assertion of the mathematics.
    camera.mScale = {0, 1, 0};
    for (const float fov : {0.0f, 3.1415927f, 1e30f})
    {
        camera.mFov = fov;
        camera.updateMatrices();
    }
}
