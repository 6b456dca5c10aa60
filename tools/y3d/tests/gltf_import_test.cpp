#include "gltf/glb.h"
#include "gltf/import.h"
#include "y3d_exception.h"
#include "y3d_light.h"
#include "y3d_material.h"
#include "y3d_mesh.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"
#include "y3d_submesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>

namespace
{

using gltf::Glb;
using Json = Glb::Json;

const std::vector<float> CORNERS = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0};
const std::string PIXEL = // a PNG of one pixel with 16 bits a channel
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABEAIAAADA54+dAAAAD0lEQVR4nGP4/7+hgYEBAA58Av+HAkZEAAAAAElFTk"
    "SuQmCC";

// A quad that a node shows; tests bend it.
struct Quad
{
    Quad()
    {
        glb.description["nodes"] = {{{"name", "quad"}, {"mesh", 0}}};
        primitive = {{"attributes", {{"POSITION", glb.addVertices(CORNERS, 3)}}}};
    }

    const y3d::Manager& import(const std::string& folder = "")
    {
        glb.description["meshes"] = {{{"primitives", Json::array({primitive})}}};
        pictures = gltf::importScene(gltf::readModel(glb.build(), "quad.glb", folder), folder, options, manager, losses)
                       .pictures;
        return manager;
    }

    // The corners of the triangles, with z of the first normal behind.
    std::vector<float> triangles()
    {
        const y3d::Submesh& submesh = *import().mMeshes.at(0)->getSubmesh(0);
        std::vector<float> result;
        for (const y3d::Index index : *submesh.getIndices())
        {
            const MathBase::Vector3f& corner = (*submesh.getPositions())[index];
            result.insert(result.end(), {corner.x, corner.y});
        }
        result.push_back((*submesh.getNormals())[0].z);
        return result;
    }

    std::string trouble()
    {
        try
        {
            import();
            return "";
        }
        catch (const y3d::Exception& exception)
        {
            return exception.what();
        }
    }

    Glb glb;
    Json primitive;
    gltf::ImportOptions options;
    gltf::Losses losses;
    y3d::Manager manager;
    std::vector<gltf::Pictures::File> pictures;
};

} // namespace

TEST(GltfImport, listsStripsAndFansBecomeTrianglesThatFaceTheSameWay)
{
    const std::vector<float> first = {0, 0, 1, 0, 0, 1};
    struct Case
    {
        int mode;
        std::vector<unsigned int> indices;
        std::size_t numTriangles;
    };
    for (const Case& test : std::initializer_list<Case>{{4, {}, 1},
                                                        {4, {0, 1, 2, 1, 3, 2, 0}, 2},
                                                        {5, {0, 1, 2, 3}, 2},
                                                        {5, {0, 1, 2, 2, 2, 1, 3}, 2},
                                                        {6, {0, 1, 3, 2}, 2}})
    {
        Quad quad;
        quad.primitive["mode"] = test.mode;
        if (!test.indices.empty()) quad.primitive["indices"] = quad.glb.addIndices(test.indices);
        const std::vector<float> corners = quad.triangles();
        ASSERT_EQ(corners.size(), 6 * test.numTriangles + 1) << test.mode;
        for (std::size_t i = 0; i + 6 <= corners.size(); i += 6)
        {
            const float* c = &corners[i];
            EXPECT_GT((c[2] - c[0]) * (c[5] - c[1]) - (c[3] - c[1]) * (c[4] - c[0]), 0) << test.mode;
        }
        EXPECT_EQ(corners.back(), 1) << test.mode; // a normal was made
    }
}

