#include "cubes.h"

#include "boxshape.h"
#include "effect_helpers.h"

namespace
{

const int DEEPEST = 4;

} // namespace

Cubes::~Cubes()
{
    freeCube(mRoot);
}

void Cubes::setup(AM::ArchiveManager&)
{
    freeCube(mRoot);
    mRoot = cube();
    mLevel = 0;
    setupCube(mRoot, 0);
}

void Cubes::resetTriggers()
{
    mLevel = 0;
}

// Whatever the trigger is called, it splits the cube.
void Cubes::executeTrigger(float, const std::string&, const std::string&)
{
    if (mLevel <= DEEPEST) ++mLevel; // behind it there is nothing, however often the trigger fires
}

void Cubes::updateSpline(float, const std::string& name, float value)
{
    if (name == "explode")
        mExplode = value / 10;
    else if (name == "zoom")
        mZoom = value;
    else if (name == "alpha")
        mAlpha = value / 10;
    else if (name == "bounce")
        mBounce = value;
}

void Cubes::update(float time, float, float)
{
    glLoadIdentity();
    glTranslatef(0, -mBounce, mZoom - 4.5f);
    glRotatef(40 * time, 0, 1, 1);
    glRotatef(60 * time, 0, 1, 0);
    glRotatef(21 * time, 1, 0, 0);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_LIGHTING);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    drawCube(mRoot, 0);
}

// Builds the octree below a cube: the child's number counts z in fours, y in twos, x in ones.
void Cubes::setupCube(cube& parent, int depth)
{
    if (depth >= DEEPEST) return;
    parent.children = new cube[8];
    const float scale = static_cast<float>(1 << depth);
    for (int i = 0; i < 8; ++i)
    {
        const float a = (i & 4) ? 1.0f : -1.0f;
        const float b = (i & 2) ? 1.0f : -1.0f;
        const float c = (i & 1) ? 1.0f : -1.0f;
        cube& child = parent.children[i];
        child.x = parent.x + 0.5f * c / scale;
        child.y = parent.y + 0.5f * b / scale;
        child.z = parent.z + 0.5f * a / scale;
        setupCube(child, depth + 1);
    }
}

void Cubes::freeCube(cube& parent)
{
    if (!parent.children) return;
    for (int i = 0; i < 8; ++i) freeCube(parent.children[i]);
    delete[] parent.children;
    parent.children = nullptr;
}

// Draws the cubes of the current level: the faces as light, whatever lies before them, and the outlines where they lie
// behind what is there, trembling by less than a degree.
void Cubes::drawCube(const cube& parent, int depth) const
{
    if (depth < DEEPEST)
        for (int i = 0; i < 8; ++i) drawCube(parent.children[i], depth + 1);
    if (depth != mLevel) return;

    const float scale = static_cast<float>(1 << depth);
    const float half = mSize / scale;
    const float x = parent.x * mExplode;
    const float y = parent.y * mExplode;
    const float z = parent.z * mExplode;

    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_ALWAYS);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    glColor4f(0.2f, 0.2f, 0.2f, mAlpha - 0.01f * scale * scale);
    drawBoxFaces(x, y, z, half);

    glLineWidth(3);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_GREATER);
    glColor4f(1, 1, 1, mAlpha - 0.1f * scale);
    PushedMatrix matrix;
    glRotatef(randomUnit(), 1, 0, 0);
    glRotatef(randomUnit(), 0, 1, 0);
    glRotatef(randomUnit(), 0, 0, 1);
    drawBoxOutlines(x, y, z, 1.001f * half);
}
