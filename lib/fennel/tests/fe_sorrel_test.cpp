#include "fe_camera.h"
#include "fe_exception.h"
#include "gl_recorder.h"
#include "heap_counter.h"
#include "fe_light.h"
#include "fe_mesh.h"
#include "fe_scenes.h"
#include "fe_sorrel.h"

#include "y3d_armature.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using Fennel::Sorrel::Engine;
using Fennel::Sorrel::Node;
using GLRecorder::call;
using GLRecorder::gl;
using Calls = std::vector<std::string>;
using Names = std::vector<std::string>;

namespace
{

class SorrelTest : public testing::Test
{
protected:
    SorrelTest() { GLRecorder::reset(); }

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

    // What a load that must fail says; nothing may be left of it.
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

    static Names namesOf(const std::vector<Node*>& nodes)
    {
        Names names;
        for (const Node* node : nodes) names.push_back(node->mName);
        return names;
    }

    Archives archives;
};

} // namespace

TEST_F(SorrelTest, nodesStandInTheListsThatTheirMotionAsksFor)
{
    SceneFile file;
    file.material("m", 1, 1, 1, false);
    file.material("other", 1, 1, 1, false);
    file.quad("quad", "m");
    file.instance(nullptr, "fixed", "quad", {})->mMaterialReferences[0] = "other";
    file.add<y3d::Dummy>(nullptr, "group", {});
    y3d::Dummy* moving = file.add<y3d::Dummy>(nullptr, "moving", {});
    animate(moving->mPosition.mX, 0, 10);
    file.instance(file.instance(moving, "below", "quad", {}), "deeper", "quad", {});
    file.scene->addChild(new y3d::Armature);
    file.add<y3d::Dummy>(file.scene->mChildren.back(), "below an armature", {});

    const std::unique_ptr<Engine> engine = load(file);
    EXPECT_EQ(namesOf(engine->mNodes), (Names{"fixed", "group", "moving", "below", "deeper"}));
    EXPECT_EQ(namesOf(engine->mStaticNodes), Names{"fixed"});
    EXPECT_EQ(namesOf(engine->mDynamicNodes), (Names{"moving", "below", "deeper"}));
    EXPECT_EQ(namesOf(engine->mNodes[2]->mChildren), Names{"below"});
    EXPECT_EQ(engine->mNodes[4]->mParent, engine->mNodes[3]);
    EXPECT_EQ(engine->mNodes[0]->mMaterials[0]->mName, "other");
    EXPECT_EQ(engine->mNodes[3]->mMaterials[0]->mName, "m");
    EXPECT_EQ(engine->mNodes[0]->mMesh, engine->mNodes[3]->mMesh);
    EXPECT_EQ(gl.buffers.size(), 2u) << "one mesh, one pair of buffers";
    EXPECT_EQ(engine->mArchiveManager, nullptr);
    EXPECT_EQ(engine->mTextureManager.mArchiveManager, nullptr);
}

TEST_F(SorrelTest, onlyCamerasUnderTheRootCountAndTheFirstIsActive)
{
    SceneFile file;
    y3d::Dummy* group = file.add<y3d::Dummy>(nullptr, "group", {});
    file.camera(group, "hanging", {});
    file.add<y3d::Dummy>(file.light(group, {}, {}, 1), "below a light", {});
    file.camera(nullptr, "first", {});
    file.add<y3d::Dummy>(file.camera(nullptr, "second", {}), "below a camera", {});

    const std::unique_ptr<Engine> engine = load(file);
    ASSERT_EQ(engine->mCameras.size(), 2u);
    EXPECT_EQ(engine->mActiveCamera, engine->getCamera("first"));
    EXPECT_EQ(engine->mActiveCamera->mFar, 2000);
    EXPECT_EQ(engine->getCamera("second")->mFar, 500);
    EXPECT_EQ(namesOf(engine->mNodes), Names{"group"});
    EXPECT_EQ(engine->mLights.at(0)->mParent, engine->mNodes[0]);
    engine->setActiveCamera("second");
    EXPECT_EQ(engine->mActiveCamera->mFar, 2000);
    EXPECT_THROW(engine->setActiveCamera("third"), Fennel::Exception);
}

