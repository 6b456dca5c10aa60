#include "stencil.h"

#include "tw_glinclude.h"

void Stencil::update(float, float, float)
{
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glDepthMask(GL_FALSE);
    glEnable(GL_STENCIL_TEST);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glStencilFunc(GL_ALWAYS, 1, ~0u);
    glStencilOp(GL_INCR, GL_INCR, GL_INCR);
}
