#include "boolean.h"

#include "effect_helpers.h"

namespace
{

const float H = 0.5f; // half the side of a cube

struct Face
{
    float normal[3];
    float corners[4][3];
};

const Face faces[6] = {
    {{0, 0, 1}, {{-H, -H, H}, {H, -H, H}, {H, H, H}, {-H, H, H}}},
    {{0, 0, -1}, {{-H, -H, -H}, {-H, H, -H}, {H, H, -H}, {H, -H, -H}}},
    {{0, 1, 0}, {{-H, H, -H}, {-H, H, H}, {H, H, H}, {H, H, -H}}},
    {{0, -1, 0}, {{-H, -H, -H}, {H, -H, -H}, {H, -H, H}, {-H, -H, H}}},
    {{1, 0, 0}, {{H, -H, -H}, {H, H, -H}, {H, H, H}, {H, -H, H}}},
    {{-1, 0, 0}, {{-H, -H, -H}, {-H, -H, H}, {-H, H, H}, {-H, H, -H}}},
};

void placeA(float t)
{
    glLoadIdentity();
    glTranslatef(0.5f * std::sin(2 * t), 0, -3);
    glRotatef(2 * 45 * t, 1, 0.5f, 0);
}

void placeB(float t)
{
    glLoadIdentity();
    glTranslatef(0.5f * std::cos(2 * t), 0, -3);
    glRotatef(2 * (-60 * t), 0.25f, 0.75f, 1);
}

void writeColors(GLboolean on)
{
    glColorMask(on, on, on, on);
}

} // namespace

// Of two fronts the farther one is the front of what the cubes share. The first cube drawn counts the pixels of its
// front, the second those where its own front lies behind it: where the count is 2, the second cube shows. The two
// halves are not sorted against each other, the second lies over the first.
void Boolean::update(float time, float, float)
{
    glViewport(0, 0, 72, 72);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_CULL_FACE);
    glEnable(GL_STENCIL_TEST);
    glEnable(GL_DEPTH_TEST);
    glDepthMask(GL_TRUE);
    writeColors(GL_FALSE);
    glCullFace(GL_BACK);

    // The faces of B inside A.
    glStencilFunc(GL_ALWAYS, 0, ~0u);
    glStencilOp(GL_KEEP, GL_KEEP, GL_INCR);
    {
        PushedMatrix matrix;
        placeA(time);
        drawPoly1();
    }
    placeB(time);
    glStencilFunc(GL_ALWAYS, 0, ~0u);
    glStencilOp(GL_KEEP, GL_INCR, GL_KEEP);
    drawPoly1();
    glClear(GL_DEPTH_BUFFER_BIT);
    glColor3f(0.5f, 0.25f, 0.125f);
    drawMarkedFaces();

    // The faces of A inside B.
    glClear(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    writeColors(GL_FALSE);
    glStencilFunc(GL_ALWAYS, 0, ~0u);
    glStencilOp(GL_KEEP, GL_KEEP, GL_INCR);
    placeB(time);
    drawPoly1();
    placeA(time);
    glStencilOp(GL_KEEP, GL_INCR, GL_KEEP);
    drawPoly1();
    glClear(GL_DEPTH_BUFFER_BIT);
    drawMarkedFaces();

    // Both cubes as wire frames.
    glDisable(GL_LIGHTING);
    glColor3f(1, 1, 1);
    glDisable(GL_STENCIL_TEST);
    glPolygonMode(GL_FRONT, GL_LINE);
    placeA(time);
    drawPoly1();
    placeB(time);
    drawPoly1();
    glPolygonMode(GL_FRONT, GL_FILL);
}

void Boolean::drawPoly1()
{
    glBegin(GL_QUADS);
    for (const Face& face : faces)
    {
        glNormal3f(face.normal[0], face.normal[1], face.normal[2]);
        for (const float* corner : face.corners) glVertex3f(corner[0], corner[1], corner[2]);
    }
    glEnd();
}

void Boolean::drawMarkedFaces()
{
    writeColors(GL_TRUE);
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    glStencilFunc(GL_EQUAL, 2, ~0u);
    drawPoly1();
}
