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

using Side = std::pair<int, int>; // of a triangle, from edge to edge of its cell

const int* rowOf(int corners)
{
    return Meta::gridTriangles + 16 * corners;
}

// Where a case's surface ends: the sides that no two of its triangles share.
std::set<Side> borderOf(int corners)
{
    std::set<Side> border;
    for (const int* entry = rowOf(corners); *entry != -1; entry += 3)
        for (int i = 0; i < 3; ++i)
        {
            const Side side(entry[i], entry[(i + 1) % 3]);
            if (border.erase({side.second, side.first})) continue;
            EXPECT_TRUE(border.insert(side).second) << corners;
        }
    return border;
}

bool isOnFace(int corner, int axis, int end)
{
    return Meta::vertices[corner][axis] == static_cast<float>(end);
}

bool isOnFace(const Side& side, int axis, int end)
{
    for (const int edge : {side.first, side.second})
        for (const int corner : Meta::edges[edge])
        {
            if (!isOnFace(corner, axis, end)) return false;
        }
    return true;
}

// The corner or edge at the same place of the opposite face.
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
        archives.addPicture("env.png", makeImage(1, 1, {1, 2, 3, 4}));
        engine.mNodes.push_back(new Fennel::Sorrel::Node(nullptr));
        engine.mNodes[0]->mName = "metaball";
        meta.mEngine = &engine;
        meta.mTextureManager = &textures;
        std::srand(38912);
        meta.setup(archives);
        gl.calls.clear();
    }

    // Takes the strength from all balls but the first one.
    void leaveOne(const Vector3f& position, float strength = 0.005f)
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
        for (const int* entry = rowOf(corners); *entry != -1; ++entry) used.insert(*entry);
        EXPECT_EQ(used, cut) << corners;
    }
}

// Every border runs across one face of the cell, and whatever case the neighbour there has, its border runs back.
TEST(MetaTable, neighbouringCasesClose)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        std::map<int, std::set<std::set<Side>>> bordersOfFace; // by the bits of the face's corners
        for (int corners = 0; corners < 256; ++corners)
            for (int end = 0; end < 2; ++end)
            {
                int bits = 0;
                for (int corner = 0; corner < 8; ++corner)
                {
                    if (isOnFace(corner, axis, end) && (corners >> corner & 1))
                        bits |= 1 << (end ? mirrorCorner(corner, axis) : corner);
                }
                std::set<Side> border;
                for (const Side& side : borderOf(corners))
                {
                    if (!isOnFace(side, axis, end)) continue;
                    border.insert(end ? Side(mirrorEdge(side.second, axis), mirrorEdge(side.first, axis)) : side);
                }
                bordersOfFace[bits].insert(border);
            }
        EXPECT_EQ(bordersOfFace.size(), 16u);
        for (const auto& face : bordersOfFace) EXPECT_EQ(face.second.size(), 1u) << axis << " " << face.first;
    }
    for (int corners = 0; corners < 256; ++corners)
        for (const Side& side : borderOf(corners))
        {
            int faces = 0;
            for (int face = 0; face < 6; ++face) faces += isOnFace(side, face / 2, face % 2);
            EXPECT_EQ(faces, 1) << corners;
        }
}

TEST(MetaTable, windsAsTheseRows)
{
    const std::map<int, std::vector<int>> rows = {
        {0, {}},       {1, {3, 0, 8}},  {2, {9, 0, 1}},        {3, {3, 1, 8, 1, 9, 8}},           {4, {11, 1, 2}},
        {127, {6, 7, 10}}, {8, {2, 3, 10}}, {6, {11, 9, 2, 9, 0, 2}}, {7, {3, 2, 8, 8, 2, 11, 8, 11, 9}}, {255, {}},
        {128, {10, 7, 6}}, {254, {8, 0, 3}}, {9, {2, 0, 10, 0, 8, 10}}, {10, {0, 1, 9, 10, 2, 3}}};
    for (auto [corners, row] : rows)
    {
        row.push_back(-1);
        for (std::size_t i = 0; i < row.size(); ++i) EXPECT_EQ(rowOf(corners)[i], row[i]) << corners;
    }
}

