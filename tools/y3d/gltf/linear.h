#pragma once

#include <array>

#include "mb_quatf.h"
#include "mb_vector3f.h"

namespace gltf
{

// The little algebra of the conversion, in double precision, so that only the last step rounds to the files' floats.

using Vec3 = std::array<double, 3>;
using Mat3 = std::array<Vec3, 3>; // by rows

struct Quat
{
    double w = 1.0, x = 0.0, y = 0.0, z = 0.0;
};

// A linear map and a translation behind it.
struct Affine
{
    Mat3 linear = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    Vec3 origin = {0, 0, 0};
};

// A quarter turn about x brings the direction that a camera of glTF looks in, along -z, to that of Y3D, along -y.
const Quat QUARTER_TURN_X = {0.70710678118654752, 0.70710678118654752, 0.0, 0.0};
const Quat QUARTER_TURN_BACK_X = {0.70710678118654752, -0.70710678118654752, 0.0, 0.0};

Vec3 operator*(const Mat3& m, const Vec3& v);
Mat3 operator*(const Mat3& a, const Mat3& b);
Affine operator*(const Affine& a, const Affine& b);
Vec3 operator*(const Affine& a, const Vec3& point);
Quat operator*(const Quat& a, const Quat& b);
double dot(const Quat& a, const Quat& b);
Mat3 transposed(const Mat3& m);
double determinant(const Mat3& m);

Quat normalized(const Quat& q); // no rotation where that cannot be
Mat3 rotationOf(const Quat& unit);
Quat quaternionOf(const Mat3& rotation);
Mat3 scaling(const Vec3& factors);

// The shortest way between two unit quaternions at a constant speed; t from 0 to 1.
Quat slerp(const Quat& a, Quat b, double t);

// The angle of the rotation between two unit quaternions, in radians.
double angleBetween(const Quat& a, const Quat& b);

// m = left * scaling(stretch) * right, with rotations left and right. The stretch has at most one negative factor, the
// last one, where m mirrors.
struct Stretch
{
    Mat3 left;
    Vec3 stretch;
    Mat3 right;
};
Stretch decompose(const Mat3& m);

// The rotation nearest to the axes of m: its third axis keeps its direction, its second one stays in their plane.
Quat orientationOf(const Mat3& m);

MathBase::Vector3f toVector3f(const Vec3& v);
MathBase::Quatf toQuatf(const Quat& q);
Vec3 toVec3(const MathBase::Vector3f& v);
Quat toQuat(const MathBase::Quatf& q);

} // namespace gltf
