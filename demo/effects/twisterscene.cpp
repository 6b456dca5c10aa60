#include "twisterscene.h"

#include "effect_helpers.h"

namespace
{

const int RINGS = 20;
const int ARMS = 6;
const int CORNERS = 10; // of a ring of one arm
const int RING_VERTICES = ARMS * CORNERS;

} // namespace

TwisterScene::~TwisterScene()
{
    glDeleteTextures(1, &maril64k::cellshadeTexture);
    maril64k::cellshadeTexture = 0;
}

void TwisterScene::setup(AM::ArchiveManager&)
{
    makeStar();
    mPolyhedron.calcNormals();
    mBaseVertices = mPolyhedron.mVertices;
    mBaseNormals = mPolyhedron.mVertexNormals;
    makeCelTexture();
}

void TwisterScene::updateSpline(float, const std::string& name, float value)
{
    if (name == "speed") mSpeed = value / 10;
}

void TwisterScene::update(float time, float, float)
{
    glLoadIdentity();
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glEnable(GL_TEXTURE_2D);

    setNearPerspective();
    glColor3f(1, 1, 1);

    twist(time);

    glDisable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
    glColor3f(1, 1, 1);
    static const float places[5][2] = {
        {-8.333f, -8.333f}, {8.333f, 8.333f}, {8.333f, -8.333f}, {-8.333f, 8.333f}, {0, 0}};
    for (const float(&place)[2] : places)
    {
        PushedMatrix matrix;
        glTranslatef(place[0], place[1], -20);
        mPolyhedron.drawCell();
    }
}

// Six cones along the axes, cut into rings: the vertex 60 * ring + 10 * arm + corner, the point of each at the last
// ring. The polygons are the quads between a ring and the next.
void TwisterScene::makeStar()
{
    mPolyhedron.mVertices.resize(RINGS * RING_VERTICES);
    for (int ring = 0; ring < RINGS; ++ring)
    {
        const float radius = 2 * (1 - static_cast<float>(ring) / 19);
        for (int arm = 0; arm < ARMS; ++arm)
        {
            const int first = RING_VERTICES * ring + CORNERS * arm;
            for (int j = 0; j < CORNERS; ++j)
            {
                const float angle = 0.62831855f * static_cast<float>(j);
                mPolyhedron.mVertices[static_cast<std::size_t>(first + j)].set(
                    sinf(angle) * radius, 0.6f * static_cast<float>(ring) + 0.5f, cosf(angle) * radius);
            }
            mMatrix.reset();
            if (arm < 4)
                mMatrix.rotateX(1.5707964f * static_cast<float>(arm));
            else
                mMatrix.rotateZ(arm == 4 ? 1.5707964f : 4.712389f);
            mMatrix.transform(mPolyhedron.mVertices.data(), mPolyhedron.mVertices.data(), first, CORNERS);
        }
    }

    const unsigned int polygons = (RINGS - 1) * RING_VERTICES;
    mPolyhedron.mPolygons.resize(polygons);
    for (unsigned int p = 0; p < polygons; ++p)
    {
        const unsigned int next = p % CORNERS == CORNERS - 1 ? p - (CORNERS - 1) : p + 1;
        mPolyhedron.mPolygons[p].mIndices = {p, next, p + RING_VERTICES, next + RING_VERTICES};
    }
}

// Three bands, which end at the shades 0.1875 and 0.5.
void TwisterScene::makeCelTexture()
{
    static const unsigned char bands[16] = {128, 128, 128, 192, 192, 192, 192, 192,
                                            255, 255, 255, 255, 255, 255, 255, 255};
    unsigned char texels[64 * 3];
    for (int i = 0; i < 64; ++i)
        for (int channel = 0; channel < 3; ++channel) texels[3 * i + channel] = bands[i / 4];

    glGenTextures(1, &maril64k::cellshadeTexture);
    glBindTexture(GL_TEXTURE_1D, maril64k::cellshadeTexture);
    glTexImage1D(GL_TEXTURE_1D, 0, GL_RGB, 64, 0, GL_RGB, GL_UNSIGNED_BYTE, texels);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
}

// Each ring lags behind the one before it, which winds the arms.
void TwisterScene::twist(float time)
{
    const double w = time * mSpeed;
    for (int ring = 0; ring < RINGS; ++ring)
    {
        const double lag = 0.15 * ring;
        mMatrix.reset();
        mMatrix.rotateX(static_cast<float>(1.5 * std::sin(w - lag)));
        mMatrix.rotateY(static_cast<float>(1.5 * std::sin(0.7 * w - lag)));
        mMatrix.rotateZ(static_cast<float>(1.5 * std::cos(1.2 * w - lag)));
        const int first = RING_VERTICES * ring;
        mMatrix.transform(mBaseVertices.data(), mPolyhedron.mVertices.data(), first, RING_VERTICES);
        mMatrix.transform(mBaseNormals.data(), mPolyhedron.mVertexNormals.data(), first, RING_VERTICES);
    }
}
