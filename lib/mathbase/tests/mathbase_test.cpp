#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "mb_aabbpointsf.h"
#include "mb_frustum.h"
#include "mb_matrix4x4col.h"
#include "mb_planef.h"
#include "mb_quatf.h"
#include "mb_vector3f.h"

using namespace MathBase;

namespace
{

const float HALF_ROOT = 0.70710678f; // sine and cosine of 45 degrees
const float HALF_PI = 1.5707964f;

void expectNear(const Vector3f& v, float x, float y, float z)
{
    EXPECT_NEAR(v.x, x, 1e-6f);
    EXPECT_NEAR(v.y, y, 1e-6f);
    EXPECT_NEAR(v.z, z, 1e-6f);
}

void expectNear(const Quatf& q, float w, float x, float y, float z)
{
    EXPECT_NEAR(q.w, w, 1e-6f);
    expectNear(Vector3f(q.x, q.y, q.z), x, y, z);
}

Matrix4x4Col translation(float x, float y, float z)
{
    Matrix4x4Col m;
    m[12] = x;
    m[13] = y;
    m[14] = z;
    return m;
}

Matrix4x4Col rotation(const Quatf& q)
{
    Matrix4x4Col m;
    m.setFromQuat(q);
    return m;
}

} // namespace

TEST(Quatf, normalizesInvertsAndFallsBackToTheIdentity)
{
    Quatf q(0.0f, 3.0f, 0.0f, -4.0f);
    q.normalize();
    expectNear(q, 0.0f, 0.6f, 0.0f, -0.8f);
    q = Quatf(1.0f, 2.0f, 3.0f, 4.0f); // squared norm 30
    q.invert();
    expectNear(q, 1.0f / 30, -2.0f / 30, -3.0f / 30, -4.0f / 30);

    const float infinity = std::numeric_limits<float>::infinity();
    for (const float bad : {0.0f, 1e-11f, 1e30f, infinity, std::nanf("")})
    {
        q = Quatf(0.0f, bad, 0.0f, 0.0f);
        q.normalizeOrIdentity();
        expectNear(q, 1.0f, 0.0f, 0.0f, 0.0f);
    }
}

TEST(Quatf, turnsAboutBlendersAxes)
{
    const struct
    {
        Vector3f angles;
        Quatf rotation;
    } cases[] = {
        {Vector3f(HALF_PI, 0, 0), Quatf(HALF_ROOT, HALF_ROOT, 0, 0)},
        {Vector3f(0, HALF_PI, 0), Quatf(HALF_ROOT, 0, 0, -HALF_ROOT)},
        {Vector3f(0, 0, HALF_PI), Quatf(HALF_ROOT, 0, HALF_ROOT, 0)},
        {Vector3f(HALF_PI, HALF_PI, HALF_PI), Quatf(HALF_ROOT, 0, 0, -HALF_ROOT)}, // all sines and cosines the same
    };
    for (const auto& test : cases)
    {
        Quatf q;
        q.fromBlenderEuler(test.angles);
        expectNear(q, test.rotation.w, test.rotation.x, test.rotation.y, test.rotation.z);
    }
}

TEST(Matrix4x4Col, takesARotationAndMultipliesFromTheRight)
{
    const Matrix4x4Col aboutZ = rotation(Quatf(HALF_ROOT, 0.0f, 0.0f, HALF_ROOT));
    const Vector3f point(1.0f, 2.0f, 3.0f);
    expectNear(aboutZ.transformPoint(point), -2.0f, 1.0f, 3.0f);
    expectNear(rotation(Quatf(HALF_ROOT, HALF_ROOT, 0.0f, 0.0f)).transformPoint(point), 1.0f, -3.0f, 2.0f);
    expectNear(rotation(Quatf(HALF_ROOT, 0.0f, HALF_ROOT, 0.0f)).transformPoint(point), 3.0f, 2.0f, -1.0f);

    Matrix4x4Col m = translation(10.0f, 0.0f, 0.0f);
    m.multiplyFromRight(aboutZ); // rotates first
    expectNear(m.transformPoint(Vector3f(1.0f, 0.0f, 0.0f)), 10.0f, 1.0f, 0.0f);
    m = translation(1.0f, 2.0f, 3.0f);
    m.multiplyFromRight(m);
    expectNear(m.transformPoint(Vector3f()), 2.0f, 4.0f, 6.0f);
    m[15] = 2.0f; // every point comes out with a w of 2
    expectNear(m.transformPoint(Vector3f()), 1.0f, 2.0f, 3.0f);
}

