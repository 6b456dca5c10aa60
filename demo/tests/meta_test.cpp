// The metaballs, and the player of the scene that they float in.

#include "fe_camera.h"
#include "fe_exception.h"
#include "fe_glfake.h"
#include "fe_scenes.h"
#include "meta.h"
#include "sorrelplayer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <set>

using GLFake::call;
using GLFake::gl;

namespace
{

using Segment = std::pair<int, int>; // from edge to edge of a cell

// Where a case's triangles end: the sides that no other triangle of the case shares.
std::set<Segment> borderOf(int corners)
{
    std::set<Segment> border;
    for (const int* entry = Meta::gridTriangles + 16 * corners; *entry != -1; entry += 3)
        for (int i = 0; i < 3; ++i)
        {
            const Segment side(entry[i], entry[(i + 1) % 3]);
            if (border.erase({side.second, side.first})) continue;
            EXPECT_TRUE(border.insert(side).second) << corners;
        }
    return border;
}

bool isCornerOn(int corner, int axis, int side)
{
    return Meta::vertices[corner][axis] == static_cast<float>(side);
}

bool isEdgeOn(int edge, int axis, int side)
{
    return isCornerOn(Meta::edges[edge][0], axis, side) && isCornerOn(Meta::edges[edge][1], axis, side);
}

// The corner opposite to this one along an axis.
int mirrorCorner(int corner, int axis)
{
    for (int other = 0; other < 8; ++other)
    {
        bool matches = true;
        for (int i = 0; i < 3; ++i) matches &= (Meta::vertices[other][i] == Meta::vertices[corner][i]) == (i != axis);
        if (matches) return other;
    }
    return -1;
}

int mirrorEdge(int edge, int axis)
{
    const std::set<int> corners = {mirrorCorner(Meta::edges[edge][0], axis), mirrorCorner(Meta::edges[edge][1], axis)};
    for (int other = 0; other < 12; ++other)
    {
        if (corners == std::set<int>{Meta::edges[other][0], Meta::edges[other][1]}) return other;
    }
    return -1;
}

class MetaTest : public testing::Test
{
protected:
    MetaTest()
    {
        GLFake::reset();
        AM::Image image = makeImage(1, 1, {1, 2, 3, 4});
        AM::File file = archives.mImageManager->encodeImage("env.png", image);
        archives["env.png"].assign(reinterpret_cast<const char*>(file->data), file->length);
        engine.mNodes.push_back(new Fennel::Sorrel::Node(nullptr));
        engine.mNodes[0]->mName = "metaball";
        meta.mEngine = &engine;
        meta.mTextureManager = &textures;
        std::srand(38912);
        meta.setup(archives);
        gl.calls.clear();
    }

    // Takes the strength from all balls but the first one.
    void leaveOne(const MathBase::Vector3f& position, float strength = 0.005f)
    {
        for (int i = 0; i < Meta::BALLS; ++i) meta.mBalls[i] = {0, {0.99f, 0.99f, 0.99f}, {0.5f, 0.5f, 0.5f}};
        meta.mBalls[0].position = position;
        meta.mBalls[0].strength = strength;
    }

    const std::vector<GLFake::Draw>& draw(float delta = 0)
    {
        gl.draws.clear();
        meta.update(0, delta, 0);
        return gl.draws;
    }

    Archives archives;
    Fennel::TextureManager textures{&archives};
    Fennel::Sorrel::Engine engine;
    Meta meta;
};

} // namespace

TEST(MetaTable, eachCaseUsesExactlyTheEdgesThatAreCut)
{
    for (int corners = 0; corners < 256; ++corners)
    {
        std::set<int> cut, used;
        for (int edge = 0; edge < 12; ++edge)
        {
            if ((corners >> Meta::edges[edge][0] & 1) != (corners >> Meta::edges[edge][1] & 1)) cut.insert(edge);
        }
        const int* entry = Meta::gridTriangles + 16 * corners;
        while (*entry != -1) used.insert(*entry++);
        EXPECT_EQ(used, cut) << corners;
        EXPECT_EQ((entry - (Meta::gridTriangles + 16 * corners)) % 3, 0) << corners;
    }
}

