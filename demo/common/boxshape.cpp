#include "boxshape.h"

namespace
{

// Corners of the faces: which side of the centre they lie on, along x, y and z.
const signed char faces[6][4][3] = {
    {{1, 1, 1}, {1, 1, -1}, {-1, 1, -1}, {-1, 1, 1}},     //
    {{-1, -1, -1}, {1, -1, -1}, {1, -1, 1}, {-1, -1, 1}}, //
    {{-1, 1, -1}, {-1, -1, -1}, {-1, -1, 1}, {-1, 1, 1}}, //
    {{1, -1, 1}, {1, -1, -1}, {1, 1, -1}, {1, 1, 1}},     //
    {{-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}},     //
    {{1, 1, -1}, {1, -1, -1}, {-1, -1, -1}, {-1, 1, -1}},
};

// The last face's outline runs the other way round.
const signed char LAST_OUTLINE[4][3] = {{-1, -1, -1}, {-1, 1, -1}, {1, 1, -1}, {1, -1, -1}};

} // namespace

void drawBoxFaces(float x, float y, float z, float half)
{
    // The two places along each axis, computed once.
    const float xs[2] = {x - half, x + half};
    const float ys[2] = {y - half, y + half};
    const float zs[2] = {z - half, z + half};
    glBegin(GL_QUADS);
    for (const auto& face : faces)
        for (const signed char(&corner)[3] : face) glVertex3f(xs[corner[0] > 0], ys[corner[1] > 0], zs[corner[2] > 0]);
    glEnd();
}

void drawBoxOutlines(float x, float y, float z, float half)
{
    const float xs[2] = {x - half, x + half};
    const float ys[2] = {y - half, y + half};
    const float zs[2] = {z - half, z + half};
    for (int face = 0; face < 6; ++face)
    {
        const signed char(&corners)[4][3] = face < 5 ? faces[face] : LAST_OUTLINE;
        glBegin(GL_LINE_STRIP);
        for (const signed char(&corner)[3] : corners)
            glVertex3f(xs[corner[0] > 0], ys[corner[1] > 0], zs[corner[2] > 0]);
        glEnd();
    }
}
