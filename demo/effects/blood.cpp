#include "blood.h"

#include "tw_glinclude.h"

#include <algorithm>

void Blood::update(float, float, float position)
{
    glLoadIdentity();
    glTranslatef(0, 0, -1.5f);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);

    for (int i = 0; i < 20; ++i)
    {
        glColor4f(1, 1, 1, 1);
        const float grown = std::clamp(1.2f * position - i / 25.0f, 0.0f, 1.0f);
        const float bottom = 1 - i / 10.0f;
        const float top = bottom + 0.5f * grown;

        glTranslatef(0, -0.05f, 0); // adds up from band to band
        glBegin(GL_QUADS);
        glVertex3f(-1, top, 0);
        glVertex3f(1, top, 0);
        glVertex3f(1, bottom, 0);
        glVertex3f(-1, bottom, 0);
        glEnd();
    }
}
