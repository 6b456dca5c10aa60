#include "fe_camera.h"
#include "fe_exception.h"
#include "fe_glfake.h"
#include "fe_light.h"
#include "fe_mesh.h"
#include "fe_scenes.h"
#include "fe_sorrel.h"

#include "xml_exception.h"
#include "xml_parser.h"
#include "y3d_armature.h"
#include "y3d_exception.h"

#include <gtest/gtest.h>

#include <functional>

using Fennel::Sorrel::Engine;
using Fennel::Sorrel::Node;
using GLFake::call;
using GLFake::gl;

namespace
{

std::vector<std::string> namesOf(const std::vector<Node*>& nodes)
{
    std::vector<std::string> names;
    for (const Node* node : nodes) names.push_back(node->mName);
    return names;
}

using Names = std::vector<std::string>;

class SorrelTest : public testing::Test
{
protected:
    SorrelTest() { GLFake::reset(); }

    std::unique_ptr<Engine> load()
    {
        std::unique_ptr<Engine> engine(new Engine);
        engine->load(archives, "scene.xml");
        return engine;
    }

    std::unique_ptr<Engine> load(const SceneFile& file)
    {
        file.store(archives);
        return load();
    }

    // What a load that must fail says; afterwards nothing may be left in GL.
    std::string errorOf()
    {
        try
        {
            load();
        }
        catch (const std::exception& exception)
        {
            EXPECT_TRUE(gl.buffers.empty());
            return exception.what();
        }
        return "loaded";
    }

    Node* find(const Engine& engine, const std::string& name)
    {
        for (Node* node : engine.mNodes)
        {
            if (node->mName == name) return node;
        }
        return nullptr;
    }

    Archives archives;
};

} // namespace

TEST_F(SorrelTest, nodesStandInTheListsThatTheirMotionAsksFor)
{
    SceneFile file;
    file.material("m", 1, 1, 1, false);
    file.quad("quad", "m");
    file.instance(nullptr, "fixed", "quad", {});
    file.add<y3d::Dummy>(nullptr, "group", {});
    y3d::Dummy* moving = file.add<y3d::Dummy>(nullptr, "moving", {});
    animate(moving->mPosition.mX, 0, 0, 10, 10);
    y3d::MeshInstance* below = file.instance(moving, "below", "quad", {});
    file.instance(below, "deeper", "quad", {});
    y3d::Armature* armature = new y3d::Armature;
    file.scene->addChild(armature);
    armature->addChild(new y3d::Dummy);

    const std::unique_ptr<Engine> engine = load(file);
    EXPECT_EQ(namesOf(engine->mNodes), (Names{"fixed", "group", "moving", "below", "deeper"}));
    EXPECT_EQ(namesOf(engine->mStaticNodes), Names{"fixed"});
    EXPECT_EQ(namesOf(engine->mDynamicNodes), (Names{"moving", "below", "deeper"}));
    EXPECT_EQ(namesOf(find(*engine, "moving")->mChildren), Names{"below"});
    EXPECT_EQ(find(*engine, "deeper")->mParent, find(*engine, "below"));
    EXPECT_EQ(engine->mMeshes.size(), 1u);
    EXPECT_EQ(gl.buffers.size(), 2u) << "one mesh, one pair of buffers";
    EXPECT_EQ(engine->mArchiveManager, nullptr);
    EXPECT_EQ(engine->mTextureManager.mArchiveManager, nullptr);
}

