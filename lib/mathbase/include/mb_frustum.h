#pragma once

#include "mb_matrix4x4col.h"
#include "mb_planef.h"

#include <cmath>

namespace MathBase
{

// The planes that bound what a camera sees, their normals pointing inwards.
struct Frustum
{
    enum Slot
    {
        RIGHT,
        LEFT,
        TOP,
        BOTTOM,
        NEAR,
        FAR
    };

    // The planes of projection * view, in the space that `view` starts from. A plane that a degenerate matrix leaves
    // without a direction bounds nothing: every point is on its inner side.
    void buildGL(const Matrix4x4Col& projection, const Matrix4x4Col& view) { build(6, projection, view); }

    // The same without the far plane, for a projection that reaches to infinity; the far slot is not touched.
    void buildGLInfinite(const Matrix4x4Col& projection, const Matrix4x4Col& view) { build(5, projection, view); }

    int mNumPlanes = 0; // 6, 5 without the far plane, 0 for a frustum that bounds nothing
    Planef mPlanes[6];  // right, left, top, bottom, near, far

private:
    void build(int numPlanes, const Matrix4x4Col& projection, const Matrix4x4Col& view)
    {
        Matrix4x4Col m = projection;
        m.multiplyFromRight(view);

        mNumPlanes = numPlanes;
        mPlanes[RIGHT] = row3Plus(m, 0, -1.0f);
        mPlanes[LEFT] = row3Plus(m, 0, 1.0f);
        mPlanes[TOP] = row3Plus(m, 1, -1.0f);
        mPlanes[BOTTOM] = row3Plus(m, 1, 1.0f);
        mPlanes[NEAR] = row3Plus(m, 2, 1.0f);
        if (numPlanes == 6) mPlanes[FAR] = row3Plus(m, 2, -1.0f);
    }

    // Clip space ends where a coordinate equals w or -w, so each plane is the last row of the matrix with another one
    // added or taken away.
    static Planef row3Plus(const Matrix4x4Col& m, int row, float sign)
    {
        Planef plane(m[3] + sign * m[row], m[7] + sign * m[row + 4], m[11] + sign * m[row + 8],
                     m[15] + sign * m[row + 12]);
        const float length = plane.normalLength();
        if (!(length > 1E-10) || !std::isfinite(length)) return Planef();
        plane.normalize();
        return plane;
    }
};

} // namespace MathBase