TEST(GltfImport, numbersComeFromAnyTypeStrideAndSparsePart)
{
    Quad quad;
    quad.glb.addFloats({9, 9, 9, 0, 0, 0, 9, 9, 1, 0, 0, 9, 9, 0, 1, 0}, 1, false);
    Json& views = quad.glb.description["bufferViews"];
    views.back()["byteStride"] = 20; // three floats and two that belong to nobody
    const int places = quad.glb.addIndices({2});
    const int values = quad.glb.addFloats({0, 3, 0}, 3, false);
    const int accessor = quad.glb.add(
        "accessors", {{"bufferView", 1}, {"byteOffset", 12}, {"componentType", 5126}, {"count", 3}, {"type", "VEC3"}});
    Json& accessors = quad.glb.description["accessors"];
    accessors[accessor]["sparse"] = {
        {"count", 1},
        {"indices", {{"bufferView", accessors[places]["bufferView"]}, {"componentType", 5123}}},
        {"values", {{"bufferView", accessors[values]["bufferView"]}}}};
    quad.primitive["attributes"]["POSITION"] = accessor;
    EXPECT_EQ(quad.triangles(), (std::vector<float>{0, 0, 1, 0, 0, 3, 1}));
}

TEST(GltfImport, surfacesShineAsTheyAreDescribed)
{
    Quad quad;
    quad.glb.description["materials"] = {
        {{"name", "both"},
         {"doubleSided", true},
         {"emissiveFactor", {0.5, 0, 0}},
         {"pbrMetallicRoughness",
          {{"baseColorFactor", {0.2140411, 1, 0, 0.5}}, {"metallicFactor", 0}, {"roughnessFactor", 0.5}}}}};
    quad.primitive["material"] = 0;
    quad.primitive["indices"] = quad.glb.addIndices({0, 1, 2});
    const y3d::Manager& manager = quad.import();
    EXPECT_EQ(manager.mMeshes[0]->getSubmesh(0)->getNumIndices(), 6); // the inside too
    const y3d::Material& material = *manager.mMaterials.at(0);
    EXPECT_NEAR(material.getAttribute(0)->getColor().r, 0.5f, 1e-6); // of light as of the screen
    EXPECT_NEAR(material.getAttribute(0)->getColor().a, 0.5f, 1e-6);
    EXPECT_NEAR(material.getAttribute(2)->getColor().r, 0.04 * 32 / 8, 1e-6); // an exponent of 30
    EXPECT_NEAR(material.getAttribute(3)->getColor().r, 0.735357f, 1e-5);
    EXPECT_FLOAT_EQ(material.getAttribute(4)->getColor().r, 60);
}

TEST(GltfImport, lampsAreMeasuredByTheStrongestAndSunsStandFarAway)
{
    Quad quad;
    quad.glb.description["extensions"]["KHR_lights_punctual"]["lights"] = {
        {{"type", "point"}, {"intensity", 500}, {"range", 7}},
        {{"type", "spot"}, {"intensity", 107.02055}, {"spot", Json::object()}},
        {{"type", "directional"}, {"color", {0, 1, 0}}}};
    Json& nodes = quad.glb.description["nodes"];
    for (int i = 0; i < 3; ++i)
        nodes.push_back({{"translation", {0, 2, 0}}, {"extensions", {{"KHR_lights_punctual", {{"light", i}}}}}});
    quad.options.scale = 10;
    const y3d::SceneNode& scene = *quad.import().mScenes[0];
    const auto& lamp = static_cast<const y3d::Light&>(*scene.getChild(1));
    EXPECT_FLOAT_EQ(lamp.getLightColor().getValue(0).r, 1);
    EXPECT_FLOAT_EQ(lamp.getDistance().getValue(0), 70);
    EXPECT_FLOAT_EQ(lamp.getPosition().getValue(0).y, 20);
    EXPECT_NEAR(static_cast<const y3d::Light&>(*scene.getChild(2)).getLightColor().getValue(0).r, 0.5, 1e-5);
    const auto& sun = static_cast<const y3d::Light&>(*scene.getChild(3)->getChild(0));
    EXPECT_FLOAT_EQ(sun.getLightColor().getValue(0).g, 1);
    EXPECT_GT(sun.getPosition().getValue(0).z, 1e4f);
    EXPECT_EQ(quad.losses.getLines().size(), 3u); // the second is dimmed, and a spot; the third is a sun
}