TEST_F(SorrelTest, unknownSceneNamesFallBackToTheFirstSceneAndPathsGetASlash)
{
    SceneFile file;
    file.camera(nullptr, "camera", {});
    file.manager.mScenes.push_back(new y3d::Scene);
    file.manager.mScenes.back()->mName = "empty";
    file.store(archives);
    for (const std::string name : {"empty", "nowhere", ""})
        for (const std::string path : {"", "pics", "pics/"})
        {
            archives["scene.xml"] = "<x><y/><scene filename='scene.y3d' texturepath='" + path + "' name='" + name +
                                    "'/><scene filename='none'/></x>";
            const std::unique_ptr<Engine> engine = load();
            EXPECT_EQ(engine->mCameras.size(), name == "empty" ? 0u : 1u) << name;
            EXPECT_EQ(engine->mTexturePath, path.empty() ? "" : "pics/");
        }
}

TEST_F(SorrelTest, brokenDescriptionsAndFilesAreNamed)
{
    EXPECT_EQ(errorOf(), "The scene description 'scene.xml' could not be found!");
    archives["scene.xml"] = "<x";
    EXPECT_EQ(errorOf(), "(error at line 1, col 3); EOF (when reading tag at 1:1)");
    archives["scene.xml"] = "<x><y/></x>";
    EXPECT_EQ(errorOf(), "No scene in scene.xml!");
    archives["scene.xml"] = "<x><scene filename=\"scene.y3d\"/></x>";
    EXPECT_EQ(errorOf(), "The scene 'scene.y3d' mentioned in 'scene.xml' could not be found");
    archives["scene.y3d"] = "rubbish";
    EXPECT_EQ(errorOf(), "Manager-file is of wrong version (105:115 of format rubb)");
    archives["scene.y3d"] = std::string("Y3DF\0\4\0\x10\0\0\0\0", 12);
    EXPECT_EQ(errorOf(), "No scenes in 'scene.y3d' mentioned from 'scene.xml'");

    gl.extensions = "GL_ARB_vertex_buffer_object_x GL_ARB_vertex_buffer";
    EXPECT_EQ(errorOf(), "Your graphic card does not support vertex buffer objects!");
    gl.extensions = "GL_ARB_vertex_buffer_object_x GL_ARB_vertex_buffer_object GL_x";
    EXPECT_NO_THROW(Engine());
}

