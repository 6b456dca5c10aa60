#pragma once

// What the scene makers build with: surfaces, materials, nodes and smooth curves, on top of the y3d objects. Scenes are
// right-handed with y up; lengths are metres or so, times seconds. A counterclockwise triangle faces the viewer.

#include "y3d_camera.h"
#include "y3d_dummy.h"
#include "y3d_image.h"
#include "y3d_light.h"
#include "y3d_manager.h"
#include "y3d_material.h"
#include "y3d_mesh.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"
#include "y3d_submesh.h"
#include "y3d_texture.h"

#include "mb_vector3f.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Scenes
{

using MathBase::Vector3f;

const float PI = 3.14159265f;

Vector3f cross(const Vector3f& a, const Vector3f& b);
Vector3f normalized(const Vector3f& v); // (0, 1, 0) for what has no direction
Vector3f mix(const Vector3f& a, const Vector3f& b, float share);

// Smooth noise from -1 to 1 over unit cells, and the sum of some octaves of it. The same in every run.
float noise(const Vector3f& p);
float fractal(Vector3f p, int octaves);
// The same, folded at 0 so that it forms sharp crests: 0 to 1, 1 on the crest.
float ridges(Vector3f p, int octaves);
// 0 below `from`, 1 above `to`, an S between; from may exceed to.
float smooth(float from, float to, float value);

// A row of numbers from 0 up to 1 that looks thrown; the same for a seed in every run.
class Chance
{
public:
    explicit Chance(uint32_t seed) : mState(seed) {}

    float next();

private:
    uint32_t mState;
};

// One submesh in the making: vertices with texture coordinates, triangles, and in the end normals.
class Surface
{
public:
    explicit Surface(const std::string& material) : mMaterial(material) {}

    unsigned int vertex(const Vector3f& position, float s, float t);
    unsigned int vertex(const Vector3f& position, const Vector3f& normal, float s, float t);
    void triangle(unsigned int a, unsigned int b, unsigned int c);

    // A grid of columns by rows quads; at(u, v) gives the position for u and v from 0 to 1. Seen from the front u runs
    // right and v up. The texture repeats `repeatU` and `repeatV` times over it.
    void grid(int columns, int rows, float repeatU, float repeatV, const std::function<Vector3f(float, float)>& at);

    // A flat quad with corners counterclockwise, the texture once over it from the lower left.
    void quad(const Vector3f& a, const Vector3f& b, const Vector3f& c, const Vector3f& d);

    // A box with outward faces; the texture covers `metres` once.
    void box(const Vector3f& low, const Vector3f& high, float metres);

    // A body of revolution about the y axis: a profile of radius and height from bottom to top, `sides` around.
    void revolve(const std::vector<std::pair<float, float>>& profile, int sides, float repeatU, float repeatV,
                 const std::function<float(float)>& radiusAt = nullptr);

    // Normals for all vertices that were given none: the mean over the triangles around each, weighted by their area.
    void smoothNormals();
    // Every triangle flat: vertices are no longer shared.
    void facet();
    // Turns all triangles over; before the normals are made.
    void flip();
    // Lays the texture on as seen from above, once every `metres`.
    void mapFromAbove(float metres);

    std::string mMaterial;
    std::vector<Vector3f> mPositions, mNormals, mCoordinates;
    std::vector<unsigned int> mIndices;
};

// The parts of the first mesh in a Y3D file, each with the name of its material. Throws std::runtime_error that names
// the file.
std::vector<Surface> readMesh(const std::string& filename);

// A file in the making.
class Builder
{
public:
    Builder();

    // Materials. Colours from 0 to 1; `image` may be empty.
    void material(const std::string& name, const Vector3f& diffuse, const Vector3f& ambient, const Vector3f& specular,
                  float hardness, const Vector3f& emissive, const std::string& image);
    void shadeless(const std::string& name, const Vector3f& color, const std::string& image);

    // A mesh of one or more surfaces.
    void mesh(const std::string& name, const std::vector<Surface>& surfaces);

    // Nodes, under the scene or under `parent`.
    y3d::MeshInstance* instance(const std::string& name, const std::string& mesh, y3d::SceneNode* parent = nullptr);
    y3d::Dummy* dummy(const std::string& name, y3d::SceneNode* parent = nullptr);
    y3d::Light* light(const std::string& name, const Vector3f& position, const Vector3f& color, float distance,
                      y3d::SceneNode* parent = nullptr);
    y3d::Camera* camera(const std::string& name, float fovDegrees);

    // Writes the Y3D file. Throws std::runtime_error that names it.
    void write(const std::string& filename);

    y3d::Manager mManager;
    y3d::Scene* mScene;

private:
    template <typename Node> Node* add(const std::string& name, y3d::SceneNode* parent);
};

// Fixed values of the tracks.
void setPosition(y3d::SceneNode* node, const Vector3f& position);
void setScale(y3d::SceneNode* node, const Vector3f& scale);
void setTurn(y3d::SceneNode* node, const Vector3f& axis, float degrees);

// Bezier keys through the given values, with handles that make the curve run through without a corner (the slope at a
// key is that between its neighbours).
struct Stop
{
    float time;
    float value;
};
void setCurve(y3d::TrackBlenderFloat& curve, const std::vector<Stop>& stops, bool cyclic = false);

// A camera's way: where it is and what it looks at, with a roll in degrees.
struct View
{
    float time;
    Vector3f eye;
    Vector3f target;
    float roll = 0.0f;
};
void setFlight(y3d::Camera* camera, const std::vector<View>& views);
// The same for several ways with cuts between them: each begins where, in time, the one before ends.
void setShots(y3d::Camera* camera, const std::vector<std::vector<View>>& shots);

} // namespace Scenes
