// The effects of plain geometry: cubes, lines and lightning.

#include "cubes.h"
#include "effect_testing.h"
#include "infinity.h"
#include "lighting.h"
#include "linesscene.h"

#include <cmath>
#include <limits>
#include <set>

using GLRecorder::gl;
using GLRecorder::Primitive;
using GLRecorder::Vertex;

namespace
{

// The centres of all cubes `depth` levels below this one.
void collect(const Cubes::cube& cube, int depth, std::set<std::array<float, 3>>& centres)
{
    if (depth == 0)
        centres.insert({cube.x, cube.y, cube.z});
    else
        for (int i = 0; i < 8; ++i) collect(cube.children[i], depth - 1, centres);
}

} // namespace

TEST(Cubes, areAnOctree)
{
    Stage stage;
    Cubes cubes;
    stage.setup(cubes);
    const Cubes::cube& second = cubes.mRoot.children[1]; // x runs first
    EXPECT_EQ((std::array<float, 3>{second.x, second.y, second.z}), (std::array<float, 3>{0.5f, -0.5f, -0.5f}));
    std::set<std::array<float, 3>> expected, centres;
    for (int i = 0; i < 4096; ++i)
        expected.insert({(i % 16 - 7.5f) / 8, (i / 16 % 16 - 7.5f) / 8, (i / 256 - 7.5f) / 8});
    collect(cubes.mRoot, 4, centres);
    EXPECT_EQ(centres, expected);
}

TEST(Cubes, splitWithEveryTriggerOfAnEntry)
{
    Stage stage;
    Cubes cubes;
    stage.setup(cubes);
    cubes.updateSpline(0, "alpha", 10);
    size_t drawn = 1;
    for (int level = 0; level < 7; ++level, drawn = level < 5 ? 8 * drawn : 0)
    {
        SCOPED_TRACE(level);
        std::srand(4);
        stage.draw(cubes, 0);
        const int next = std::rand();
        EXPECT_EQ(gl.primitives.size(), 7 * drawn);
        std::srand(4);
        for (size_t i = 0; i < 3 * drawn; ++i) std::rand();
        EXPECT_EQ(std::rand(), next);
        if (drawn > 0)
        {
            const float scale = static_cast<float>(1 << level);
            EXPECT_NEAR(gl.primitives[0].vertices[0].color[3], 1 - 0.01f * scale * scale, 1e-5f);
            EXPECT_NEAR(gl.primitives[1].vertices[0].color[3], 1 - 0.1f * scale, 1e-5f);
        }
        trigger(cubes, level % 2 ? "" : "any name");
    }
    cubes.resetTriggers();
    stage.draw(cubes, 0);
    EXPECT_EQ(gl.primitives.size(), 7u);
}

TEST(Cubes, touchAtTenAndLieInOnePlaceAtZero)
{
    Stage stage;
    Cubes cubes;
    stage.setup(cubes);
    cubes.updateSpline(0, "zoom", 1.5f);
    cubes.updateSpline(0, "bounce", 2);
    trigger(cubes, "split");
    for (float explode : {0.0f, 10.0f, 30.0f})
    {
        cubes.updateSpline(0, "explode", explode);
        stage.draw(cubes, 0);
        const float inner = 0.5f - 0.05f * explode; // corner of the first cube, which lies at the lower left behind
        EXPECT_EQ(gl.primitives.at(0).vertices[0].eye, (std::array<float, 3>{inner, inner - 2, inner - 3}));
        EXPECT_FLOAT_EQ(gl.primitives.at(7 * 7).vertices[0].eye[0], 1 - inner); // of the last one
    }
}

TEST(Infinity, showsTheFacesOfItsCubesOutwardWithAnOutlineEach)
{
    Stage stage;
    Infinity infinity;
    stage.setup(infinity);
    stage.draw(infinity, 0);
    const std::vector<Vertex>& corners = gl.primitives.at(0).vertices;
    ASSERT_EQ(corners.size(), 24u);
    float centre[3] = {0, 0, 0};
    for (const Vertex& corner : corners)
        for (int i = 0; i < 3; ++i) centre[i] += corner.eye[i] / 24;
    for (size_t face = 0; face < 6; ++face)
    {
        EXPECT_NEAR(outward(corners, face, centre), 0.7f * 1.4f * 1.4f, 1e-4f);
        for (size_t corner = 0; corner < 4; ++corner)
            for (int i = 0; i < 3; ++i)
            {
                const size_t same = face < 5 ? corner : (corner + 2) % 4; // the last begins at the other end
                EXPECT_NEAR(gl.primitives.at(1 + face).vertices.at(corner).eye[i] - centre[i],
                            1.001f * (corners[4 * face + same].eye[i] - centre[i]), 1e-4f);
            }
    }
}

TEST(Infinity, fliesOnAndBackWithinOneLength)
{
    Stage stage;
    Infinity infinity;
    stage.setup(infinity);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct
    {
        float from, delta, to;
    } cases[] = {{0, 0, 0},       {3.4f, 0, 3.4f},   {3.4f, 0.01f, 0.03f}, {0.1f, -0.02f, 3.32f}, {0, 10, 2.16f},
                 {0, -10, 1.36f}, {3.52f, 0, 3.52f}, {1, nan, 0},          {1, INFINITY, 0.0f}};
    for (const auto& entry : cases)
    {
        Infinity::mytime = entry.from;
        stage.draw(infinity, 0, 0, entry.delta);
        EXPECT_NEAR(Infinity::mytime, entry.to, 1e-4f) << entry.from << " and " << entry.delta;
    }
    Infinity::mytime = 0;
}

