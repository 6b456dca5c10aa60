#include "ball.h"

#include "effect_helpers.h"
#include "landscapeview.h"

namespace
{

const int TEXTURESIZE = 128; // side of the sphere's texture
const int PARTICLE_SIZE = 32;
const float PIXEL = 0.0078125f; // 1 / TEXTURESIZE

// Far beyond what a picture shows: drawn by the processor, a frame of so many takes some tenths of a second.
const int MAX_LAYERS = 1000;
const int MAX_COUNT = 10000;

} // namespace

Ball::Ball()
{
    Ball::resetTriggers();
}

Ball::~Ball()
{
    if (mQuadric) gluDeleteQuadric(mQuadric);
    glDeleteTextures(1, &mParticle);
    glDeleteTextures(1, &mSphereTexture);
}

void Ball::setup(AM::ArchiveManager&)
{
    mBackground = loadPicture(*mTextureManager, PictureFiles::LANDSCAPE);

    mQuadric = gluNewQuadric();
    gluQuadricNormals(mQuadric, GLU_SMOOTH);
    gluQuadricTexture(mQuadric, GL_TRUE);

    glGenTextures(1, &mSphereTexture);
    glBindTexture(GL_TEXTURE_2D, mSphereTexture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);

    const std::vector<unsigned char> spot = makeSoftSpot(PARTICLE_SIZE);
    GL_CHECKED(glGenTextures(1, &mParticle));
    glBindTexture(GL_TEXTURE_2D, mParticle);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_ALPHA, PARTICLE_SIZE, PARTICLE_SIZE, 0, GL_ALPHA, GL_UNSIGNED_BYTE, spot.data());
    setTextureFilter(GL_LINEAR);

    drawParticles(0); // so that the sphere's texture exists before the first frame
}

// The sphere comes in from the right.
void Ball::resetTriggers()
{
    mPosition.set(10, 0, 0);
    mTarget.set(0, 0, 0);
}

void Ball::executeTrigger(float, const std::string& name, const std::string& value)
{
    if (name == "speed")
        mSpeed = readFloat(value);
    else if (name == "move")
        chooseTarget();
    else if (name == "layers")
        mLayers = readCount(value, MAX_LAYERS);
    else if (name == "count")
        mCount = readCount(value, MAX_COUNT);
}

void Ball::updateSpline(float, const std::string& name, float value)
{
    if (name == "alphastep")
        mAlphaStep = value / 100;
    else if (name == "step")
        mStep = value / 100;
    else if (name == "size")
        mSize = value;
}

void Ball::update(float time, float delta, float position)
{
    drawParticles(time);
    drawBackground(position);

    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    glBindTexture(GL_TEXTURE_2D, mSphereTexture);

    if (delta > 0) mPosition += (mTarget - mPosition) * (delta / 1000 * mSpeed);
    drawSphere(time);
}

void Ball::drawParticles(float time)
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glPushAttrib(GL_ENABLE_BIT);
    glDisable(GL_STENCIL_TEST);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glViewport(0, 0, TEXTURESIZE, TEXTURESIZE);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();

    glBindTexture(GL_TEXTURE_2D, mParticle);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    for (int i = 0; i < mCount; ++i)
    {
        // Each particle has a Lissajous path of its own, in whole steps of 1/128.
        const float f = 1000 * static_cast<float>(i);
        const int a = static_cast<int>(96 * std::sin(static_cast<double>(100 * sinf(f) + time)));
        const int b = static_cast<int>(96 * std::cos(100 * cosf(f) + 1.4 * time));
        PushedMatrix matrix;
        glTranslatef(0, 0, -1);
        glTranslatef(static_cast<float>(a) * PIXEL, static_cast<float>(b) * PIXEL, 0);
        glColor3f(1, 1, 1);
        glScalef(mSize * PIXEL, mSize * PIXEL, 0);
        drawStrip(0, 0, 1, 1, 1, 1);
    }

    glBindTexture(GL_TEXTURE_2D, mSphereTexture);
    GL_CHECKED(glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 0, 0, TEXTURESIZE, TEXTURESIZE, 0));

    glViewport(0, 0, FRAME_WIDTH, FRAME_HEIGHT);
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glPopAttrib();
}

// Draws places until one lies more than 2 away from where the sphere is.
void Ball::chooseTarget()
{
    maril64k::Point3D way;
    do
    {
        mTarget.x = (2 * randomUnit() - 1) * 4;
        mTarget.y = (2 * randomUnit() - 1) * 4;
        mTarget.z = (2 * randomUnit() - 1) * 8;
        way = mTarget - mPosition;
    } while (way.x * way.x + way.y * way.y + way.z * way.z <= 4);
}

// The window pans across it once in the length of the entry.
void Ball::drawBackground(float position) const
{
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    mBackground->bind();

    glLoadIdentity();
    glColor3f(1, 1, 1);
    placeLandscape();
    const float s = position * (1 - LANDSCAPE_S);
    drawStrip(s, 0, s + LANDSCAPE_S, LANDSCAPE_T, 1, 1);
}

// The solid core, then the shells, which grow by the same factor each and add up.
void Ball::drawSphere(float time) const
{
    glLoadIdentity();
    glTranslatef(0, 0, -10);
    glTranslatef(mPosition.x, mPosition.y, mPosition.z);
    // In double: what single precision loses of the argument shows in degrees once the entry is minutes old.
    glRotatef(static_cast<float>(360 * std::sin(0.25 * time)), 1, 0, 0);
    glRotatef(static_cast<float>(360 * std::sin(1.3 * time * 0.25)), 0, 1, 0);

    const float growth = 1 + mStep;
    glDisable(GL_BLEND);
    glColor4f(1, 1, 1, 1);
    glScalef(growth, growth, growth);
    gluSphere(mQuadric, 1.3, 32, 32);

    glEnable(GL_BLEND);
    for (int i = 0; i < mLayers; ++i)
    {
        glColor4f(1, 1, 1, 1 - static_cast<float>(i) * mAlphaStep);
        glScalef(growth, growth, growth);
        gluSphere(mQuadric, 1.3, 32, 32);
    }
}
