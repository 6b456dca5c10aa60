#pragma once

#include "mb_quatf.h"
#include "mb_vector3f.h"

#include <cassert>

namespace MathBase
{

// A 4x4 matrix by columns, as OpenGL takes it: element (row r, column c) stands at index 4 c + r. A new one is the
// identity.
struct Matrix4x4Col
{
    // The elements by index, 0 to 15.
    float operator[](int index) const
    {
        assert(index>=0 && index<16);
        return m[index];
    }
    float& operator[](int index)
    {
        assert(index>=0 && index<16);
        return m[index];
    }

    void setIdentity() { *this = Matrix4x4Col(); }

    // The rotation of q, which is not normalised first.
    void setFromQuat(const Quatf& q)
    {
        setIdentity();
        m[0] = 1.0f - 2.0f * (q.y * q.y + q.z * q.z);
        m[1] = 2.0f * (q.x * q.y + q.w * q.z);
        m[2] = 2.0f * (q.x * q.z - q.w * q.y);
        m[4] = 2.0f * (q.x * q.y - q.w * q.z);
        m[5] = 1.0f - 2.0f * (q.x * q.x + q.z * q.z);
        m[6] = 2.0f * (q.y * q.z + q.w * q.x);
        m[8] = 2.0f * (q.x * q.z + q.w * q.y);
        m[9] = 2.0f * (q.y * q.z - q.w * q.x);
        m[10] = 1.0f - 2.0f * (q.x * q.x + q.y * q.y);
    }

    // this = this * right; `right` may be this matrix itself.
    void multiplyFromRight(const Matrix4x4Col& right) { *this = product(*this, right); }

    // left * right.
    static Matrix4x4Col product(const Matrix4x4Col& left, const Matrix4x4Col& right)
    {
        Matrix4x4Col result;
        left.transformColumn(right.m, result.m);
        left.transformColumn(right.m + 4, result.m + 4);
        left.transformColumn(right.m + 8, result.m + 8);
        left.transformColumn(right.m + 12, result.m + 12);
        return result;
    }

    // The point p taken through the matrix, divided by its resulting w.
    Vector3f transformPoint(const Vector3f& p) const
    {
        const float w = m[3] * p.x + m[7] * p.y + m[11] * p.z + m[15];
        return Vector3f((m[0] * p.x + m[4] * p.y + m[8] * p.z + m[12]) / w,
                        (m[1] * p.x + m[5] * p.y + m[9] * p.z + m[13]) / w,
                        (m[2] * p.x + m[6] * p.y + m[10] * p.z + m[14]) / w);
    }

    float m[16] = {1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f};

private:
    // Makes a column of a product out of that of the right factor. The sums begin at zero, so that negative zeros alone
    // add up to a zero without a sign.
    void transformColumn(const float* right, float* result) const
    {
        const float x = right[0], y = right[1], z = right[2], w = right[3];
        for (int row = 0; row < 4; ++row)
            result[row] = 0.0f + m[row] * x + m[4 + row] * y + m[8 + row] * z + m[12 + row] * w;
    }
};

} // namespace MathBase
