#include "static.h"

#include "effect_helpers.h"

namespace
{

const int NOISE_SIZE = 512;
const int PAIRS = 64;

// Texture coordinates of the four vertices for 16 frames: the quadrants of the noise as they stand, mirrored in s,
// mirrored in t, and mirrored in both.
const float tex[PAIRS][2] = {
    {0, 0},       {0.5f, 0},    {0, 0.5f},    {0.5f, 0.5f}, //
    {0.5f, 0},    {1, 0},       {0.5f, 0.5f}, {1, 0.5f},    //
    {0, 0.5f},    {0.5f, 0.5f}, {0, 1},       {0.5f, 1},    //
    {0.5f, 0.5f}, {1, 0.5f},    {0.5f, 1},    {1, 1},       //
    {1, 0},       {0.5f, 0},    {1, 0.5f},    {0.5f, 0.5f}, //
    {0.5f, 0},    {0, 0},       {0.5f, 0.5f}, {0, 0.5f},    //
    {1, 0.5f},    {0.5f, 0.5f}, {1, 1},       {0.5f, 1},    //
    {0.5f, 0.5f}, {0, 0.5f},    {0.5f, 1},    {0, 1},       //
    {0, 1},       {0.5f, 1},    {0, 0.5f},    {0.5f, 0.5f}, //
    {0.5f, 1},    {1, 1},       {0.5f, 0.5f}, {1, 0.5f},    //
    {0, 0.5f},    {0.5f, 0.5f}, {0, 0},       {0.5f, 0},    //
    {0.5f, 0.5f}, {1, 0.5f},    {0.5f, 0},    {1, 0},       //
    {1, 1},       {0.5f, 1},    {1, 0.5f},    {0.5f, 0.5f}, //
    {0.5f, 1},    {0, 1},       {0.5f, 0.5f}, {0, 0.5f},    //
    {1, 0.5f},    {0.5f, 0.5f}, {1, 0},       {0.5f, 0},    //
    {0.5f, 0.5f}, {0, 0.5f},    {0.5f, 0},    {0, 0},
};

const float corners[4][2] = {{-1, 1}, {-1, -1}, {1, 1}, {1, -1}};

} // namespace

Static::~Static()
{
    glDeleteTextures(1, &mTexture);
}

void Static::setup(AM::ArchiveManager&)
{
    std::vector<unsigned char> noise(NOISE_SIZE * NOISE_SIZE);
    for (unsigned char& texel : noise) texel = static_cast<unsigned char>(std::rand() % 255);

    glGenTextures(1, &mTexture);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_ALPHA, NOISE_SIZE, NOISE_SIZE, 0, GL_ALPHA, GL_UNSIGNED_BYTE, noise.data());
    setTextureFilter(GL_NEAREST);
}

void Static::executeTrigger(float time, const std::string& name, const std::string& value)
{
    if (name == "falloff")
        mFalloffStart = time;
    else if (name == "falloffspeed")
        mFalloffSpeed = readFloat(value);
    else if (name == "size")
        mSize = readFloat(value);
}

void Static::update(float time, float, float)
{
    const float alpha = 1 - (time - mFalloffStart) * mFalloffSpeed;
    if (alpha < 0) return;

    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    {
        FullScreenFrame frame;
        glColor4f(0, 0, 0, alpha);
        glScalef(mSize, mSize, 1);
        glBegin(GL_TRIANGLE_STRIP);
        for (int i = 0; i < 4; ++i)
        {
            glTexCoord2f(tex[mFrame + i][0], tex[mFrame + i][1]);
            glVertex3f(corners[i][0], corners[i][1], 0);
        }
        glEnd();
    }
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_LIGHTING);
    glEnable(GL_DEPTH_TEST);

    mFrame = (mFrame + 4) % PAIRS;
}
