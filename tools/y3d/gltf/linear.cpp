#include "linear.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace gltf
{

namespace
{

double dot(const Vec3& a, const Vec3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vec3 cross(const Vec3& a, const Vec3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vec3 column(const Mat3& m, int i)
{
    return {m[0][i], m[1][i], m[2][i]};
}

Mat3 fromColumns(const Vec3& x, const Vec3& y, const Vec3& z)
{
    return {{{x[0], y[0], z[0]}, {x[1], y[1], z[1]}, {x[2], y[2], z[2]}}};
}

// The part of v at right angles to the unit vectors before it, with length 1; some such direction where none is left.
Vec3 orthonormal(Vec3 v, const std::vector<Vec3>& before)
{
    const Vec3 candidates[] = {v, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    for (Vec3 candidate : candidates)
    {
        const double size = std::sqrt(dot(candidate, candidate));
        for (const Vec3& axis : before)
        {
            const double along = dot(candidate, axis);
            for (int i = 0; i < 3; ++i) candidate[i] -= along * axis[i];
        }
        const double length = std::sqrt(dot(candidate, candidate));
        if (!(length > 1e-9 * size) || !std::isfinite(length)) continue;
        return {candidate[0] / length, candidate[1] / length, candidate[2] / length};
    }
    return {0, 0, 1};
}

// The eigenvectors of a symmetric matrix as columns, by Jacobi's rotations.
Mat3 eigenvectors(Mat3 a)
{
    Mat3 vectors = Affine().linear;
    for (int sweep = 0; sweep < 30; ++sweep)
    {
        for (int p = 0; p < 2; ++p)
        {
            for (int q = p + 1; q < 3; ++q)
            {
                if (a[p][q] == 0.0) continue;
                const double theta = (a[q][q] - a[p][p]) / (2.0 * a[p][q]);
                const double t = (theta < 0 ? -1.0 : 1.0) / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
                const double c = 1.0 / std::sqrt(t * t + 1.0);
                Mat3 turn = Affine().linear;
                turn[p][p] = turn[q][q] = c;
                turn[p][q] = t * c;
                turn[q][p] = -t * c;
                a = transposed(turn) * a * turn;
                vectors = vectors * turn;
            }
        }
    }
    return vectors;
}

} // namespace

Vec3 operator*(const Mat3& m, const Vec3& v)
{
    return {dot(m[0], v), dot(m[1], v), dot(m[2], v)};
}

Mat3 operator*(const Mat3& a, const Mat3& b)
{
    return fromColumns(a * column(b, 0), a * column(b, 1), a * column(b, 2));
}

Vec3 operator*(const Affine& a, const Vec3& point)
{
    Vec3 result = a.linear * point;
    for (int i = 0; i < 3; ++i) result[i] += a.origin[i];
    return result;
}

Affine operator*(const Affine& a, const Affine& b)
{
    return {a.linear * b.linear, a * b.origin};
}

Quat operator*(const Quat& a, const Quat& b)
{
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z, a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x, a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w};
}

double dot(const Quat& a, const Quat& b)
{
    return a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z;
}

Mat3 transposed(const Mat3& m)
{
    return fromColumns(m[0], m[1], m[2]);
}

double determinant(const Mat3& m)
{
    return dot(m[0], cross(m[1], m[2]));
}

Quat normalized(const Quat& q)
{
    const double length = std::sqrt(dot(q, q));
    if (!(length > 1e-10) || !std::isfinite(length)) return Quat();
    return {q.w / length, q.x / length, q.y / length, q.z / length};
}

Mat3 rotationOf(const Quat& q)
{
    return {{{1 - 2 * (q.y * q.y + q.z * q.z), 2 * (q.x * q.y - q.w * q.z), 2 * (q.x * q.z + q.w * q.y)},
             {2 * (q.x * q.y + q.w * q.z), 1 - 2 * (q.x * q.x + q.z * q.z), 2 * (q.y * q.z - q.w * q.x)},
             {2 * (q.x * q.z - q.w * q.y), 2 * (q.y * q.z + q.w * q.x), 1 - 2 * (q.x * q.x + q.y * q.y)}}};
}

// From the largest of the four components, so that the division is a safe one.
Quat quaternionOf(const Mat3& m)
{
    const double four[] = {m[0][0] + m[1][1] + m[2][2], m[0][0] - m[1][1] - m[2][2], m[1][1] - m[0][0] - m[2][2],
                           m[2][2] - m[0][0] - m[1][1]};
    const Quat candidates[] = {{1 + four[0], m[2][1] - m[1][2], m[0][2] - m[2][0], m[1][0] - m[0][1]},
                               {m[2][1] - m[1][2], 1 + four[1], m[0][1] + m[1][0], m[0][2] + m[2][0]},
                               {m[0][2] - m[2][0], m[0][1] + m[1][0], 1 + four[2], m[1][2] + m[2][1]},
                               {m[1][0] - m[0][1], m[0][2] + m[2][0], m[1][2] + m[2][1], 1 + four[3]}};
    return normalized(candidates[std::max_element(four, four + 4) - four]);
}

Mat3 scaling(const Vec3& factors)
{
    return {{{factors[0], 0, 0}, {0, factors[1], 0}, {0, 0, factors[2]}}};
}

Quat slerp(const Quat& a, Quat b, double t)
{
    double cosine = dot(a, b);
    if (cosine < 0.0)
    {
        b = {-b.w, -b.x, -b.y, -b.z};
        cosine = -cosine;
    }
    double fromA = 1.0 - t, fromB = t;
    if (cosine < 0.9999999)
    {
        const double angle = std::acos(cosine);
        fromA = std::sin((1.0 - t) * angle) / std::sin(angle);
        fromB = std::sin(t * angle) / std::sin(angle);
    }
    return normalized(
        {fromA * a.w + fromB * b.w, fromA * a.x + fromB * b.x, fromA * a.y + fromB * b.y, fromA * a.z + fromB * b.z});
}

double angleBetween(const Quat& a, const Quat& b)
{
    // By the sine: the cosine has no digits left for a small angle.
    const Quat between = Quat{a.w, -a.x, -a.y, -a.z} * b;
    const double sine = std::sqrt(between.x * between.x + between.y * between.y + between.z * between.z);
    return 2.0 * std::atan2(sine, std::fabs(between.w));
}

Stretch decompose(const Mat3& m)
{
    // Axes that stay at right angles need no turn before the stretch.
    Mat3 axes = Affine().linear;
    const Mat3 square = transposed(m) * m;
    const double size = square[0][0] + square[1][1] + square[2][2];
    const double skew = std::fabs(square[0][1]) + std::fabs(square[0][2]) + std::fabs(square[1][2]);
    if (skew > 1e-6 * size) axes = eigenvectors(square);
    if (determinant(axes) < 0) axes = axes * scaling({1, 1, -1});

    Stretch result;
    const Mat3 stretched = m * axes;
    std::vector<Vec3> left;
    for (int i = 0; i < 3; ++i)
    {
        left.push_back(orthonormal(column(stretched, i), left));
        result.stretch[i] = dot(left[i], column(stretched, i));
    }
    result.left = fromColumns(left[0], left[1], left[2]);
    if (determinant(result.left) < 0)
    {
        result.left = result.left * scaling({1, 1, -1});
        result.stretch[2] = -result.stretch[2];
    }
    result.right = transposed(axes);
    return result;
}

Quat orientationOf(const Mat3& m)
{
    const Vec3 z = orthonormal(column(m, 2), {});
    const Vec3 y = orthonormal(column(m, 1), {z});
    return quaternionOf(fromColumns(cross(y, z), y, z));
}

MathBase::Vector3f toVector3f(const Vec3& v)
{
    return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}

MathBase::Quatf toQuatf(const Quat& q)
{
    return {static_cast<float>(q.w), static_cast<float>(q.x), static_cast<float>(q.y), static_cast<float>(q.z)};
}

Vec3 toVec3(const MathBase::Vector3f& v)
{
    return {v.x, v.y, v.z};
}

Quat toQuat(const MathBase::Quatf& q)
{
    return {q.w, q.x, q.y, q.z};
}

} // namespace gltf
