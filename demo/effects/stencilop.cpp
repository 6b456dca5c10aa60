#include "stencilop.h"

void StencilOp::executeTrigger(float, const std::string& name, const std::string& value)
{
    if (name != "mode") return;
    if (value == "include")
        mComparison = GL_NOTEQUAL;
    else if (value == "exclude")
        mComparison = GL_EQUAL;
    else if (value == "normal")
        mComparison = GL_ALWAYS;
}

// The stencil test that Stencil has enabled stays on, so that the rest of the frame is clipped.
void StencilOp::update(float, float, float)
{
    glDepthMask(GL_TRUE);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glStencilFunc(mComparison, 0, ~0u);
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
}