TEST_F(SorrelTest, onlyCamerasUnderTheRootCountAndTheFirstIsActive)
{
    SceneFile file;
    y3d::Dummy* group = file.add<y3d::Dummy>(nullptr, "group", {});
    file.camera(group, "hanging", {});
    y3d::Light* light = file.light(group, {}, {}, 1);
    file.add<y3d::Dummy>(light, "below a light", {});
    file.camera(nullptr, "first", {});
    file.add<y3d::Dummy>(file.camera(nullptr, "second", {}), "below a camera", {});

    const std::unique_ptr<Engine> engine = load(file);
    ASSERT_EQ(engine->mCameras.size(), 2u);
    EXPECT_EQ(engine->mActiveCamera, engine->getCamera("first"));
    EXPECT_EQ(engine->mActiveCamera->mFar, 2000);
    EXPECT_EQ(engine->getCamera("second")->mFar, 500);
    EXPECT_EQ(engine->getCamera("hanging"), nullptr);
    EXPECT_EQ(namesOf(engine->mNodes), Names{"group"});
    ASSERT_EQ(engine->mLights.size(), 1u);
    EXPECT_EQ(engine->mLights[0]->mParent, engine->mNodes[0]);

    engine->setActiveCamera("second");
    EXPECT_EQ(engine->mActiveCamera->mFar, 2000);
    EXPECT_THROW(engine->setActiveCamera("third"), Fennel::Exception);
}

TEST_F(SorrelTest, anInstanceTakesItsOwnMaterialsAheadOfTheMeshs)
{
    SceneFile file;
    file.material("m", 1, 1, 1, false);
    file.material("other", 1, 1, 1, false);
    file.quad("quad", "m");
    file.instance(nullptr, "a", "quad", {});
    file.instance(nullptr, "b", "quad", {})->mMaterialReferences[0] = "other";

    const std::unique_ptr<Engine> engine = load(file);
    EXPECT_EQ(engine->mNodes[0]->mMaterials[0]->mName, "m");
    EXPECT_EQ(engine->mNodes[1]->mMaterials[0]->mName, "other");
    EXPECT_EQ(engine->mNodes[0]->mMesh, engine->mNodes[1]->mMesh);
}

TEST_F(SorrelTest, unknownSceneNamesFallBackToTheFirstSceneAndPathsGetASlash)
{
    SceneFile file;
    file.camera(nullptr, "camera", {});
    file.manager.mScenes.push_back(new y3d::Scene);
    file.manager.mScenes.back()->mName = "empty";
    file.store(archives);
    const struct
    {
        const char *name, *path, *expectedPath;
        std::size_t cameras;
    } cases[] = {{"Scene", "", "", 1}, {"nowhere", "pics", "pics/", 1}, {"", "pics/", "pics/", 1}, {"empty", "/", "/", 0}};
    for (const auto& one : cases)
    {
        archives["scene.xml"] = std::string("<x><y/><scene filename='scene.y3d' texturepath='") + one.path + "' name='" +
                                one.name + "'/><scene filename='none'/></x>";
        const std::unique_ptr<Engine> engine = load();
        EXPECT_EQ(engine->mCameras.size(), one.cameras) << one.name;
        EXPECT_EQ(engine->mTexturePath, one.expectedPath);
    }
}

TEST_F(SorrelTest, brokenDescriptionsAndFilesAreNamed)
{
    EXPECT_EQ(errorOf(), "The scene description 'scene.xml' could not be found!");
    archives["scene.xml"] = "<x><y/></x>";
    EXPECT_EQ(errorOf(), "No scene in scene.xml!");
    archives["scene.xml"] = "<x";
    EXPECT_THROW(load(), Xml::XmlException);
    archives["scene.xml"] = "<x><scene filename=\"scene.y3d\"/></x>";
    EXPECT_EQ(errorOf(), "The scene 'scene.y3d' mentioned in 'scene.xml' could not be found");
    archives["scene.y3d"] = "rubbish";
    EXPECT_THROW(load(), y3d::Exception);
    SceneFile file;
    file.manager.mScenes.clear();
    std::unique_ptr<y3d::Scene> owner(file.scene);
    archives["scene.y3d"] = file.bytes() + std::string("\0\x10\0\0\0\0", 6);
    EXPECT_EQ(errorOf(), "No scenes in 'scene.y3d' mentioned from 'scene.xml'");

    gl.extensions = "GL_ARB_vertex_buffer_object_x GL_ARB_vertex_buffer";
    EXPECT_EQ(errorOf(), "Your graphic card does not support vertex buffer objects!");
    EXPECT_TRUE(Engine::hasExtension("GL_ARB_vertex_buffer_object_x GL_ARB_vertex_buffer_object", "GL_ARB_vertex_buffer_object"));
}

