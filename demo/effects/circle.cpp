#include "circle.h"

Circle::~Circle()
{
    if (mQuadric) gluDeleteQuadric(mQuadric);
}

void Circle::setup(AM::ArchiveManager&)
{
    mQuadric = gluNewQuadric();
    gluQuadricNormals(mQuadric, GLU_SMOOTH);
    gluQuadricTexture(mQuadric, GL_FALSE);
}

void Circle::update(float, float, float position)
{
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);

    glColor3f(1, 1, 1);
    glLoadIdentity();
    glTranslatef(0, 0, -1);
    glScalef(1 - position, 1 - position, 1);
    gluDisk(mQuadric, 0, 1, 32, 1);
}