TEST(Infinity, fadesFromTheMiddleOfItsLattice)
{
    Stage stage;
    Infinity infinity;
    stage.setup(infinity);
    Infinity::mytime = 1.76f;
    stage.draw(infinity, 0);
    ASSERT_EQ(gl.primitives.size(), 7u * 2197);
    const size_t ahead = 7 * (6 * 169 + 7 * 13 + 4); // the cube at (0, 3, -6)
    const Vertex& face = gl.primitives[ahead].vertices[0];
    const float c = 9 - std::sqrt(9 + 7.76f * 7.76f) / 1.4f;
    EXPECT_NEAR(face.color[0], 0.0638f * c, 1e-5f);
    EXPECT_NEAR(face.color[1], 0.0512f * c, 1e-5f);
    EXPECT_NEAR(face.color[2], 0.05f * c, 1e-5f);
    EXPECT_NEAR(gl.primitives[ahead + 1].vertices[0].color[3], -0.5f, 1e-5f);

    EXPECT_EQ(gl.state.depthFunction, GLenum(GL_LESS));
    Infinity::mytime = 0;
}

TEST(LinesScene, drawsItsLinesAtNewPlaces)
{
    Stage stage;
    LinesScene lines;
    stage.setup(lines);
    stage.draw(lines, 0);
    EXPECT_EQ(gl.primitives.size(), 100u);
    lines.updateSpline(0, "alpha", 5);
    for (int count : {3, 0, -1})
    {
        trigger(lines, "count", std::to_string(count));
        std::srand(8);
        stage.draw(lines, 0);
        ASSERT_EQ(gl.primitives.size(), size_t(std::max(count, 0)));
        std::srand(8);
        for (const Primitive& line : gl.primitives)
        {
            EXPECT_NEAR(line.vertices[0].clip[0], 2 * (nextUnit() - 0.5f) - 0.004f, 1e-6f);
            EXPECT_EQ(line.vertices[0].clip[1], 1);
            EXPECT_FLOAT_EQ(line.vertices[0].color[3], 0.2f);
        }
    }
}

TEST(Lighting, buildsItsStrokesFromTheRandomNumbers)
{
    Stage stage;
    Lighting lighting;
    std::srand(6);
    stage.setup(lighting);
    std::srand(6);
    float lastRadius = 0;
    for (const Lighting::flash& flash : lighting.mFlashes)
    {
        float base[7], u[7];
        for (float& number : base) number = nextUnit();
        EXPECT_FLOAT_EQ(flash.g, 0.15f * base[0]);
        for (int i = 1; i < 49; ++i)
            for (float& number : u) number = nextUnit();
        const Lighting::point& point = flash.points.at(48);
        EXPECT_NEAR(point.phaseX, 5555 * base[1] + 55 * u[0], 1e-2f);
        EXPECT_NEAR(point.phaseZ, 5555 * base[3] + 55 * u[2], 1e-2f);
        EXPECT_NEAR(point.speedX, 5 + 5 * base[4] + 0.2f * u[3], 1e-5f);
        EXPECT_NEAR(point.speedZ, 15 + 5 * base[6] + 0.2f * u[5], 1e-5f);
        EXPECT_NEAR(point.radius, u[6] / 28 * std::sin(48 * M_PI / 50), 1e-6f);
        EXPECT_EQ(flash.points[0].radius, lastRadius);
        lastRadius = point.radius;
        EXPECT_EQ(flash.points.at(49).radius, lastRadius);
    }
    EXPECT_EQ(lighting.mFlashes.size(), 20u);
}

TEST(Lighting, isOneLineUntilModTearsIt)
{
    Stage stage;
    Lighting lighting;
    stage.setup(lighting);
    lighting.updateSpline(0, "alpha", 10);
    for (float mod : {10.0f, 20.0f})
    {
        lighting.updateSpline(0, "mod", mod);
        stage.draw(lighting, 0);
        ASSERT_EQ(gl.primitives.size(), 20u);
        for (size_t f = 0; f < 20; ++f)
        {
            const Primitive& stroke = gl.primitives[f];
            EXPECT_EQ(stroke.lineWidth, f < 6 ? 5 : f < 12 ? 4 : 3);
            ASSERT_EQ(stroke.vertices.size(), 98u);
            const Lighting::point& point = lighting.mFlashes[f].points[25];
            const float place = -0.05f + 0.01f, swing = std::cos(point.phaseY);
            EXPECT_NEAR(stroke.vertices[49].eye[1], place + point.radius * swing, 1e-5f);
            EXPECT_NEAR(stroke.vertices[50].eye[1], place + mod / 10 * point.radius * swing, 1e-5f);
            EXPECT_NEAR(stroke.vertices[50].color[3], std::sin(3.14f * 25 / 49), 1e-5f);
            EXPECT_NEAR(stroke.vertices[97].eye[0], 1 + lighting.mFlashes[f].points[49].radius * std::sin(1), 1e-5f);
        }
    }
}

TEST(Lighting, shiversWithTheClockBetweenItsEnds)
{
    Stage stage;
    Lighting lighting;
    stage.setup(lighting);
    const std::vector<Lighting::point> before = lighting.mFlashes[3].points;
    for (float delta : {0.25f, -0.25f, 0.0f, 0.5f}) stage.draw(lighting, 0, 0, delta);
    for (size_t i : {0, 1, 48, 49}) // the ends have no speed
        EXPECT_NEAR(lighting.mFlashes[3].points[i].phaseZ, before[i].phaseZ + 0.5f * before[i].speedZ, 1e-2f) << i;
}