// Every border runs across a face of the cell, and whatever case the neighbour there has, it runs the other way.
TEST(MetaTable, neighbouringCasesClose)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        std::map<int, std::set<std::set<Segment>>> bySharedCorners;
        for (int corners = 0; corners < 256; ++corners)
            for (int side = 0; side < 2; ++side)
            {
                int shared = 0;
                for (int corner = 0; corner < 8; ++corner)
                {
                    if (isCornerOn(corner, axis, side) && (corners >> corner & 1))
                        shared |= 1 << (side ? mirrorCorner(corner, axis) : corner);
                }
                std::set<Segment> segments;
                for (const Segment& segment : borderOf(corners))
                {
                    if (!isEdgeOn(segment.first, axis, side) || !isEdgeOn(segment.second, axis, side)) continue;
                    if (side)
                        segments.insert({mirrorEdge(segment.second, axis), mirrorEdge(segment.first, axis)});
                    else
                        segments.insert(segment);
                }
                bySharedCorners[shared].insert(segments);
            }
        EXPECT_EQ(bySharedCorners.size(), 16u);
        for (const auto& entry : bySharedCorners) EXPECT_EQ(entry.second.size(), 1u) << axis << " " << entry.first;
    }
    for (int corners = 0; corners < 256; ++corners)
        for (const Segment& segment : borderOf(corners))
        {
            int faces = 0;
            for (int face = 0; face < 6; ++face)
                faces += isEdgeOn(segment.first, face / 2, face % 2) && isEdgeOn(segment.second, face / 2, face % 2);
            EXPECT_EQ(faces, 1) << corners;
        }
}

TEST(MetaTable, windsAsTheseRows)
{
    const std::map<int, std::vector<int>> rows = {
        {1, {3, 0, 8}},      {2, {9, 0, 1}},     {3, {3, 1, 8, 1, 9, 8}},    {4, {11, 1, 2}},
        {6, {11, 9, 2, 9, 0, 2}}, {7, {3, 2, 8, 8, 2, 11, 8, 11, 9}}, {8, {2, 3, 10}}, {9, {2, 0, 10, 0, 8, 10}},
        {10, {0, 1, 9, 10, 2, 3}}, {127, {6, 7, 10}}, {128, {10, 7, 6}}, {254, {8, 0, 3}}, {0, {}}, {255, {}}};
    for (auto [corners, row] : rows)
    {
        row.push_back(-1);
        for (std::size_t i = 0; i < row.size(); ++i) EXPECT_EQ(Meta::gridTriangles[16 * corners + i], row[i]) << corners;
    }
}

TEST_F(MetaTest, startsFromTheSeedInOneOrder)
{
    std::srand(38912);
    for (int i = 0; i < Meta::BALLS; ++i)
    {
        const Meta::Ball& ball = meta.mBalls[i];
        for (const float value : {ball.position.x, ball.position.y, ball.position.z, ball.target.x, ball.target.y, ball.target.z})
            EXPECT_FLOAT_EQ(value, 0.75f * (std::rand() * 4.656613e-10f) + 0.25f);
    }
}

