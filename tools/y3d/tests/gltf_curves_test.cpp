#include "gltf/glb.h"
#include "gltf/import.h"
#include "gltf/linear.h"
#include "y3d_camera.h"
#include "y3d_scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

// What moves in glTF moves alike in Y3D, measured against glTF's own formulas.

namespace
{

using gltf::operator*;
using gltf::Glb;
using gltf::Quat;
using gltf::Vec3;
using Json = Glb::Json;

const std::vector<float> TIMES = {0.5f, 1.0f, 3.0f, 3.5f};
const double DEGREE = 0.0174532925;

// A file in the making with nodes as given and one animation.
struct Movie
{
    explicit Movie(const Json& nodes)
    {
        glb.description["nodes"] = nodes;
        glb.description["cameras"] = {{{"type", "perspective"}, {"perspective", {{"yfov", 0.8}, {"znear", 0.1}}}}};
    }

    void move(int node, const char* path, const char* mode, const std::vector<float>& values, int components)
    {
        Json sampler = {{"input", glb.addFloats(TIMES, 1, true)}, {"interpolation", mode}};
        sampler["output"] = glb.addFloats(values, components, false);
        animation["samplers"].push_back(sampler);
        animation["channels"].push_back(
            {{"sampler", animation["samplers"].size() - 1}, {"target", {{"node", node}, {"path", path}}}});
    }

    const y3d::SceneNode& import()
    {
        if (!animation.is_null()) glb.description["animations"] = Json::array({animation});
        gltf::importScene(gltf::readModel(glb.build(), "movie.glb", ""), "", {}, manager, losses);
        return *manager.mScenes.at(0);
    }

    Glb glb;
    Json animation;
    y3d::Manager manager;
    gltf::Losses losses;
};

// Where the times lie between the keys, and how far.
std::size_t segmentOf(double time)
{
    return time < TIMES[1] ? 0 : time < TIMES[2] ? 1 : 2;
}

void forTimes(const std::function<void(double time, std::size_t key, double h, double s)>& test)
{
    for (int i = 0; i <= 200; ++i)
    {
        const double time = std::clamp(i * 0.02, 0.5, 3.4999);
        const std::size_t key = segmentOf(time);
        const double h = TIMES[key + 1] - TIMES[key];
        test(i * 0.02, key, h, (time - TIMES[key]) / h);
    }
}

Quat at(const std::vector<float>& v, std::size_t key)
{
    return gltf::normalized({v[4 * key + 3], v[4 * key], v[4 * key + 1], v[4 * key + 2]});
}

// Four rotations; from the second to the third it is nearly a whole half turn, and the long way round by its signs.
const std::vector<float> TURNS = {0, 0, 0, 1, 0.5f, 0.5f, 0.5f, 0.5f, 0.49f, 0.51f, 0.5f, -0.5f, 0, 1, 0, 0};

} // namespace

TEST(GltfCurves, stepsAndLinesAndSplinesOfVectorsAreTheSameCurves)
{
    const std::vector<float> points = {0, 1, 2, 3, -1, 5, 2, 2, 2, 8, 0, -4};
    std::vector<float> spline;
    for (int i = 0; i < 12; ++i)
    {
        const int key = i / 3;
        if (i % 3 == 0)
        {
            const float in[] = {1, -2, 3}, out[] = {4.0f + key, 0, -6};
            spline.insert(spline.end(), in, in + 3);
            spline.insert(spline.end(), points.begin() + i, points.begin() + i + 3);
            spline.insert(spline.end(), out, out + 3);
        }
    }
    Movie movie({{{"name", "step"}}, {{"name", "line"}}, {{"name", "spline"}}});
    movie.move(0, "translation", "STEP", points, 3);
    movie.move(1, "scale", "LINEAR", points, 3);
    movie.move(2, "translation", "CUBICSPLINE", spline, 3);
    const y3d::SceneNode& scene = movie.import();
    forTimes([&](double time, std::size_t key, double h, double s) {
        const bool isBehind = time >= TIMES[3];
        const float a = points[3 * key], b = points[3 * key + 3], moment = static_cast<float>(time);
        EXPECT_FLOAT_EQ(scene.getChild(0)->getPosition().mX.getValue(moment), isBehind ? points[9] : a) << time;
        EXPECT_NEAR(scene.getChild(1)->getScale().mX.getValue(moment), isBehind ? points[9] : a + s * (b - a), 1e-5);
        const double s2 = s * s, s3 = s2 * s, out = 4.0 + static_cast<double>(key), in = 1;
        const double curve =
            (2 * s3 - 3 * s2 + 1) * a + h * (s3 - 2 * s2 + s) * out + (3 * s2 - 2 * s3) * b + h * (s3 - s2) * in;
        EXPECT_NEAR(scene.getChild(2)->getPosition().mX.getValue(moment), isBehind ? points[9] : curve,
                    2e-3 * (time >= 3.48) + 2e-5)
            << time;
    });
}