TEST_F(SorrelTest, whatCannotBeDrawnIsRefusedByName)
{
    const struct
    {
        const char* text; // "*": "Mesh::load, ... in 'scene.y3d'"
        std::function<void(SceneFile&, y3d::Mesh&, y3d::Submesh&)> damage;
    } cases[] = {
        {"loaded", [](auto&, auto&, auto&) {}},
        {"The mesh named 'none' was not found! Tip: Y3D doesn't export meshes with 0 faces! Check using Outliner in "
         "blender!",
         [](auto& file, auto&, auto&) { file.instance(nullptr, "other", "none", {}); }},
        {"Mesh 'quad' has no material for index 0", [](auto&, auto&, auto& sub) { sub.mMaterialName = ""; }},
        {"Could not find material 'none' for submesh in 'node'",
         [](auto&, auto&, auto& sub) { sub.mMaterialName = "none"; }},
        {"Material::load, No image 'none' for material 'm' in 'scene.y3d'",
         [](auto& file, auto&, auto&) { file.texture(file.manager.mMaterials[0], "none", ""); }},
        {"AM::loadImage, File not found (gone.png)",
         [](auto& file, auto&, auto&) { file.texture(file.manager.mMaterials[0], "image", "gone.png"); }},
        {"*Mesh 'quad' has no bounding box", [](auto&, auto& mesh, auto&) { mesh.mHasBoundingBox = false; }},
        {"*Mesh 'quad' has no submesh",
         [](auto&, auto& mesh, auto& sub) {
             delete &sub;
             mesh.mSubmeshes.clear();
         }},
        {"*Submesh 0 of mesh 'quad' has no bounding box", [](auto&, auto&, auto& sub) { sub.mHasBoundingBox = false; }},
        {"*Submesh 0 of mesh 'quad' is empty (0 indices, 4 vertices)",
         [](auto&, auto&, auto& sub) { sub.mIndices->clear(); }},
        {"*Submesh 0 of mesh 'quad' has an index to vertex 4 of 4",
         [](auto&, auto&, auto& sub) { sub.mIndices->back() = 4; }},
        {"*Submesh 0 of mesh 'quad' has 3 normals for 4 vertices",
         [](auto&, auto&, auto& sub) { sub.mNormals->pop_back(); }},
        {"*Submesh 0 of mesh 'quad' has 5 texture coordinates for 4 vertices",
         [](auto&, auto&, auto& sub) { sub.mUVWs[0]->push_back(Vector3f()); }},
        {"*Submesh 0 of mesh 'quad' has a vertex format that cannot be drawn (15): only positions, normals and one set "
         "of texture coordinates can",
         [](auto&, auto&, auto& sub) { sub.mUVWs.push_back(new y3d::UVWList(4)); }}};
    for (const auto& one : cases)
    {
        SceneFile file;
        file.material("m", 1, 1, 1, false);
        file.quad("quad", "m");
        file.instance(nullptr, "node", "quad", {});
        one.damage(file, *file.manager.mMeshes[0], *file.manager.mMeshes[0]->mSubmeshes[0]);
        file.store(archives);
        EXPECT_EQ(errorOf(),
                  *one.text == '*' ? std::string("Mesh::load, ") + (one.text + 1) + " in 'scene.y3d'" : one.text);
    }
}

TEST_F(SorrelTest, keyframingIsAFunctionOfTimeAlone)
{
    SceneFile file;
    file.material("m", 1, 1, 1, false);
    file.quad("quad", "m");
    y3d::Dummy* parent = file.add<y3d::Dummy>(nullptr, "parent", {0, 5, 0});
    animate(parent->mScale.mX, 2, -2); // mirrors from 5 seconds on
    y3d::MeshInstance* child = file.instance(parent, "child", "quad", {1, 0, 0});
    child->mScale.mX.mBaseValue = -1;
    file.instance(child, "grandchild", "quad", {});
    file.light(parent, {1, 1, 1}, {1, 1, 1}, 10);
    const std::unique_ptr<Engine> engine = load(file);             // without a camera: nodes move, and nothing is drawn
    for (const float time : {0.0f, 10.0f, 2.5f, 5.0f, 7.5f, 0.0f}) // at 5 flat, which is not mirrored
    {
        SCOPED_TRACE(time);
        const float scale = 2 - 0.4f * time;
        engine->updateKeyframing(time);
        EXPECT_EQ(engine->mNodes[0]->mMirrored, scale < 0);
        EXPECT_EQ(engine->mNodes[1]->mMirrored, scale >= 0) << "mirrored twice is not mirrored";
        EXPECT_EQ(engine->mNodes[2]->mMirrored, scale >= 0);
        const MathBase::AABBpointsf& box = engine->mNodes[1]->mWorldBox; // x from 0 to 2 in its parent
        EXPECT_FLOAT_EQ(box.mMin.x, std::min(0.0f, 2 * scale));
        EXPECT_FLOAT_EQ(box.mMax.x, std::max(0.0f, 2 * scale));
        EXPECT_FLOAT_EQ(engine->mLights[0]->mPosition.x, scale);
        EXPECT_FLOAT_EQ(engine->mLights[0]->mPosition.y, 6);
    }
    gl.calls.clear();
    engine->draw();
    EXPECT_TRUE(gl.calls.empty());
}

