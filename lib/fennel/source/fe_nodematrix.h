#pragma once

#include "mb_matrix4x4col.h"
#include "mb_quatf.h"
#include "mb_vector3f.h"

namespace Fennel
{

// From what turns, is scaled and stands at a place, to the space of its parent. The scale applies after the rotation,
// along the axes of the parent.
inline MathBase::Matrix4x4Col nodeMatrix(const MathBase::Quatf& rotation, const MathBase::Vector3f& scale,
                                         const MathBase::Vector3f& position)
{
    MathBase::Matrix4x4Col matrix;
    matrix.setFromQuat(rotation);
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column) matrix[4 * column + row] *= scale[row];
        matrix[12 + row] = position[row];
    }
    return matrix;
}

} // namespace Fennel
