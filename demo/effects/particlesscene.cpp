#include "particlesscene.h"

#include "effect_helpers.h"

namespace
{

const int SIDE = 12; // points along an edge of the cube
const int SLICE = SIDE * SIDE;
const float SPACING = 0.41666666f;
const int SPOT_SIZE = 64;

// A pulse above 1 dies away by 3 a second and stops at 1.
void decay(float& pulse, float& lastTime, float time)
{
    if (!(pulse > 1)) return;
    pulse -= 3 * (time - lastTime);
    lastTime = time;
    if (pulse < 1) pulse = 1;
}

} // namespace

ParticlesScene::~ParticlesScene()
{
    if (mList) glDeleteLists(mList, 1);
    glDeleteTextures(1, &mTexture);
}

void ParticlesScene::setup(AM::ArchiveManager&)
{
    mEnlarge = 1.0f;
    mContract = 0.0f;
    mContractStart = -1.0f;
    mExpand = 1.0f;
    mEndTime = -1.0f;
    mTarget.resize(SIDE * SLICE);

    mList = glGenLists(1);
    glNewList(mList, GL_COMPILE);
    drawStrip(0, 0, 1, 1, 0.2f, 0.2f);
    glEndList();

    makeSpot();
    makePoints();
}

void ParticlesScene::executeTrigger(float time, const std::string& name, const std::string& value)
{
    if (name == "enlarge")
    {
        mEnlarge += readFloat(value);
        mEnlargeTime = time;
    }
    else if (name == "contract")
        mContractStart = time;
    else if (name == "expand")
    {
        mExpand += readFloat(value);
        mExpandTime = time;
    }
    else if (name == "end")
        mEndTime = time;
}

void ParticlesScene::update(float time, float, float)
{
    decay(mEnlarge, mEnlargeTime, time);
    if (mContractStart != -1) mContract = time - mContractStart;
    decay(mExpand, mExpandTime, time);

    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glDisable(GL_LIGHTING);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);

    glLoadIdentity();
    const double t = time; // so that the argument keeps its digits late in an entry
    glTranslatef(static_cast<float>(2 * std::sin(1.6 * t)), 0, static_cast<float>(5 * std::cos(2 * t) - 30));
    for (int slice = 0; slice < SIDE; ++slice) drawSlice(slice, time);

    glEnable(GL_DEPTH_TEST);
    glEnable(GL_LIGHTING);
    glDisable(GL_BLEND);
}

void ParticlesScene::makeSpot()
{
    std::vector<unsigned char> texels;
    for (unsigned char value : makeSoftSpot(SPOT_SIZE)) texels.insert(texels.end(), 3, value);
    glGenTextures(1, &mTexture);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, SPOT_SIZE, SPOT_SIZE, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
    setTextureFilter(GL_LINEAR);
}

void ParticlesScene::makePoints()
{
    mSource.clear();
    float z = -2.5f;
    for (int i = 0; i < SIDE; ++i, z += SPACING)
    {
        float y = 2.5f;
        for (int j = 0; j < SIDE; ++j, y -= SPACING)
        {
            float x = -2.5f;
            for (int k = 0; k < SIDE; ++k, x += SPACING) mSource.emplace_back(x, y, z);
        }
    }
}

// Only the turn about z depends on the slice, which gives the twist.
void ParticlesScene::drawSlice(int slice, float t)
{
    mMatrix.reset();
    mMatrix.rotateX(4 * sinf(0.25f * t));
    mMatrix.rotateY(4 * sinf(0.29f * t) * cosf(0.26f * t));
    mMatrix.rotateZ(4 * cosf(sinf(0.4f * t + 0.04f * static_cast<float>(slice)) + 0.22f * t));
    const double breath = std::sin(2.0 * t) * std::cos(1.5 * t);
    const float size = static_cast<float>(mExpand + mContract + 2 + breath);
    mMatrix.scale(size, size, size);
    mMatrix.transform(mSource.data(), mTarget.data(), SLICE * slice, SLICE);

    for (int i = SLICE * slice; i < SLICE * (slice + 1); ++i)
    {
        const maril64k::Point3D& point = mTarget[static_cast<std::size_t>(i)];
        glColor4f(0.2f, 0.22f, 0.22f, 1 - 0.2f * randomUnit());
        PushedMatrix matrix;
        glTranslatef(2 * point.x, point.y, point.z);
        glScalef(10.8f * mEnlarge, 2.8f * mEnlarge, mEnlarge);
        glCallList(mList);
    }
}
