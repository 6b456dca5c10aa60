#include "fe_camera.h"

#include <gtest/gtest.h>

namespace
{

void expectMatrix(const MathBase::Matrix4x4Col& matrix, const float (&expected)[16])
{
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(matrix[i], expected[i], 2e-6f) << "element " << i;
}

// Whether a point lies on the inner side of all planes.
bool sees(const MathBase::Frustum& frustum, const MathBase::Vector3f& point)
{
    for (int i = 0; i < frustum.mNumPlanes; ++i)
    {
        if (frustum.mPlanes[i].distanceTo(point) <= 0) return false;
    }
    return true;
}

Fennel::Camera cameraAt(const MathBase::Vector3f& position)
{
    Fennel::Camera camera;
    camera.mPosition = position;
    camera.mFov = 1.5707964f; // the tangent of half of it is 1
    camera.mNear = 1;
    camera.mFar = 3;
    return camera;
}

} // namespace

TEST(Camera, unrotatedLooksDownTheYAxis)
{
    Fennel::Camera camera = cameraAt({1, 2, 3});
    camera.updateMatrices();
    expectMatrix(camera.mMatCamera, {1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 1, 2, 3, 1});
    expectMatrix(camera.mMatCameraInv, {1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, -1, 3, -2, 1});
    EXPECT_TRUE(sees(camera.mFrustum, {1, 0, 3}));
    EXPECT_FALSE(sees(camera.mFrustum, {1, 4, 3}));
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

    camera.mPosition = {5, -6, 7};
    camera.mScale = {2, 2, 2};
    camera.updateMatrices();
    camera.mMatCameraInv.multiplyFromRight(camera.mMatCamera);
    expectMatrix(camera.mMatCameraInv, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}

TEST(Camera, projectionsFollowFieldOfViewAspectNearAndFar)
{
    Fennel::Camera camera = cameraAt({0, 0, 0});
    camera.mAspect = 2;
    camera.updateMatrices();
    expectMatrix(camera.mMatProj, {0.5f, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0});
    expectMatrix(camera.mMatProjInfinite, {0.5f, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, -1, 0, 0, -2, 0});
}

TEST(Camera, frustumEndsAtItsSixPlanes)
{
    Fennel::Camera camera = cameraAt({0, 10, 0}); // looks down, x to the right, up is negative z
    camera.mAspect = 2;
    camera.updateMatrices();
    const struct
    {
        MathBase::Vector3f point;
        bool finite, infinite;
    } cases[] = {
        {{0, 8, 0}, true, true},          {{3.9f, 8, 0}, true, true},   {{4.1f, 8, 0}, false, false},
        {{-4.1f, 8, 0}, false, false},    {{0, 8, 1.9f}, true, true},   {{0, 8, 2.1f}, false, false},
        {{0, 8, -2.1f}, false, false},    {{0, 9.1f, 0}, false, false}, {{0, 8.9f, 0}, true, true},
        {{0, 7.1f, 0}, true, true},       {{0, 6.9f, 0}, false, true},  {{0, -1000, 0}, false, true},
    };
    for (const auto& one : cases)
    {
        EXPECT_EQ(sees(camera.mFrustum, one.point), one.finite) << one.point.x << " " << one.point.y << " " << one.point.z;
        EXPECT_EQ(sees(camera.mFrustumInfinite, one.point), one.infinite) << one.point.y;
    }
}

TEST(Camera, farNotBehindNearCullsNothing)
{
    Fennel::Camera camera = cameraAt({0, 0, 0});
    camera.mFar = camera.mNear;
    camera.updateMatrices();
    EXPECT_EQ(camera.mFrustum.mNumPlanes, 0);
    expectMatrix(camera.mMatProj, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}

// What a broken file may hold must not reach an assertion of the mathematics.
TEST(Camera, degenerateValuesAreTakenAsTheyCome)
{
    for (const float fov : {0.0f, 3.1415927f, -1.0f, 1e30f})
    {
        Fennel::Camera camera = cameraAt({0, 0, 0});
        camera.mFov = fov;
        camera.mScale = {0, 1, 0};
        camera.updateMatrices();
        EXPECT_EQ(camera.mFrustum.mNumPlanes, 6) << fov;
    }
}
