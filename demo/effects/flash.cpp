#include "flash.h"

#include "effect_helpers.h"

void Flash::executeTrigger(float, const std::string& name, const std::string& value)
{
    if (name == "r")
        mR = readFloat(value);
    else if (name == "g")
        mG = readFloat(value);
    else if (name == "b")
        mB = readFloat(value);
}

void Flash::update(float, float, float position)
{
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

    FullScreenFrame frame;
    glColor4f(mR, mG, mB, 1 - position);
    drawFullScreenQuad();
}