TEST_F(SorrelTest, whatCannotBeDrawnIsRefusedByName)
{
    const auto submesh = [](SceneFile& file) { return file.manager.mMeshes[0]->mSubmeshes[0]; };
    const struct
    {
        const char* text;
        std::function<void(SceneFile&)> damage;
    } cases[] = {
        {"loaded", [](SceneFile&) {}},
        {"The mesh named 'none' was not found! Tip: Y3D doesn't export meshes with 0 faces! Check using Outliner in "
         "blender!",
         [](SceneFile& file) { file.instance(nullptr, "node", "none", {}); }},
        {"Mesh 'quad' has no material for index 0", [&](SceneFile& file) { submesh(file)->mMaterialName = ""; }},
        {"Could not find material 'none' for submesh in 'node'",
         [](SceneFile& file) {
             static_cast<y3d::MeshInstance*>(file.scene->mChildren[0])->mMaterialReferences[0] = "none";
         }},
        {"Material::load, No image 'none' for material 'm' in 'scene.y3d'",
         [](SceneFile& file) { file.texture(file.manager.mMaterials[0]->mAttributes[0], "none", ""); }},
        {"AM::loadImage, File not found (gone.png)",
         [](SceneFile& file) { file.texture(file.manager.mMaterials[0]->mAttributes[0], "image", "gone.png"); }},
        {"Mesh::load, Mesh 'bare' has no submesh in 'scene.y3d'",
         [](SceneFile& file) {
             file.mesh("bare");
             file.instance(nullptr, "node", "bare", {});
         }},
        {"Mesh::load, Mesh 'quad' has no bounding box in 'scene.y3d'",
         [](SceneFile& file) { file.manager.mMeshes[0]->mHasBoundingBox = false; }},
        {"Mesh::load, Submesh 0 of mesh 'quad' has no bounding box in 'scene.y3d'",
         [&](SceneFile& file) { submesh(file)->mHasBoundingBox = false; }},
        {"Mesh::load, Submesh 0 of mesh 'quad' is empty (0 indices, 4 vertices) in 'scene.y3d'",
         [&](SceneFile& file) { submesh(file)->mIndices->clear(); }},
        {"Mesh::load, Submesh 0 of mesh 'quad' has an index to vertex 4 of 4 in 'scene.y3d'",
         [&](SceneFile& file) { submesh(file)->mIndices->back() = 4; }},
        {"Mesh::load, Submesh 0 of mesh 'quad' has 3 normals for 4 vertices in 'scene.y3d'",
         [&](SceneFile& file) { submesh(file)->mNormals->pop_back(); }},
        {"Mesh::load, Submesh 0 of mesh 'quad' has 5 texture coordinates for 4 vertices in 'scene.y3d'",
         [&](SceneFile& file) { submesh(file)->mUVWs[0]->push_back(Vector3f()); }},
        {"Mesh::load, Submesh 0 of mesh 'quad' has a vertex format that cannot be drawn (15): only positions, normals "
         "and one set of texture coordinates can in 'scene.y3d'",
         [&](SceneFile& file) { submesh(file)->mUVWs.push_back(new y3d::UVWList(4)); }},
        {"Mesh::load, Submesh 0 of mesh 'quad' has a vertex format that cannot be drawn (23): only positions, normals "
         "and one set of texture coordinates can in 'scene.y3d'",
         [&](SceneFile& file) { submesh(file)->mColors.push_back(new y3d::StructList<y3d::Color4f>(4)); }},
    };
    for (const auto& one : cases)
    {
        SceneFile file;
        file.material("m", 1, 1, 1, false);
        file.quad("quad", "m");
        file.instance(nullptr, "node", "quad", {});
        one.damage(file);
        file.store(archives);
        EXPECT_EQ(errorOf(), one.text);
    }
}