TEST_F(MetaTest, aLoneBallIsASmallClosedSphereTurningClockwise)
{
    leaveOne({0.6f, 0.61f, 0.62f});
    int triangles = 0;
    std::map<std::pair<std::array<float, 3>, std::array<float, 3>>, int> sides;
    for (const GLFake::Draw& cell : draw())
        for (std::size_t i = 0; i < cell.points.size(); i += 3, ++triangles)
        {
            MathBase::Vector3f corner[3];
            for (int k = 0; k < 3; ++k)
            {
                const std::array<float, 3>& p = cell.points[i + k];
                const std::array<float, 3>& n = cell.normals[i + k];
                corner[k] = MathBase::Vector3f(p[0], p[1], p[2]) - MathBase::Vector3f(0, 0.02f, 0.04f);
                EXPECT_NEAR(corner[k].length(), 0.1633f, 0.025f) << "0.0816 in field units; cut along straight lines";
                EXPECT_NEAR(dot(MathBase::Vector3f(n[0], n[1], n[2]), corner[k]), corner[k].length(), 1e-4f);
                sides[{p, cell.points[i + (k + 1) % 3]}]++;
            }
            const MathBase::Vector3f a = corner[1] - corner[0], b = corner[2] - corner[0];
            const MathBase::Vector3f cross(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
            EXPECT_LT(dot(cross, corner[0]), 0) << "clockwise from outside";
        }
    EXPECT_GT(triangles, 20);
    const float step = 1e-4f; // cells compute a shared vertex alike up to rounding
    std::map<std::pair<std::array<long, 3>, std::array<long, 3>>, int> rounded;
    const auto round = [&](const std::array<float, 3>& p) {
        return std::array<long, 3>{std::lround(p[0] / step), std::lround(p[1] / step), std::lround(p[2] / step)};
    };
    for (const auto& side : sides) rounded[{round(side.first.first), round(side.first.second)}] += side.second;
    for (const auto& side : rounded)
        EXPECT_EQ(rounded.count({side.first.second, side.first.first}), 1u) << "each side has its neighbour";
}

// The flood of the class against the recursion that it stands for: the same cells, drawn in the same order.
TEST_F(MetaTest, floodsInTheOrderOfTheRecursion)
{
    std::vector<std::size_t> expected;
    std::set<std::array<int, 3>> visited;
    const std::function<void(int, int, int)> recurse = [&](int x, int y, int z) {
        if (x < 0 || y < 0 || z < 0 || x > 22 || y > 22 || z > 22 || !visited.insert({x, y, z}).second) return;
        int corners = 0;
        for (int n = 0; n < 8; ++n)
        {
            const float* offset = Meta::vertices[n];
            if (meta.getEnergy(x + int(offset[0]), y + int(offset[1]), z + int(offset[2])) < 0.75f) corners |= 1 << n;
        }
        if (corners == 255) return;
        recurse(x - 1, y, z);
        recurse(x + 1, y, z);
        recurse(x, y - 1, z);
        recurse(x, y + 1, z);
        recurse(x, y, z - 1);
        recurse(x, y, z + 1);
        std::size_t count = 0;
        while (Meta::gridTriangles[16 * corners + count] != -1) ++count;
        expected.push_back(count);
    };
    std::memset(Meta::gridEnergyComputed, 0, sizeof(Meta::gridEnergyComputed));
    for (int i = 0; i < Meta::BALLS; ++i)
    {
        const MathBase::Vector3f& p = meta.mBalls[i].position;
        recurse(int(20 * p.x), int(20 * p.y), int(20 * p.z));
    }
    std::vector<std::size_t> drawn;
    for (const GLFake::Draw& cell : draw()) drawn.push_back(cell.points.size());
    EXPECT_GT(drawn.size(), 50u);
    EXPECT_EQ(drawn, expected);
}

TEST_F(MetaTest, givesAPictureInAnyState)
{
    leaveOne({0.5f, 0.5f, 0.5f}, 100);
    EXPECT_EQ(draw().size(), 12167u) << "wholly inside: all cells, with empty lists";

    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct
    {
        MathBase::Vector3f position;
        float strength;
    } states[] = {{{0.5f, 0.5f, 0.5f}, 0.005f},  {{0.5f, 0.5f, 0.5f}, 1e-4f}, {{0, 0, 0}, 0.005f}, {{1.15f, 1, 1}, 0.005f},
                  {{-0.04f, 0, 0}, 0.005f},      {{1e30f, 0, 0}, 0.005f},     {{nan, 0, 0}, 1},    {{0.5f, 0.5f, 0.5f}, 1e-38f},
                  {{0.525f, 0.5f, 0.5f}, 1e30f}, {{0.5f, 0.5f, 0.5f}, -1}};
    for (const auto& state : states)
    {
        leaveOne(state.position, state.strength);
        meta.mBalls[1] = meta.mBalls[0];
        meta.mBalls[1].target = meta.mBalls[1].position;
        for (const GLFake::Draw& cell : draw(0.01f))
            for (std::size_t i = 0; i < cell.points.size(); ++i)
                for (int k = 0; k < 3; ++k)
                {
                    EXPECT_TRUE(std::isfinite(cell.points[i][k])) << state.strength;
                    EXPECT_TRUE(std::isfinite(cell.normals[i][k])) << state.strength;
                }
    }
    leaveOne({0.25f, 0.5f, 0.5f});
    meta.mBalls[1] = {0.005f, {0.75f, 0.5f, 0.5f}, {}};
    EXPECT_EQ(meta.calcNormal({10, 10, 10}).y, 1) << "in the middle of two equals there is no direction";
}

TEST_F(MetaTest, ballsGoHalfAUnitASecondAndStandStillWithTheClock)
{
    leaveOne({0.3f, 0.5f, 0.5f});
    meta.mBalls[0].target = {0.8f, 0.5f, 0.5f};
    draw(0.5f);
    EXPECT_FLOAT_EQ(meta.mBalls[0].position.x, 0.55f);
    for (const float delta : {0.0f, -1.0f}) draw(delta);
    EXPECT_FLOAT_EQ(meta.mBalls[0].position.x, 0.55f);

    draw(0.6f); // would pass the target
    EXPECT_FLOAT_EQ(meta.mBalls[0].position.x, 0.55f);
    EXPECT_NE(meta.mBalls[0].target.x, 0.8f);
}

TEST_F(MetaTest, aCellIsTheseCalls)
{
    leaveOne({0.525f, 0.525f, 0.525f}, 0.0015f); // one cell wholly around the ball, none beside it
    draw();
    const GLuint picture = static_cast<GLuint>(meta.mPicture->getSortableID());
    std::vector<std::string> expected = {call("glTexGeni", GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP),
                                         call("glTexGeni", GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)};
    for (const GLenum on : {GL_TEXTURE_GEN_S, GL_TEXTURE_GEN_T, GL_TEXTURE_2D, GL_DEPTH_TEST, GL_LIGHTING, GL_LIGHT0,
                            GL_COLOR_MATERIAL, GL_CULL_FACE})
        expected.push_back(call("glEnable", on));
    expected.push_back(call("glBindTexture", GL_TEXTURE_2D, picture));
    expected.push_back(call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0));
    expected.push_back(call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0));
    for (const GLenum on : {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY}) expected.push_back(call("glEnableClientState", on));
    for (const GLenum off : {GL_TEXTURE_COORD_ARRAY, GL_EDGE_FLAG_ARRAY, GL_INDEX_ARRAY, GL_COLOR_ARRAY})
        expected.push_back(call("glDisableClientState", off));
    for (const char* name : {"glVertexPointer", "glNormalPointer"}) expected.push_back(name);
    expected.push_back(call("glDrawElements", GL_TRIANGLES, gl.draws[0].points.size(), GL_UNSIGNED_BYTE));
    for (const GLenum off : {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY}) expected.push_back(call("glDisableClientState", off));
    for (const GLenum off : {GL_TEXTURE_GEN_T, GL_TEXTURE_GEN_S}) expected.push_back(call("glDisable", off));

    ASSERT_GT(gl.calls.size(), expected.size());
    EXPECT_EQ(gl.calls[0], call("glMultMatrixf", 1, 1, 1, 0, 0, 0));
    EXPECT_EQ(std::vector<std::string>(gl.calls.begin() + 1, gl.calls.begin() + 1 + expected.size()), expected);
}