TEST(GltfImport, picturesBecomeWhatThePlayerReads)
{
    Quad quad;
    quad.glb.description["images"] = {{{"name", "a/b c"}, {"uri", "data:image/png;base64," + PIXEL}}};
    quad.glb.description["textures"] = {{{"source", 0}}};
    quad.glb.description["materials"] = {{{"pbrMetallicRoughness", {{"baseColorTexture", {{"index", 0}}}}}}};
    quad.primitive["material"] = 0;
    quad.import();
    EXPECT_EQ(quad.losses.getLines(), std::vector<std::string>());
    ASSERT_EQ(quad.pictures.size(), 1u);
    EXPECT_EQ(quad.pictures[0].name, "b_c.png");
    EXPECT_EQ(quad.pictures[0].bytes.at(24), 8); // bits
}

TEST(GltfImport, whatDoesNotFitIsTold)
{
    struct Case
    {
        const char* line;
        std::function<void(Quad&)> bend;
    };
    const auto attribute = [](const char* name) {
        return [name](Quad& quad) { quad.primitive["attributes"][name] = quad.primitive["attributes"]["POSITION"]; };
    };
    const auto material = [](const Json& json) {
        return [json](Quad& quad) {
            quad.glb.description["materials"] = Json::array({json});
            quad.primitive["material"] = 0;
        };
    };
    for (const Case& test : std::initializer_list<Case>{
             {"mesh 'mesh 0': its vertex colours are left out", attribute("COLOR_0")},
             {"mesh 'mesh 0': its texture coordinates 1 are left out", attribute("TEXCOORD_1")},
             {"mesh 'mesh 0': its skin is left out, it stays in the pose that it was made in", attribute("JOINTS_0")},
             {"mesh 'mesh 0': its morph targets are left out",
              [](Quad& quad) {
                  quad.primitive["targets"] = {{{"POSITION", 0}}};
              }},
             {"mesh 'mesh 0': points and lines are left out", [](Quad& quad) { quad.primitive["mode"] = 1; }},
             {"material 'm': transparency is left out, its surfaces are drawn in full",
              material({{"name", "m"}, {"alphaMode", "BLEND"}})},
             {"material 'm': the extension KHR_materials_sheen is left out",
              material({{"name", "m"}, {"extensions", {{"KHR_materials_sheen", Json::object()}}}})},
             {"camera 'quad' is orthographic and left out",
              [](Quad& quad) {
                  quad.glb.description["nodes"][0]["camera"] = 0;
                  quad.glb.description["cameras"] = {
                      {{"type", "orthographic"},
                       {"orthographic", {{"xmag", 1}, {"ymag", 1}, {"znear", 1}, {"zfar", 2}}}}};
              }},
             {"picture 0 is left out: '../secret.png' lies outside the folder of the file", [&](Quad& quad) {
                  quad.glb.description["images"] = {{{"uri", "../secret.png"}}};
                  quad.glb.description["textures"] = {{{"source", 0}}};
                  material({{"pbrMetallicRoughness", {{"baseColorTexture", {{"index", 0}}}}}})(quad);
              }}})
    {
        const std::filesystem::path folder = std::filesystem::temp_directory_path() / "gltf_import_test" / "in";
        std::filesystem::create_directories(folder);
        std::ofstream(folder.parent_path() / "secret.png") << "secret";
        Quad quad;
        test.bend(quad);
        quad.import(folder);
        const std::vector<std::string> lines = quad.losses.getLines();
        EXPECT_NE(std::find(lines.begin(), lines.end(), test.line), lines.end()) << test.line;
        std::filesystem::remove_all(folder.parent_path());
    }
}

