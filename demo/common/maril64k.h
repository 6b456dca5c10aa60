#pragma once

#include "tw_glinclude.h"

#include <vector>

// A small vector library: a point, a 3 by 4 matrix, and a polygon mesh that draws itself with cel shading.
namespace maril64k
{

struct Point3D
{
    float x = 0;
    float y = 0;
    float z = 0;

    Point3D() = default;
    Point3D(float px, float py, float pz) : x(px), y(py), z(pz) {}

    void set(float px, float py, float pz);
    void normalize(); // divides by the length; a point at the origin becomes NaN

    Point3D operator+(const Point3D& other) const { return Point3D(x + other.x, y + other.y, z + other.z); }
    Point3D operator-(const Point3D& other) const { return Point3D(x - other.x, y - other.y, z - other.z); }
    Point3D operator*(float factor) const { return Point3D(x * factor, y * factor, z * factor); }
    Point3D operator*=(float factor);
    Point3D operator+=(const Point3D& other);
    bool operator==(const Point3D& other) const { return x == other.x && y == other.y && z == other.z; }
};

// Three rows of four: a linear map and, in the fourth column, a translation. Each operation acts after what the matrix
// holds already. Angles are radians; the sign of rotateX runs against that of the other two.
class Matrix
{
public:
    void reset(); // the identity
    void rotateX(float angle);
    void rotateY(float angle);
    void rotateZ(float angle);
    void translate(float x, float y, float z);
    void scale(float x, float y, float z); // the translation too

    // Maps `count` points from `start` on; source and target may be the same array.
    void transform(const Point3D* source, Point3D* target, int start, int count) const;
    // Maps one point in place, without the translation.
    void transform(Point3D& point) const;

    float m[3][4];
};

class Polyhedron;

// One triangle strip of a polyhedron.
class rPolygon
{
public:
    // The unit normal of the plane through the first three vertices.
    Point3D getNormal(const Polyhedron* polyhedron) const;

    std::vector<unsigned int> mIndices;
    Point3D mPoint;
};

// A mesh of triangle strips with a normal a vertex.
class Polyhedron
{
public:
    // A normal a polygon, and a normal a vertex: the mean of those of its polygons, not normalised again, and zero
    // for a vertex of no polygon. Makes room for the shades too.
    void calcNormals();

    // Draws with the bands of the bound-in texture `cellshadeTexture`: a vertex whose normal faces the viewer gets the
    // last band, one at 90 degrees or more the first. Lighting and 2D texture are on afterwards.
    void drawCell();

    void draw() const;    // normals and vertices
    void drawTex() const; // texture coordinates, normals and vertices

    // Keeps two points that tell where the mesh looks.
    void setOrientation(const Point3D& direction, const Point3D& up);

    std::vector<float> mShade; // 1D texture coordinate of each vertex
    std::vector<Point3D> mVertices;
    std::vector<Point3D> mPolygonNormals;
    std::vector<Point3D> mVertexNormals;
    std::vector<Point3D> mTexCoords;
    std::vector<rPolygon> mPolygons;
    Point3D mDirection;
    Point3D mUp;
};

// The 1D texture of drawCell, made by the twister.
extern GLuint cellshadeTexture;

} // namespace maril64k
