// The vector library of the effects, and the star that uses all of it.

#include "effect_testing.h"
#include "twisterscene.h"

#include <cmath>

using GLRecorder::gl;
using maril64k::Matrix;
using maril64k::Point3D;
using maril64k::Polyhedron;

namespace
{

const float quarter = static_cast<float>(M_PI) / 2;

void expectNear(const Point3D& point, const Point3D& expected)
{
    EXPECT_NEAR(point.x, expected.x, 1e-4f);
    EXPECT_NEAR(point.y, expected.y, 1e-4f);
    EXPECT_NEAR(point.z, expected.z, 1e-4f);
}

float length(const Point3D& point)
{
    return std::sqrt(point.x * point.x + point.y * point.y + point.z * point.z);
}

} // namespace

TEST(Maril64kMatrix, turnsTheOtherWayAboutX)
{
    const struct
    {
        void (Matrix::*rotate)(float);
        Point3D to; // of the point (1, 2, 3)
    } cases[] = {{&Matrix::rotateX, {1, 3, -2}}, {&Matrix::rotateY, {3, 2, -1}}, {&Matrix::rotateZ, {-2, 1, 3}}};
    for (const auto& entry : cases)
    {
        Matrix matrix;
        matrix.reset();
        (matrix.*entry.rotate)(quarter);
        Point3D point(1, 2, 3);
        matrix.transform(point);
        expectNear(point, entry.to);

        Point3D moved;
        matrix.reset();
        matrix.translate(1, 2, 3);
        (matrix.*entry.rotate)(quarter); // acts on the translation too
        matrix.transform(&moved, &moved, 0, 1);
        expectNear(moved, entry.to);
    }
}

TEST(Maril64kMatrix, transformsARangeWithItsTranslationAndAPointWithout)
{
    Matrix matrix;
    matrix.reset();
    matrix.translate(1, 2, 3);
    matrix.scale(2, 3, 4);
    std::vector<Point3D> points(4, Point3D(1, 1, 1));
    matrix.transform(points.data(), points.data(), 1, 2);
    for (size_t i : {0, 3}) expectNear(points[i], {1, 1, 1});
    for (size_t i : {1, 2}) expectNear(points[i], {4, 9, 16});
    matrix.transform(points[0]);
    expectNear(points[0], {2, 3, 4});
}

TEST(Polyhedron, takesTheMeanOfItsPolygonsNormals)
{
    Polyhedron mesh;
    mesh.mVertices = {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {5, 5, 5}};
    mesh.mPolygons.resize(2);
    mesh.mPolygons[0].mIndices = {0, 1, 2, 2, 0};
    mesh.mPolygons[1].mIndices = {0, 3, 1};
    mesh.calcNormals();
    expectNear(mesh.mPolygonNormals[0], {0, 0, 1});
    expectNear(mesh.mPolygonNormals[1], {0, 1, 0});
    expectNear(mesh.mVertexNormals[0], {0, 0.5f, 0.5f}); // named twice by the first, and shorter than 1
    expectNear(mesh.mVertexNormals[2], {0, 0, 1});
    expectNear(mesh.mVertexNormals[3], {0, 1, 0});
    expectNear(mesh.mVertexNormals[4], {0, 0, 0});
    EXPECT_EQ(mesh.mShade.size(), 5u);
}

TEST(Polyhedron, shadesByTheDepthOfTheNormalInView)
{
    Polyhedron mesh;
    mesh.mVertices.resize(3);
    mesh.mShade.resize(3);
    mesh.mVertexNormals = {{0, 0, 1}, {0, 1, 0}, {0, -0.6f, 0}};
    gl.beginFrame();
    mesh.drawCell();
    EXPECT_EQ(mesh.mShade, (std::vector<float>{1, 0, 0}));
    glRotatef(90, 1, 0, 0); // what was up faces the viewer
    mesh.drawCell();
    EXPECT_NEAR(mesh.mShade[0], 0, 1e-6f);
    EXPECT_NEAR(mesh.mShade[1], 1, 1e-6f);
    EXPECT_EQ(mesh.mShade[2], 0);
}

