// The metaballs, and the player of the scene that they float in.

#include "fe_camera.h"
#include "fe_exception.h"
#include "gl_recorder.h"
#include "fe_scenes.h"
#include "meta.h"
#include "sorrelplayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <set>

using GLRecorder::gl;

namespace
{

// The sides of all triangles, from corner to corner in units of `step`; no side may come twice.
std::set<std::array<long, 6>> sidesOf(const std::vector<GLRecorder::Primitive>& cells, float step)
{
    std::set<std::array<long, 6>> sides;
    for (const GLRecorder::Primitive& cell : cells)
        for (std::size_t i = 0; i < cell.vertices.size(); ++i)
        {
            const std::array<float, 3>&from = cell.vertices[i].position,
                                    &to = cell.vertices[i % 3 == 2 ? i - 2 : i + 1].position;
            std::array<long, 6> side;
            for (int c = 0; c < 3; ++c) side[c] = std::lround(from[c] / step), side[c + 3] = std::lround(to[c] / step);
            EXPECT_TRUE(sides.insert(side).second);
        }
    return sides;
}

std::array<long, 6> turned(const std::array<long, 6>& s)
{
    return {s[3], s[4], s[5], s[0], s[1], s[2]};
}

Vector3f cross(const Vector3f& a, const Vector3f& b)
{
    return Vector3f(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

Vector3f cornerAt(int corner)
{
    return Vector3f(Meta::vertices[corner][0], Meta::vertices[corner][1], Meta::vertices[corner][2]);
}

const int* rowOf(int corners)
{
    return Meta::gridTriangles + 16 * corners;
}

class MetaTest : public testing::Test
{
protected:
    MetaTest()
    {
        GLRecorder::reset();
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

    const std::vector<GLRecorder::Primitive>& draw(float delta = 0)
    {
        gl.primitives.clear();
        meta.update(0, delta, 0);
        return gl.primitives;
    }

    Archives archives;
    Fennel::TextureManager textures{&archives};
    Fennel::Sorrel::Engine engine;
    Meta meta;
};

} // namespace

TEST(MetaTable, eachCaseUsesExactlyTheEdgesThatAreCutAndTurnsClockwise)
{
    for (int corners = 0; corners < 256; ++corners)
    {
        std::set<int> cut, used;
        for (int edge = 0; edge < 12; ++edge)
        {
            if ((corners >> Meta::edges[edge][0] & 1) != (corners >> Meta::edges[edge][1] & 1)) cut.insert(edge);
        }
        for (const int* entry = rowOf(corners); *entry != -1; entry += 3)
        {
            Vector3f middle[3], outward;
            for (int i = 0; i < 3; ++i)
            {
                const int* edge = Meta::edges[entry[i]];
                const Vector3f way = cornerAt(edge[1]) - cornerAt(edge[0]);
                used.insert(entry[i]);
                middle[i] = cornerAt(edge[0]) + 0.5f * way;
                outward = outward + (corners >> edge[1] & 1 ? 1.0f : -1.0f) * way;
            }
            EXPECT_LT(dot(cross(middle[1] - middle[0], middle[2] - middle[0]), outward), 0) << corners;
        }
        EXPECT_EQ(used, cut) << corners;
    }
}

// A field of noise has every case beside every other: nowhere but at the grid's edge may a side miss its neighbour.
TEST_F(MetaTest, neighbouringCasesClose)
{
    for (float& energy : Meta::gridEnergy) energy = std::rand() & 4096 ? 0.25f : 1.25f;
    std::memset(Meta::gridEnergyComputed, 1, sizeof Meta::gridEnergyComputed);
    std::memset(Meta::gridVisited, 0, sizeof Meta::gridVisited);
    std::set<int> cases;
    for (int x = 0; x < Meta::CELLS; ++x)
        for (int y = 0; y < Meta::CELLS; ++y)
            for (int z = 0; z < Meta::CELLS; ++z)
            {
                int corners = 0;
                for (int n = 0; n < 8; ++n)
                {
                    const Vector3f c = cornerAt(n);
                    if (meta.getEnergy(x + int(c.x), y + int(c.y), z + int(c.z)) < 0.75f) corners |= 1 << n;
                }
                cases.insert(corners);
                meta.drawVoxel(x, y, z);
            }
    EXPECT_EQ(cases.size(), 256u);
    const std::set<std::array<long, 6>> sides = sidesOf(gl.primitives, 0.05f); // half a cell
    for (const std::array<long, 6>& side : sides)
    {
        bool atEdge = false;
        for (int c = 0; c < 3; ++c) atEdge |= side[c] == side[c + 3] && (side[c] == -24 || side[c] == 22);
        EXPECT_TRUE(atEdge || sides.count(turned(side)));
    }
}

TEST_F(MetaTest, aLoneBallIsASmallClosedSphere)
{
    leaveOne({0.6f, 0.61f, 0.62f});
    for (const GLRecorder::Primitive& cell : draw())
        for (std::size_t i = 0; i < cell.vertices.size(); ++i)
        {
            const std::array<float, 3>&p = cell.vertices[i].position, &n = cell.vertices[i].normal;
            const Vector3f radius(p[0], p[1] - 0.02f, p[2] - 0.04f); // 2 model units for one of the field
            EXPECT_NEAR(radius.length(), 2 * 0.0816f, 0.025f) << "cut along straight lines";
            EXPECT_NEAR(dot(Vector3f(n[0], n[1], n[2]), radius), radius.length(), 1e-4f);
        }
    const std::set<std::array<long, 6>> sides = sidesOf(gl.primitives, 1e-4f);
    EXPECT_GT(sides.size(), 60u);
    for (const std::array<long, 6>& side : sides) EXPECT_TRUE(sides.count(turned(side))) << "a gap";
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
    for (const GLRecorder::Primitive& cell : draw()) drawn.push_back(cell.vertices.size());
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
        for (const GLRecorder::Primitive& cell : draw(0.01f))
            for (std::size_t i = 0; i < cell.vertices.size(); ++i)
                for (int k = 0; k < 3; ++k)
                    EXPECT_TRUE(std::isfinite(cell.vertices[i].position[k]) &&
                                std::isfinite(cell.vertices[i].normal[k]))
                        << state.second;
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
    GLRecorder::reset();
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

    for (const float spline : {1e30f, INFINITY, -INFINITY, NAN}) // what a script may hold
    {
        player.updateSpline(0, "y", spline);
        player.update(4, 0.1f, 0);
    }

    SceneFile().store(archives);
    SorrelPlayer blind("scene.xml"); // no camera
    blind.setup(archives);
    gl.calls.clear();
    blind.update(0, 0, 0);
    EXPECT_TRUE(gl.calls.empty());
}