TEST(GltfCurves, turnsStayWithinATenthOfADegree)
{
    std::vector<float> spline;
    for (std::size_t key = 0; key < 4; ++key)
    {
        const float in[] = {0.2f, 0, -0.3f, 0.1f}, out[] = {0.4f, -0.6f, 0, 0.2f};
        spline.insert(spline.end(), in, in + 4);
        spline.insert(spline.end(), TURNS.begin() + 4 * key, TURNS.begin() + 4 * key + 4);
        spline.insert(spline.end(), out, out + 4);
    }
    Movie movie({{{"name", "line"}}, {{"name", "step"}}, {{"name", "spline"}}});
    movie.move(0, "rotation", "LINEAR", TURNS, 4);
    movie.move(1, "rotation", "STEP", TURNS, 4);
    movie.move(2, "rotation", "CUBICSPLINE", spline, 4);
    const y3d::SceneNode& scene = movie.import();
    forTimes([&](double time, std::size_t key, double h, double s) {
        const float moment = static_cast<float>(time);
        if (time >= TIMES[3]) return;
        const auto got = [&](int child) {
            return gltf::normalized(gltf::toQuat(scene.getChild(child)->getRotation().getValue(moment)));
        };
        Quat a = at(TURNS, key), b = at(TURNS, key + 1);
        EXPECT_LT(gltf::angleBetween(got(1), a), 0.001 * DEGREE);

        // Slerp, by its definition: as far about the axis between the two.
        const Quat between = Quat{a.w, -a.x, -a.y, -a.z} * b;
        const double sign = between.w < 0 ? -1 : 1, half = std::acos(std::min(1.0, sign * between.w));
        const double part = half > 0 ? sign * std::sin(s * half) / std::sin(half) : 0;
        const Quat expected = a * Quat{std::cos(s * half), part * between.x, part * between.y, part * between.z};
        EXPECT_LT(gltf::angleBetween(got(0), expected), 0.1 * DEGREE) << time;

        const double s2 = s * s, s3 = s2 * s;
        const double f[] = {2 * s3 - 3 * s2 + 1, h * (s3 - 2 * s2 + s), 3 * s2 - 2 * s3, h * (s3 - s2)};
        const float* k = &spline[12 * key];
        const auto curve = [&](int i) {
            return f[0] * k[4 + i] + f[1] * k[8 + i] + f[2] * k[16 + i] + f[3] * k[12 + i];
        };
        EXPECT_LT(gltf::angleBetween(got(2), gltf::normalized({curve(3), curve(0), curve(1), curve(2)})), 0.01 * DEGREE)
            << time;
    });
}

// The camera of Y3D looks down and stands at the top of the tree.
TEST(GltfCurves, aCameraTakesTheMovementOfAllAboveItAlong)
{
    const Json eye = {{"name", "eye"}, {"camera", 0}, {"translation", {1, 2, 3}}, {"rotation", {0, 0.6, 0, 0.8}}};
    Movie movie({{{"name", "arm"}, {"children", {1}}, {"translation", {5, 0, 0}}, {"scale", {2, 2, 2}}}, eye});
    movie.move(0, "rotation", "LINEAR", TURNS, 4);
    const y3d::SceneNode& scene = movie.import();
    ASSERT_EQ(scene.getNumChildren(), 2); // a dummy and, beside it, the camera
    const y3d::SceneNode& camera = *scene.getChild(1);
    EXPECT_EQ(camera.getName(), "eye");
    EXPECT_EQ(movie.losses.getLines().size(), 1u);
    for (const float time : {0.0f, 0.5f, 0.8f, 1.0f, 2.1f, 2.9f, 3.3f, 7.0f})
    {
        const gltf::Mat3 turn =
            gltf::rotationOf(gltf::normalized(gltf::toQuat(scene.getChild(0)->getRotation().getValue(time))));
        const Vec3 place = turn * Vec3{2, 4, 6}, forward = turn * gltf::rotationOf({0.8, 0, 0.6, 0}) * Vec3{0, 0, -1};
        const gltf::Mat3 own = gltf::rotationOf(gltf::toQuat(camera.getRotation().getValue(time)));
        for (int i = 0; i < 3; ++i)
        {
            EXPECT_NEAR(camera.getPosition().getValue(time)[i], place[i] + (i == 0 ? 5 : 0), 0.02) << time;
            EXPECT_NEAR((own * Vec3{0, -1, 0})[i], forward[i], 0.003) << time;
            EXPECT_NEAR((own * Vec3{0, 0, -1})[i], (turn * Vec3{0, 1, 0})[i], 0.003) << time;
        }
    }
}

// The engine scales after it turns, along the axes of the parent; glTF before.
TEST(GltfCurves, unevenScaleUnderATurnAndShearMoveAllPointsAsInGltf)
{
    const gltf::Mat3 shear = {{{1, 0.5, 0}, {0, 2, 0.3}, {0, 0, -1}}};
    Json matrix = Json::array();
    for (int i = 0; i < 16; ++i) matrix.push_back(i == 15 ? 1.0 : i >= 12 ? i : i % 4 == 3 ? 0.0 : shear[i % 4][i / 4]);
    Movie movie({{{"name", "turned"},
                  {"children", {1}},
                  {"rotation", {0, 0.6, 0, 0.8}},
                  {"scale", {1, 3, -0.5}},
                  {"translation", {7, 8, 9}}},
                 {{"name", "sheared"}, {"matrix", matrix}}});
    movie.glb.description["scenes"] = {{{"nodes", {0}}}};
    const gltf::Affine expected =
        gltf::Affine{gltf::rotationOf({0.8, 0, 0.6, 0}) * gltf::scaling({1, 3, -0.5}), {7, 8, 9}} *
        gltf::Affine{shear, {12, 13, 14}};
    gltf::Affine world;
    const y3d::SceneNode* node = &movie.import();
    while (node->getNumChildren() > 0)
    {
        node = node->getChild(0);
        const gltf::Mat3 turn = gltf::rotationOf(gltf::toQuat(node->getRotation().getValue(0)));
        world = world * gltf::Affine{gltf::scaling(gltf::toVec3(node->getScale().getValue(0))) * turn,
                                     gltf::toVec3(node->getPosition().getValue(0))};
    }
    EXPECT_EQ(node->getName(), "sheared");
    for (const Vec3& point : {Vec3{0, 0, 0}, Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}})
    {
        for (int i = 0; i < 3; ++i) EXPECT_NEAR((world * point)[i], (expected * point)[i], 1e-4);
    }
}