TEST_F(MetaTest, startsFromTheSeedInOneOrder)
{
    std::srand(38912);
    for (int i = 0; i < Meta::BALLS; ++i)
    {
        const Vector3f &p = meta.mBalls[i].position, &t = meta.mBalls[i].target;
        for (const float value : {p.x, p.y, p.z, t.x, t.y, t.z})
            EXPECT_FLOAT_EQ(value, 0.75f * (std::rand() * 4.656613e-10f) + 0.25f);
    }
}

TEST_F(MetaTest, aLoneBallIsASmallClosedSphereTurningClockwise)
{
    leaveOne({0.6f, 0.61f, 0.62f});
    const Vector3f center(0, 0.02f, 0.04f); // 20 cells a field unit, 12 of them to the middle, 0.1 each
    std::set<std::array<long, 6>> sides;
    for (const GLFake::Draw& cell : draw())
        for (std::size_t i = 0; i < cell.points.size(); i += 3)
        {
            Vector3f corner[3];
            for (int k = 0; k < 3; ++k)
            {
                const std::array<float, 3>&p = cell.points[i + k], &n = cell.normals[i + k];
                const std::array<float, 3>& q = cell.points[i + (k + 1) % 3];
                corner[k] = Vector3f(p[0], p[1], p[2]) - center;
                EXPECT_NEAR(corner[k].length(), 0.1633f, 0.025f) << "cut along straight lines";
                EXPECT_NEAR(dot(Vector3f(n[0], n[1], n[2]), corner[k]), corner[k].length(), 1e-4f);
                std::array<long, 6> side; // rounded, since two cells compute a shared vertex each
                for (int c = 0; c < 3; ++c) side[c] = std::lround(p[c] * 1e4f), side[c + 3] = std::lround(q[c] * 1e4f);
                EXPECT_TRUE(sides.insert(side).second);
            }
            const Vector3f a = corner[1] - corner[0], b = corner[2] - corner[0];
            const Vector3f across(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
            EXPECT_LT(dot(across, corner[0]), 0) << "clockwise from outside";
        }
    EXPECT_GT(sides.size(), 60u);
    for (const auto& s : sides) EXPECT_TRUE(sides.count({s[3], s[4], s[5], s[0], s[1], s[2]})) << "a gap";
}

// The flood of the class against the recursion that it stands for: the same cells, drawn in the same order.
TEST_F(MetaTest, floodsInTheOrderOfTheRecursion)
{
    std::vector<std::size_t> expected, drawn;
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
        for (const int step : {-1, 1}) recurse(x + step, y, z);
        for (const int step : {-1, 1}) recurse(x, y + step, z);
        for (const int step : {-1, 1}) recurse(x, y, z + step);
        expected.push_back(std::find(rowOf(corners), rowOf(corners) + 16, -1) - rowOf(corners));
    };
    std::memset(Meta::gridEnergyComputed, 0, sizeof Meta::gridEnergyComputed);
    for (int i = 0; i < Meta::BALLS; ++i)
    {
        const Vector3f& p = meta.mBalls[i].position;
        recurse(int(20 * p.x), int(20 * p.y), int(20 * p.z));
    }
    for (const GLFake::Draw& cell : draw()) drawn.push_back(cell.points.size());
    EXPECT_GT(drawn.size(), 50u);
    EXPECT_EQ(drawn, expected);
}

TEST_F(MetaTest, givesAPictureInAnyState)
{
    leaveOne({0.5f, 0.5f, 0.5f}, 100);
    EXPECT_EQ(draw().size(), 12167u) << "wholly inside: all cells, with empty lists";

    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::pair<Vector3f, float> states[] = {
        {{0.5f, 0.5f, 0.5f}, 0.005f}, {{0.5f, 0.5f, 0.5f}, 1e-4f}, {{0, 0, 0}, 0.005f}, {{1.15f, 1, 1}, 0.005f},
        {{-0.04f, 0, 0}, 0.005f},     {{1e30f, 0, 0}, 0.005f},     {{nan, 0, 0}, 1},    {{0.5f, 0.5f, 0.5f}, 1e-38f},
        {{0.53f, 0.5f, 0.5f}, 1e30f}, {{0.5f, 0.5f, 0.5f}, -1}};
    for (const auto& state : states)
    {
        leaveOne(state.first, state.second);
        meta.mBalls[1] = meta.mBalls[0];
        meta.mBalls[1].target = meta.mBalls[1].position;
        for (const GLFake::Draw& cell : draw(0.01f))
            for (std::size_t i = 0; i < cell.points.size(); ++i)
                for (int k = 0; k < 3; ++k)
                    EXPECT_TRUE(std::isfinite(cell.points[i][k]) && std::isfinite(cell.normals[i][k])) << state.second;
    }
    leaveOne({0.25f, 0.5f, 0.5f});
    meta.mBalls[1] = {0.005f, {0.75f, 0.5f, 0.5f}, {}};
    EXPECT_EQ(meta.calcNormal({10, 10, 10}).y, 1) << "in the middle of two equals there is no direction";
}

