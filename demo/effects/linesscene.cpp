#include "linesscene.h"

#include "effect_helpers.h"

namespace
{

// Forty for each place on the screen: drawn by the processor, such a frame takes some tenths of a second.
const int MAX_COUNT = 10000;

} // namespace

LinesScene::~LinesScene()
{
    if (mList) glDeleteLists(mList, 1);
}

void LinesScene::setup(AM::ArchiveManager&)
{
    mList = glGenLists(1);
    glNewList(mList, GL_COMPILE);
    drawStrip(0, 0, 1, 1, 0.004f, 1);
    glEndList();
}

void LinesScene::executeTrigger(float, const std::string& name, const std::string& value)
{
    if (name == "count") mCount = readCount(value, MAX_COUNT);
}

void LinesScene::updateSpline(float, const std::string& name, float value)
{
    if (name == "alpha") mAlpha = value / 10;
}

void LinesScene::update(float, float, float)
{
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);

    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glLoadIdentity();
    glColor4f(0, 0, 0, 0.4f * mAlpha);
    for (int i = 0; i < mCount; ++i)
    {
        PushedMatrix matrix;
        glTranslatef(2 * (randomUnit() - 0.5f), 0, -1);
        glCallList(mList);
    }

    glEnable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_LIGHTING);
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}