TEST_F(SorrelTest, aFrameIsTheseCallsInThisOrder)
{
    SceneFile file;
    file.material("m", 1, 0, 0, false);
    file.quad("quad", "m");
    y3d::MeshInstance* turned = file.instance(nullptr, "node", "quad", {1, 2, -5});
    setVector(turned->mScale, {-2, 3, 4}); // after a quarter turn about z
    turned->mRotation.setBaseValue(MathBase::Quatf(0.70710678f, 0, 0, 0.70710678f));
    file.light(nullptr, {1, 2, 3}, {0.5f, 0.25f, 1}, 4);
    y3d::Camera* moving = file.camera(nullptr, "camera", {});
    animate(moving->mPosition.mZ, 0, 10);
    const std::unique_ptr<Engine> engine = load(file);
    engine->updateKeyframing(1);
    const float world[16] = {0, 3, 0, 0, 2, 0, 0, 0, 0, 0, 4, 0, 1, 2, -5, 1};
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(engine->mNodes[0]->mMatWorld[i], world[i], 1e-6f) << i;

    const GLuint vertices = engine->mMeshes[0]->mSubmeshes[0].mVertexBuffer->ID;
    const MathBase::Matrix4x4Col& view = engine->mActiveCamera->mMatCameraInv;
    MathBase::Matrix4x4Col modelView = view;
    modelView.multiplyFromRight(engine->mNodes[0]->mMatWorld);
    const MathBase::Vector3f lamp = view.transformPoint({1, 2, 3});
    const auto matrix = [](const MathBase::Matrix4x4Col& m) {
        return call("glLoadMatrixf", m[0], m[5], m[10], m[12], m[13], m[14]);
    };

    Calls expected = {call("glMatrixMode", GL_MODELVIEW),
                      "glLoadIdentity",
                      call("glClear", GL_DEPTH_BUFFER_BIT),
                      call("glEnable", GL_NORMALIZE),
                      call("glEnable", GL_DEPTH_TEST),
                      call("glDepthMask", GL_TRUE),
                      call("glMatrixMode", GL_PROJECTION),
                      matrix(engine->mActiveCamera->mMatProj),
                      call("glMatrixMode", GL_MODELVIEW),
                      call("glEnable", GL_LIGHT0),
                      call("glLightf", GL_LIGHT0, GL_CONSTANT_ATTENUATION, 1),
                      call("glLightf", GL_LIGHT0, GL_LINEAR_ATTENUATION, 0.25f),
                      call("glLightf", GL_LIGHT0, GL_QUADRATIC_ATTENUATION, 0),
                      call("glLightfv", GL_LIGHT0, GL_AMBIENT, 0, 0, 0, 0),
                      call("glLightfv", GL_LIGHT0, GL_SPECULAR, 0.5f, 0.25f, 1, 1),
                      call("glLightfv", GL_LIGHT0, GL_DIFFUSE, 0.5f, 0.25f, 1, 1),
                      call("glLightfv", GL_LIGHT0, GL_POSITION, lamp.x, lamp.y, lamp.z, 1)};
    for (int i = 1; i < 8; ++i) expected.push_back(call("glDisable", GL_LIGHT0 + i));
    for (const std::string& text : Calls{call("glColor4f", 1, 1, 1, 1),
                                         call("glDisable", GL_LIGHTING),
                                         call("glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 0),
                                         call("glEnable", GL_CULL_FACE),
                                         call("glFrontFace", GL_CCW),
                                         call("glCullFace", GL_BACK),
                                         call("glDisable", GL_BLEND),
                                         call("glDisable", GL_TEXTURE_2D),
                                         call("glFrontFace", GL_CW),
                                         call("glMaterialfv", GL_FRONT_AND_BACK, GL_DIFFUSE, 1, 0, 0, 1),
                                         call("glMaterialfv", GL_FRONT_AND_BACK, GL_AMBIENT, 0, 0, 0, 0),
                                         call("glMaterialfv", GL_FRONT_AND_BACK, GL_SPECULAR, 0, 0, 0, 0),
                                         call("glMaterialfv", GL_FRONT_AND_BACK, GL_EMISSION, 0, 0, 0, 0),
                                         call("glMaterialf", GL_FRONT_AND_BACK, GL_SHININESS, 0),
                                         call("glEnable", GL_LIGHTING),
                                         call("glColor4f", 1, 1, 1, 1),
                                         call("glDisable", GL_TEXTURE_2D),
                                         matrix(modelView),
                                         call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, vertices),
                                         call("glInterleavedArrays", GL_T2F_N3F_V3F, 0),
                                         call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, vertices + 1),
                                         call("glDrawRangeElements", GL_TRIANGLES, 0, 4, 6, GL_UNSIGNED_BYTE, 0),
                                         call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0),
                                         call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0),
                                         call("glMatrixMode", GL_MODELVIEW),
                                         matrix(view)})
        expected.push_back(text);
    gl.calls.clear();
    engine->draw();
    EXPECT_EQ(gl.calls, expected);
}