TEST_F(MetaTest, ballsGoHalfAUnitASecondAndStandStillWithTheClock)
{
    leaveOne({0.3f, 0.5f, 0.5f});
    meta.mBalls[0].target = {0.8f, 0.5f, 0.5f};
    for (const float delta : {0.5f, 0.0f, -1.0f, 0.6f}) // the last step would pass the target
    {
        EXPECT_FLOAT_EQ(meta.mBalls[0].target.x, 0.8f);
        draw(delta);
        EXPECT_FLOAT_EQ(meta.mBalls[0].position.x, 0.55f);
    }
    EXPECT_NE(meta.mBalls[0].target.x, 0.8f);
}

TEST_F(MetaTest, aCellIsTheseCalls)
{
    leaveOne({0.525f, 0.525f, 0.525f}, 0.0015f); // in the middle of a cell, and in no other
    draw();
    std::vector<std::string> expected = {call("glMultMatrixf", 1, 1, 1, 0, 0, 0),
                                         call("glTexGeni", GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP),
                                         call("glTexGeni", GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)};
    const auto expectAll = [&](const char* name, const std::vector<int>& arguments) {
        for (const int argument : arguments) expected.push_back(call(name, argument));
    };
    expectAll("glEnable", {GL_TEXTURE_GEN_S, GL_TEXTURE_GEN_T, GL_TEXTURE_2D, GL_DEPTH_TEST, GL_LIGHTING, GL_LIGHT0,
                           GL_COLOR_MATERIAL, GL_CULL_FACE});
    expected.push_back(call("glBindTexture", GL_TEXTURE_2D, meta.mPicture->getSortableID()));
    expected.push_back(call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0));
    expected.push_back(call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0));
    expectAll("glEnableClientState", {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY});
    expectAll("glDisableClientState", {GL_TEXTURE_COORD_ARRAY, GL_EDGE_FLAG_ARRAY, GL_INDEX_ARRAY, GL_COLOR_ARRAY});
    for (const char* name : {"glVertexPointer", "glNormalPointer"}) expected.push_back(name);
    expected.push_back(call("glDrawElements", GL_TRIANGLES, gl.draws.at(0).points.size(), GL_UNSIGNED_BYTE));
    expectAll("glDisableClientState", {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY});
    expectAll("glDisable", {GL_TEXTURE_GEN_T, GL_TEXTURE_GEN_S});
    gl.calls.resize(expected.size());
    EXPECT_EQ(gl.calls, expected);
}

TEST_F(MetaTest, aSceneWithoutItsNodeEndsTheShowWithAName)
{
    const auto errorOf = [&] {
        try
        {
            draw();
            return std::string("drawn");
        }
        catch (const Fennel::Exception& exception)
        {
            return std::string(exception.what());
        }
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
    animate(file.camera(nullptr, "camera", {})->mPosition.mY, 0, 10);
    file.store(archives);
    SorrelPlayer player("scene.xml");
    player.setup(archives);
    for (const float spline : {10.0f, 10.0f, 0.0f})
    {
        player.updateSpline(0, "y", spline);
        player.updateSpline(0, "Y", 99);
        player.update(4, 0.1f, 0);
        EXPECT_FLOAT_EQ(player.mEngine.mActiveCamera->mMatCamera[13], 4 + spline / 10);
        EXPECT_FLOAT_EQ(player.mEngine.mActiveCamera->mFar, 2000);
    }

    SceneFile().store(archives);
    SorrelPlayer blind("scene.xml"); // no camera
    blind.setup(archives);
    gl.calls.clear();
    blind.update(0, 0, 0);
    EXPECT_TRUE(gl.calls.empty());
}