TEST_F(SorrelTest, everyBeginningOfAFileLoadsOrIsRefused)
{
    SceneFile file;
    file.material("m", 1, 1, 1, false);
    file.quad("quad", "m");
    file.camera(nullptr, "camera", {});
    file.light(file.instance(nullptr, "node", "quad", {}), {}, {}, 1);
    file.store(archives);
    const std::string whole = archives["scene.y3d"];
    gl.asleep = true;
    int loaded = 0;
    for (std::size_t length = 0; length <= whole.size(); ++length)
    {
        archives["scene.y3d"] = whole.substr(0, length);
        try
        {
            const std::unique_ptr<Engine> engine = load();
            engine->updateKeyframing(1);
            engine->draw();
            ++loaded;
        }
        catch (const std::exception&)
        {
        }
        ASSERT_TRUE(gl.buffers.empty()) << length;
    }
    EXPECT_GT(loaded, 0);
}

TEST_F(SorrelTest, keyframingIsAFunctionOfTimeAlone)
{
    SceneFile file;
    file.material("m", 1, 1, 1, false);
    file.quad("quad", "m");
    y3d::Dummy* parent = file.add<y3d::Dummy>(nullptr, "parent", {0, 5, 0});
    animate(parent->mScale.mX, 0, 2, 10, -2); // mirrors from 5 seconds on
    y3d::MeshInstance* child = file.instance(parent, "child", "quad", {1, 0, 0});
    child->mScale.mX.mBaseValue = -1;
    file.instance(child, "grandchild", "quad", {});
    file.light(parent, {1, 1, 1}, {1, 1, 1, 1}, 10);
    y3d::Camera* camera = file.camera(nullptr, "camera", {});
    animate(camera->mPosition.mZ, 0, 0, 10, 10);

    const std::unique_ptr<Engine> engine = load(file);
    for (const float time : {0.0f, 10.0f, 2.5f, 7.5f, 0.0f})
    {
        const float scale = 2 - 0.4f * time;
        engine->updateKeyframing(time);
        EXPECT_EQ(find(*engine, "parent")->mMirrored, scale < 0) << time;
        EXPECT_EQ(find(*engine, "child")->mMirrored, scale > 0) << "mirrored twice is not mirrored, at " << time;
        EXPECT_EQ(find(*engine, "grandchild")->mMirrored, scale > 0) << time;

        const MathBase::AABBpointsf& box = find(*engine, "child")->mWorldBox; // x from 0 to 2 in its parent
        EXPECT_FLOAT_EQ(box.mMin.x, std::min(0.0f, 2 * scale));
        EXPECT_FLOAT_EQ(box.mMax.x, std::max(0.0f, 2 * scale));
        EXPECT_FLOAT_EQ(box.mMax.y, 6);
        EXPECT_FLOAT_EQ(engine->mLights[0]->mPosition.x, scale);
        EXPECT_FLOAT_EQ(engine->mLights[0]->mPosition.y, 6);
        EXPECT_FLOAT_EQ(engine->mActiveCamera->mPosition.z, time);
    }
}

TEST_F(SorrelTest, theScaleOfANodeAppliesAfterItsRotation)
{
    SceneFile file;
    y3d::Dummy* node = file.add<y3d::Dummy>(nullptr, "node", {1, 2, 3});
    setVector(node->mScale, {2, 3, 4});
    node->mRotation.setBaseValue(MathBase::Quatf(0.70710678f, 0, 0, 0.70710678f)); // a quarter turn about z
    const std::unique_ptr<Engine> engine = load(file);
    const float expected[16] = {0, 3, 0, 0, -2, 0, 0, 0, 0, 0, 4, 0, 1, 2, 3, 1};
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(engine->mNodes[0]->mMatWorld[i], expected[i], 1e-6f) << i;
}