TEST(GltfImport, brokenFilesGetOneLine)
{
    struct Case
    {
        const char* trouble;
        std::function<void(Quad&)> bend;
    };
    const auto accessor = [](const char* key, const Json& value) {
        return [key, value](Quad& quad) { quad.glb.description["accessors"][0][key] = value; };
    };
    const auto animation = [](const std::vector<float>& times) {
        return [times](Quad& quad) {
            Json made;
            made["samplers"] = {{{"input", quad.glb.addFloats(times, 1, true)}, {"output", 0}}};
            made["channels"] = {{{"sampler", 0}, {"target", {{"node", 0}, {"path", "translation"}}}}};
            quad.glb.description["animations"] = Json::array({made});
        };
    };
    for (const Case& test : std::initializer_list<Case>{
             {"accessor 0 reaches outside its buffer", accessor("count", 5)},
             {"accessor 0 reaches outside its buffer", accessor("byteOffset", 4000000000u)},
             {"its data is too large", accessor("count", 1000000000000u)},
             {"accessor 0 has another type than is wanted", accessor("type", "VEC2")},
             {"accessor 0 has no buffer", accessor("bufferView", 77)},
             {"there is no accessor 9", [](Quad& quad) { quad.primitive["attributes"]["POSITION"] = 9; }},
             {"there is no material 4", [](Quad& quad) { quad.primitive["material"] = 4; }},
             {"accessor 1 has the index 4 where there are 4 vertices",
              [](Quad& quad) {
                  quad.primitive["indices"] = quad.glb.addIndices({0, 1, 4});
              }},
             {"node 0 comes more than once in the tree",
              [](Quad& quad) {
                  quad.glb.description["nodes"][0]["children"] = {0};
                  quad.glb.description["scenes"] = {{{"nodes", {0}}}};
              }},
             {"its nodes lie too deep below each other",
              [](Quad& quad) {
                  for (int i = 1; i < 400; ++i)
                  {
                      quad.glb.description["nodes"].push_back(Json::object());
                      quad.glb.description["nodes"][i - 1]["children"] = {i};
                  }
              }},
             {"has no scene 3", [](Quad& quad) { quad.options.scene = 3; }},
             {"has no animation 'run'", [](Quad& quad) { quad.options.animation = "run"; }},
             {"animation 0: has keys that are not in the order of time", animation({0, 2, 1, 3})},
             {"animation 0: has 3 times and 4 values", animation({0, 1, 2})},
             {"quad.glb: needs the extension 'KHR_draco_mesh_compression', which is not known here",
              [](Quad& quad) { quad.glb.description["extensionsRequired"] = {"KHR_draco_mesh_compression"}; }}})
    {
        Quad quad;
        test.bend(quad);
        EXPECT_EQ(quad.trouble(), test.trouble);
    }
}

TEST(GltfImport, aTextReachesOnlyFilesBesideIt)
{
    const auto troubleOf = [](const std::string& text) -> std::string {
        try
        {
            gltf::readModel({text.begin(), text.end()}, "in.gltf", std::filesystem::temp_directory_path().string());
            return "";
        }
        catch (const y3d::Exception& exception)
        {
            return exception.what();
        }
    };
    const std::string begin = R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":4,"uri":")", end = "\"}]}";
    EXPECT_EQ(troubleOf(begin + "/dev/null" + end), "in.gltf: '/dev/null' lies outside the folder of the file");
    EXPECT_EQ(troubleOf(begin + "no.bin" + end), "in.gltf: 'no.bin': No such file or directory");
    EXPECT_EQ(troubleOf(R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":9e12}]})"),
              "in.gltf: its buffers are too large");
    EXPECT_EQ(troubleOf(std::string(200, '[')), "in.gltf: its description is nested too deep");
    EXPECT_EQ(troubleOf("{\"a\""), "in.gltf: is no glTF file");
}

TEST(GltfImport, cutAndDamagedFilesAreRefusedOrReadAndNothingElse)
{
    Quad quad;
    quad.primitive["indices"] = quad.glb.addIndices({0, 1, 2});
    quad.import();
    const std::vector<unsigned char> whole = quad.glb.build();
    for (std::size_t i = 0; i < whole.size(); ++i)
    {
        std::vector<unsigned char> cut(whole.begin(), whole.begin() + i), damaged = whole;
        damaged[i] ^= 0x15;
        EXPECT_THROW(gltf::readModel(cut, "cut", ""), y3d::Exception) << i;
        try
        {
            y3d::Manager manager;
            gltf::importScene(gltf::readModel(damaged, "damaged", ""), "", {}, manager, quad.losses);
        }
        catch (const y3d::Exception&)
        {
        }
    }
}