TEST_F(MetaTest, aSceneWithoutItsNodeEndsTheShowWithAName)
{
    const auto errorOf = [&] {
        try
        {
            draw();
        }
        catch (const Fennel::Exception& exception)
        {
            return std::string(exception.what());
        }
        return std::string("drawn");
    };
    EXPECT_EQ(errorOf(), "drawn");
    engine.mNodes[0]->mName = "Metaball";
    EXPECT_EQ(errorOf(), "Node metaball was not found in scene!");
    meta.mEngine = nullptr;
    EXPECT_EQ(errorOf(), "No node 'metaball' in scene!");
}

TEST(SorrelPlayer, raisesTheCameraForAsLongAsTheSplineSays)
{
    GLFake::reset();
    Archives archives;
    SceneFile file;
    animate(file.camera(nullptr, "camera", {})->mPosition.mY, 0, 0, 10, 10);
    file.store(archives);
    SorrelPlayer player("scene.xml");
    player.setup(archives);
    for (const float spline : {10.0f, 10.0f, 0.0f})
    {
        player.updateSpline(0, "y", spline);
        player.updateSpline(0, "Y", 99);
        player.update(4, 0.1f, 0);
        EXPECT_FLOAT_EQ(player.mEngine.mActiveCamera->mPosition.y, 4 + spline / 10);
        EXPECT_FLOAT_EQ(player.mEngine.mActiveCamera->mMatCamera[13], 4 + spline / 10);
        EXPECT_FLOAT_EQ(player.mEngine.mActiveCamera->mFar, 2000);
    }

    SceneFile().store(archives);
    SorrelPlayer blind("scene.xml");
    blind.setup(archives);
    gl.calls.clear();
    blind.update(0, 0, 0);
    EXPECT_TRUE(gl.calls.empty());
}