TEST_F(SorrelTest, aFrameIsTheseCallsInThisOrder)
{
    SceneFile file;
    file.material("m", 1, 0, 0, false);
    file.quad("quad", "m");
    file.instance(nullptr, "node", "quad", {0, 0, -5})->mScale.mX.mBaseValue = -1;
    file.light(nullptr, {1, 2, 3}, {0.5f, 0.25f, 1, 1}, 4);
    file.camera(nullptr, "camera", {0, 0, 1});
    const std::unique_ptr<Engine> engine = load(file);
    engine->updateKeyframing(0);
    const GLuint vertices = engine->mMeshes[0]->mSubmeshes[0].mVertexBuffer->ID;
    const MathBase::Matrix4x4Col& view = engine->mActiveCamera->mMatCameraInv;
    const MathBase::Matrix4x4Col& projection = engine->mActiveCamera->mMatProj;
    const auto matrix = [](const MathBase::Matrix4x4Col& m) {
        return call("glLoadMatrixf", m[0], m[5], m[10], m[12], m[13], m[14]);
    };
    MathBase::Matrix4x4Col modelView = view;
    modelView.multiplyFromRight(engine->mNodes[0]->mMatWorld);
    const MathBase::Vector3f lamp = view.transformPoint({1, 2, 3});

    gl.calls.clear();
    engine->draw();
    std::vector<std::string> expected = {
        call("glMatrixMode", GL_MODELVIEW), "glLoadIdentity", call("glClear", GL_DEPTH_BUFFER_BIT),
        call("glEnable", GL_NORMALIZE), call("glEnable", GL_DEPTH_TEST), call("glDepthMask", GL_TRUE),
        call("glMatrixMode", GL_PROJECTION), matrix(projection), call("glMatrixMode", GL_MODELVIEW),
        call("glEnable", GL_LIGHT0), call("glLightf", GL_LIGHT0, GL_CONSTANT_ATTENUATION, 1),
        call("glLightf", GL_LIGHT0, GL_LINEAR_ATTENUATION, 0.25f), call("glLightf", GL_LIGHT0, GL_QUADRATIC_ATTENUATION, 0),
        call("glLightfv", GL_LIGHT0, GL_AMBIENT, 0, 0, 0, 0), call("glLightfv", GL_LIGHT0, GL_SPECULAR, 0.5f, 0.25f, 1, 1),
        call("glLightfv", GL_LIGHT0, GL_DIFFUSE, 0.5f, 0.25f, 1, 1),
        call("glLightfv", GL_LIGHT0, GL_POSITION, lamp.x, lamp.y, lamp.z, 1)};
    for (int i = 1; i < 8; ++i) expected.push_back(call("glDisable", GL_LIGHT0 + i));
    for (const std::string& text :
         {call("glColor4f", 1, 1, 1, 1), call("glDisable", GL_LIGHTING), call("glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 0),
          call("glEnable", GL_CULL_FACE), call("glFrontFace", GL_CCW), call("glCullFace", GL_BACK),
          call("glDisable", GL_BLEND), call("glDisable", GL_TEXTURE_2D), call("glFrontFace", GL_CW),
          call("glMaterialfv", GL_FRONT_AND_BACK, GL_DIFFUSE, 1, 0, 0, 1),
          call("glMaterialfv", GL_FRONT_AND_BACK, GL_AMBIENT, 0, 0, 0, 0),
          call("glMaterialfv", GL_FRONT_AND_BACK, GL_SPECULAR, 0, 0, 0, 0),
          call("glMaterialfv", GL_FRONT_AND_BACK, GL_EMISSION, 0, 0, 0, 0),
          call("glMaterialf", GL_FRONT_AND_BACK, GL_SHININESS, 0), call("glEnable", GL_LIGHTING),
          call("glColor4f", 1, 1, 1, 1), call("glDisable", GL_TEXTURE_2D), matrix(modelView),
          call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, vertices), call("glInterleavedArrays", GL_T2F_N3F_V3F, 0),
          call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, vertices + 1),
          call("glDrawRangeElements", GL_TRIANGLES, 0, 4, 6, GL_UNSIGNED_BYTE, 0),
          call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0), call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0),
          call("glMatrixMode", GL_MODELVIEW), matrix(view)})
        expected.push_back(text);
    EXPECT_EQ(gl.calls, expected);
}