TEST(AABBpointsf, growsAroundPointsAndItsOwnTransformedCorners)
{
    AABBpointsf box(Vector3f(-1.0f, -1.0f, -1.0f), Vector3f(1.0f, 1.0f, 1.0f));
    box.includePoint(Vector3f(3.0f, 0.0f, -2.0f));
    expectNear(box.mMin, -1.0f, -1.0f, -2.0f);
    expectNear(box.mMax, 3.0f, 1.0f, 1.0f);

    box = AABBpointsf(Vector3f(-1.0f, -1.0f, 2.0f), Vector3f(1.0f, 1.0f, 3.0f));
    box.setTransformed(box, rotation(Quatf(0.9238795f, 0.0f, 0.0f, 0.3826834f))); // 45 degrees
    expectNear(box.mMin, -1.4142135f, -1.4142135f, 2.0f);
    expectNear(box.mMax, 1.4142135f, 1.4142135f, 3.0f);
    EXPECT_FLOAT_EQ(AABBpointsf(Vector3f(), Vector3f(2.0f, 0.0f, 0.0f)).getMinSphereRadiusFromCenter(), 1.0f);
}

TEST(Frustum, planesBoundWhatACameraSees)
{
    // 90 degrees both ways, from 1 to 3 in front of a camera at z = 5 that looks along -z.
    Matrix4x4Col projection;
    projection[10] = -2.0f;
    projection[11] = -1.0f;
    projection[14] = -3.0f;
    projection[15] = 0.0f;
    Frustum frustum;
    frustum.buildGLInfinite(projection, translation(0.0f, 0.0f, -5.0f));
    EXPECT_EQ(frustum.mNumPlanes, 5);
    EXPECT_EQ(frustum.mPlanes[Frustum::FAR].distanceTo(Vector3f(9.0f, 9.0f, 9.0f)), 1.0f); // not filled
    frustum.buildGL(projection, translation(0.0f, 0.0f, -5.0f));
    EXPECT_EQ(frustum.mNumPlanes, 6);

    // At the depth of z = 3 the frustum reaches from -2 to 2.
    const float distances[6] = {HALF_ROOT, 3.0f * HALF_ROOT, 2.0f * HALF_ROOT, 2.0f * HALF_ROOT, 1.0f, 1.0f};
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_NEAR(frustum.mPlanes[i].distanceTo(Vector3f(1.0f, 0.0f, 3.0f)), distances[i], 1e-6f) << "plane " << i;
    }
    EXPECT_NEAR(frustum.mPlanes[Frustum::TOP].distanceTo(Vector3f(0.0f, 2.0f, 3.0f)), 0.0f, 1e-6f);

    for (int i = 0; i < 16; ++i) projection[i] = i % 2 ? 0.0f : std::nanf("");
    frustum.buildGL(projection, Matrix4x4Col());
    for (const Planef& plane : frustum.mPlanes) EXPECT_GT(plane.distanceTo(Vector3f(1e9f, -1e9f, 1e9f)), 0.0f);
}

TEST(MathBaseDeathTest, zeroLengthsAreProgrammingErrors)
{
    Quatf quat(0.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_DEATH(Vector3f().normalize(), "length>1E-10");
    EXPECT_DEATH(quat.normalize(), "length>1E-10");
    EXPECT_DEATH(quat.invert(), "norm2>1E-13");
    EXPECT_DEATH(Planef(0, 0, 0, 1).normalize(), "d>1E-10");
}
