// The vector library of the effects, and the star that uses all of it.

#include "effect_testing.h"
#include "twisterscene.h"

#include <cmath>

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
}