TEST_F(SorrelTest, aSphereThatTouchesAPlaneFromOutsideIsCulled)
{
    SceneFile file;
    file.material("m", 1, 1, 1, true);
    y3d::Mesh* mesh = file.quad("quad", "m");
    mesh->mBoundingBox = MathBase::AABBpointsf({-1, 0, 0}, {1, 0, 0}); // a sphere of radius 1
    file.instance(nullptr, "node", "quad", {});
    file.camera(nullptr, "camera", {});
    const std::unique_ptr<Engine> engine = load(file);
    const struct
    {
        float z; // of the node; the camera looks from 0 along negative z, from a near plane made to lie at 1
        bool visible;
    } cases[] = {{-5, true}, {-0.25f, true}, {0, false}, {0.5f, false}, {5, false}};
    for (const auto& one : cases)
    {
        engine->updateKeyframing(0);
        engine->mActiveCamera->mNear = 1;
        engine->mActiveCamera->updateMatrices();
        // By hand, so that the touching case is exact.
        engine->mActiveCamera->mFrustum.mPlanes[MathBase::Frustum::NEAR] = MathBase::Planef(0, 0, -1, -1);
        engine->mNodes[0]->mWorldBox = MathBase::AABBpointsf({-1, 0, one.z}, {1, 0, one.z});
        engine->draw();
        EXPECT_EQ(engine->mRenderManager.mJobs.size(), one.visible ? 1u : 0u) << one.z;
    }
}

TEST_F(SorrelTest, withoutACameraNodesMoveAndNothingIsDrawn)
{
    SceneFile file;
    y3d::Dummy* node = file.add<y3d::Dummy>(nullptr, "node", {});
    animate(node->mPosition.mX, 0, 0, 10, 10);
    const std::unique_ptr<Engine> engine = load(file);
    engine->updateKeyframing(5);
    EXPECT_FLOAT_EQ(engine->mNodes[0]->mMatWorld[12], 5);
    gl.calls.clear();
    engine->draw();
    EXPECT_TRUE(gl.calls.empty());
}

TEST_F(SorrelTest, aFrameAllocatesNothingOnceTheLargestHasBeen)
{
    SceneFile file;
    file.material("m", 1, 1, 1, true);
    file.quad("quad", "m");
    for (int i = 0; i < 300; ++i)
        animate(file.instance(nullptr, "node", "quad", {0, 0, -5})->mPosition.mX, 0, 0, 10, 1);
    for (int i = 0; i < 9; ++i) file.light(nullptr, {}, {}, 1);
    file.camera(nullptr, "camera", {});
    const std::unique_ptr<Engine> engine = load(file);
    gl.asleep = true;
    engine->updateKeyframing(1);
    engine->draw();
    const long before = GLFake::allocations;
    for (int i = 0; i < 10; ++i)
    {
        engine->updateKeyframing(static_cast<float>(i));
        engine->draw();
    }
    EXPECT_EQ(GLFake::allocations, before);
    EXPECT_EQ(engine->mRenderManager.mJobs.size(), 300u);
}

TEST_F(SorrelTest, xmlTagsAreFoundByNameOrByTheLastStar)
{
    const std::unique_ptr<Engine> engine = load(SceneFile());
    Xml::XmlParser parser;
    parser.parse("<r><p><t name='*' v='1'/><t name='a' v='2'/><u name='b'/><t name='*' v='3'/></p></r>");
    Xml::IteratorConst parent = parser.createIterator("p");
    ++parent;
    EXPECT_EQ(engine->findXmlIterator(parent, "t", "a")->getValue("v"), "2");
    EXPECT_EQ(engine->findXmlIterator(parent, "t", "b")->getValue("v"), "3");
    EXPECT_TRUE(engine->findXmlIterator(parent, "u", "c").isAtEnd());
}