TEST(TwisterScene, isAStarOfSixArmsInThreeShades)
{
    Stage stage;
    TwisterScene twister;
    stage.setup(twister);
    ASSERT_EQ(twister.mBaseVertices.size(), 1200u);
    const Point3D axes[6] = {{0, 1, 0}, {0, 0, -1}, {0, -1, 0}, {0, 0, 1}, {-1, 0, 0}, {1, 0, 0}};
    for (size_t i = 0; i < 1200; ++i)
    {
        const size_t ring = i / 60;
        const Point3D axis = axes[i / 10 % 6], radial = twister.mBaseVertices[i] - axis * (0.6f * ring + 0.5f);
        ASSERT_NEAR(length(radial), 2 - ring * 2 / 19.0f, 1e-4f) << i;
        const Point3D& normal = twister.mBaseNormals[i];
        const float outward = normal.x * radial.x + normal.y * radial.y + normal.z * radial.z;
        ASSERT_TRUE(outward > 0 || ring == 19) << i;
    }
    const std::vector<maril64k::rPolygon>& polygons = twister.mPolyhedron.mPolygons;
    ASSERT_EQ(polygons.size(), 1140u);
    EXPECT_EQ(polygons[8].mIndices, (std::vector<unsigned int>{8, 9, 68, 69}));
    EXPECT_EQ(polygons[9].mIndices, (std::vector<unsigned int>{9, 0, 69, 60}));
    EXPECT_EQ(polygons[1139].mIndices, (std::vector<unsigned int>{1139, 1130, 1199, 1190}));

    const std::vector<unsigned char>& bands = gl.textures[maril64k::cellshadeTexture];
    ASSERT_EQ(bands.size(), 3u * 64);
    for (size_t i = 0; i < bands.size(); ++i) EXPECT_EQ(bands[i], i < 36 ? 128 : i < 96 ? 192 : 255);
}

TEST(TwisterScene, windsItsRingsByTheTimeAlone)
{
    Stage stage;
    TwisterScene twister;
    stage.setup(twister);
    twister.updateSpline(0, "speed", 5);
    stage.draw(twister, 8);
    const std::vector<Point3D> at8 = twister.mPolyhedron.mVertices;
    stage.draw(twister, 0, 0, -8);
    stage.draw(twister, 8, 0, 8);
    EXPECT_TRUE(std::equal(at8.begin(), at8.end(), twister.mPolyhedron.mVertices.begin()));

    // Ring 10 is 1.5 behind, the normals like the vertices.
    Matrix ring;
    ring.reset();
    ring.rotateX(1.5f * std::sin(2.5f));
    ring.rotateY(1.5f * std::sin(1.3f));
    ring.rotateZ(1.5f * std::cos(3.3f));
    Point3D vertex = twister.mBaseVertices[637], normal = twister.mBaseNormals[637];
    ring.transform(vertex);
    ring.transform(normal);
    expectNear(at8[637], vertex);
    expectNear(twister.mPolyhedron.mVertexNormals[637], normal);
}

TEST(TwisterScene, drawsFiveStarsBehindANearPlaneOfOne)
{
    Stage stage;
    TwisterScene twister;
    stage.setup(twister);
    stage.draw(twister, 1);
    ASSERT_EQ(gl.primitives.size(), 5u * 1140);
    const float places[5][2] = {{-8.333f, -8.333f}, {8.333f, 8.333f}, {8.333f, -8.333f}, {-8.333f, 8.333f}, {0, 0}};
    const Point3D& vertex = twister.mPolyhedron.mVertices[0];
    for (size_t star = 0; star < 5; ++star)
    {
        const std::array<float, 3>& eye = gl.primitives[1140 * star].vertices[0].eye;
        expectNear({eye[0], eye[1], eye[2]}, {vertex.x + places[star][0], vertex.y + places[star][1], vertex.z - 20});
    }
    EXPECT_NEAR(gl.state.stacks[GL_PROJECTION].back()[14], -200.0 / 99, 1e-6);
}
