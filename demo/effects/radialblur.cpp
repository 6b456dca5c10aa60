#include "radialblur.h"

#include "effect_helpers.h"

RadialBlur::~RadialBlur()
{
    if (mList) glDeleteLists(mList, 1);
    glDeleteTextures(1, &mTexture);
}

void RadialBlur::setup(AM::ArchiveManager&)
{
    mAlpha = 0.9f;
    mStep = 1.05f;
    mLowStep = 1.0f;

    mScratch.resize(COPY_SIZE * COPY_SIZE * 3);
    glGenTextures(1, &mTexture);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    GL_CHECKED(
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, COPY_SIZE, COPY_SIZE, 0, GL_RGB, GL_UNSIGNED_BYTE, mScratch.data()));
    GL_CHECKED(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR));
    GL_CHECKED(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR));

    // At the distance 2.414 a plane of height 2 just fills the vertical field of 45 degrees.
    GL_CHECKED(mList = glGenLists(1));
    GL_CHECKED(glNewList(mList, GL_COMPILE));
    glScalef(1.333f, 1, 1);
    const float right = static_cast<float>(FRAME_WIDTH) / COPY_SIZE;
    const float top = static_cast<float>(FRAME_HEIGHT) / COPY_SIZE;
    drawStrip(0, top, right, 0, 1, 1, -2.414f);
    GL_REPORT_ERROR(__FILE__, __LINE__, "glEnd()");
    GL_CHECKED(glEndList());
}

void RadialBlur::executeTrigger(float time, const std::string& name, const std::string& value)
{
    if (name == "amount")
        mAlpha = readFloat(value);
    else if (name == "step")
        mStep = readFloat(value);
    else if (name == "lowstep")
        mLowStep = readFloat(value);
    else if (name == "falloffspeed")
        mFalloffSpeed = readFloat(value);
    else if (name == "falloff")
        mFalloffStart = time;
}

void RadialBlur::update(float time, float, float)
{
    const float falloff = std::max(1 - (time - mFalloffStart) * mFalloffSpeed, 0.0f);
    const float step = std::max(falloff * mStep, mLowStep);

    glBindTexture(GL_TEXTURE_2D, mTexture);
    setNearPerspective();

    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_BLEND);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glBindTexture(GL_TEXTURE_2D, mTexture);

    glColor4f(1, 1, 1, mAlpha);
    glScalef(1 + step, 1 + step, 1);
    glCallList(mList);

    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_LIGHTING);
    glEnable(GL_DEPTH_TEST);
    copyFrame();
}