TEST_F(SorrelTest, aSphereThatTouchesAPlaneFromOutsideIsCulled)
{
    SceneFile file;
    file.material("m", 1, 1, 1, true);
    file.quad("quad", "m");
    file.instance(nullptr, "node", "quad", {});
    file.camera(nullptr, "camera", {});
    const std::unique_ptr<Engine> engine = load(file);
    engine->updateKeyframing(0);
    // One plane at z = -1, written by hand so that touching it is exact, and a sphere of radius 1.
    engine->mActiveCamera->mFrustum.mNumPlanes = 1;
    engine->mActiveCamera->mFrustum.mPlanes[0] = MathBase::Planef(0, 0, -1, -1);
    for (const float z : {-5.0f, -0.25f, 0.0f, 5.0f})
    {
        engine->mNodes[0]->mWorldBox = MathBase::AABBpointsf({-1, 0, z}, {1, 0, z});
        engine->draw();
        EXPECT_EQ(engine->mRenderManager.mJobs.size(), z < 0 ? 1u : 0u) << z;
    }
}

// More nodes than culling takes at a time. Where surfaces touch, the order shows in the picture.
TEST_F(SorrelTest, whatIsInSightIsDrawnMeshByMeshInTheOrderOfTheScene)
{
    SceneFile file;
    file.material("m", 1, 1, 1, true);
    file.quad("first", "m");
    file.quad("second", "m");
    std::vector<long> expected[2];
    for (int i = 0; i < 333; ++i)
    {
        const int z = i % 3 ? -5 - i : 5;
        file.instance(nullptr, "node", i % 5 ? "second" : "first", {0, 0, static_cast<float>(z)});
        if (z < 0) expected[i % 5 ? 1 : 0].push_back(z);
    }
    file.camera(nullptr, "camera", {});
    const std::unique_ptr<Engine> engine = load(file);
    engine->updateKeyframing(0);
    engine->draw();
    std::vector<long> drawn;
    for (const Fennel::RenderManager::Job& job : engine->mRenderManager.mJobs)
        drawn.push_back(std::lround(job.matrix.m[14]));
    expected[0].insert(expected[0].end(), expected[1].begin(), expected[1].end());
    EXPECT_EQ(drawn, expected[0]);
}

TEST_F(SorrelTest, aFrameAllocatesNothingOnceTheLargestHasBeen)
{
    SceneFile file;
    file.material("m", 1, 1, 1, true);
    file.quad("quad", "m");
    for (int i = 0; i < 300; ++i) animate(file.instance(nullptr, "node", "quad", {0, 0, -5})->mPosition.mX, 0, 1);
    for (int i = 0; i < 9; ++i) file.light(nullptr, {}, {}, 1);
    file.camera(nullptr, "camera", {});
    const std::unique_ptr<Engine> engine = load(file);
    gl.asleep = true;
    engine->draw();
    const long before = heapAllocations;
    for (int i = 0; i < 10; ++i)
    {
        engine->updateKeyframing(static_cast<float>(i));
        engine->draw();
    }
    EXPECT_EQ(heapAllocations, before);
    EXPECT_EQ(engine->mRenderManager.mJobs.size(), 300u);
}
