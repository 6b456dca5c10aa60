#include "y3d_testing.h"

#include "y3d_armature.h"
#include "y3d_camera.h"
#include "y3d_dummy.h"
#include "y3d_exception.h"
#include "y3d_light.h"
#include "y3d_material.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"
#include "y3d_texture.h"

using namespace y3d;

TEST(SceneNode, readsChildrenOfEveryClassInFileOrder)
{
    Manager manager;
    load(&manager,
         file(chunk(CHUNK_SCENE, named(CHUNK_CAMERA, "c") + named(CHUNK_LIGHT, "l") + chunk(CHUNK_NAME, text("scene")) +
                                     armature() + named(CHUNK_MESHINSTANCE, "m") + restingTracks() +
                                     named(CHUNK_DUMMY, "d", named(CHUNK_DUMMY, "below")))));
    const Scene* scene = manager.getScene("scene");
    const std::pair<int, std::string> children[] = {
        {0x5110, "c"}, {0x5140, "l"}, {0x5180, "skeleton"}, {0x5120, "m"}, {0x5130, "d"}};
    ASSERT_EQ(scene->getNumChildren(), 5);
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_EQ(std::make_pair(scene->getChild(i)->getType(), scene->getChild(i)->getName()), children[i]);
    }
    EXPECT_EQ(scene->getType(), 0x5000);
    EXPECT_EQ(scene->getChild(4)->getChild(0)->getName(), "below");
    EXPECT_EQ(scene->getScale().getValue(0).x, 1.0f); // read where given, but never written for a scene

    // Neither the scene's tracks nor the armature survive.
    Manager again;
    load(&again, write(manager));
    EXPECT_EQ(again.getScene("scene")->getScale().getValue(0).x, 0.0f);
    ASSERT_EQ(again.getScene("scene")->getNumChildren(), 4);
    EXPECT_EQ(again.getScene("scene")->getChild(2)->getType(), CHUNK_MESHINSTANCE);
}

TEST(SceneNode, startsAtItsDefaults)
{
    const Camera camera;
    EXPECT_EQ(camera.getFov().getValue(1), 1.5707964f);
    EXPECT_EQ(camera.getScale().getValue(1).x, 0.0f);
    EXPECT_EQ(camera.getRotation().getValue(1).w, 1.0f);
    const Light light;
    const Color4f color = light.getLightColor().getValue(1);
    EXPECT_TRUE(color.r == 1 && color.g == 1 && color.b == 1 && color.a == 1);
    EXPECT_EQ(light.getDistance().getValue(1), 0.0f);
}

TEST(SceneNode, isStaticUntilAnyCurveOfItsTransformMoves)
{
    const TrackBlenderFloat::Key key = {};
    Dummy node;
    TrackBlenderFloat* curves[] = {&node.mPosition.mX, &node.mPosition.mY, &node.mPosition.mZ, &node.mRotation.mW,
                                   &node.mRotation.mX, &node.mRotation.mY, &node.mRotation.mZ, &node.mScale.mX,
                                   &node.mScale.mY,    &node.mScale.mZ};
    for (TrackBlenderFloat* curve : curves) curve->mKeys.push_back(key);
    EXPECT_TRUE(node.isStatic());
    for (TrackBlenderFloat* curve : curves)
    {
        curve->mKeys.push_back(key);
        EXPECT_FALSE(node.isStatic());
        curve->mKeys.pop_back();
        curve->mExtrapolation = TrackBlenderFloat::EXTRAPOLATION_LINEAR;
        EXPECT_FALSE(node.isStatic());
        curve->mExtrapolation = TrackBlenderFloat::EXTRAPOLATION_CONSTANT;
    }
    EXPECT_TRUE(node.isStatic());
    node.mRotation.mEuler = true; // has no use for a fourth curve
    node.mRotation.mW.mKeys.push_back(key);
    EXPECT_TRUE(node.isStatic());

    Camera camera;
    camera.mFov.mCurve.mKeys.assign(2, key);
    EXPECT_TRUE(camera.isStatic());
}

TEST(SceneNode, goesHoweverDeepItIsButIsNotWrittenTooDeep)
{
    Manager manager;
    SceneNode* node = new Scene;
    manager.mScenes.push_back(static_cast<Scene*>(node));
    for (int level = 0; level < 100000; ++level)
    {
        SceneNode* child = new Dummy;
        child->mName = "level " + std::to_string(level);
        node->addChild(child);
        node = child;
    }
    unsigned char* data = nullptr;
    int size = 1;
    EXPECT_THROW(manager.write(&data, &size), Exception);
    EXPECT_TRUE(data == nullptr && size == 0);
}

TEST(MeshInstance, takesTheLastMaterialForASubmesh)
{
    Manager manager;
    const std::string references =
        chunk(CHUNK_MATERIAL_REFERENCE, integer(3) + text("first")) + chunk(CHUNK_MATERIAL_REFERENCE, "abc") +
        chunk(CHUNK_MATERIAL_REFERENCE, integer(3) + "last") + chunk(CHUNK_MATERIAL_REFERENCE, integer(0));
    EXPECT_EQ(load(&manager, file(chunk(CHUNK_SCENE, chunk(CHUNK_MESHINSTANCE, references)))), "");
    const MeshInstance* instance = static_cast<const MeshInstance*>(manager.getSceneAt(0)->getChild(0));
    EXPECT_EQ(instance->getMaterialReference(3), "last");
    EXPECT_EQ(instance->getMaterialReference(0), "");
    EXPECT_EQ(instance->getMaterialReference(-1), "");
    EXPECT_EQ(instance->mMaterialReferences.size(), 2u);
}

TEST(Armature, keepsItsBonesInOrder)
{
    Manager manager;
    load(&manager, file(chunk(CHUNK_SCENE, armature() + named(CHUNK_ARMATURE, "bare"))));
    const Armature::Bone& root = static_cast<const Armature*>(manager.getSceneAt(0)->getChild(0))->mBoneRoot;
    EXPECT_EQ(root.mName, "spine");
    ASSERT_EQ(root.mChildren.size(), 2u);
    EXPECT_EQ(root.mChildren[0]->mName, "left");
    EXPECT_EQ(root.mChildren[0]->mChildren[0]->mName, "hand");
    EXPECT_EQ(root.mChildren[1]->mName, "right");
    EXPECT_EQ(root.mRotation.getValue(0).x, 1.0f);
    EXPECT_EQ(root.mChildren[0]->mRotation.getValue(0).x, 1.0f);
    EXPECT_EQ(root.mChildren[1]->mRotation.getValue(0).w, 1.0f);

    const Armature::Bone& bare = static_cast<const Armature*>(manager.getSceneAt(0)->getChild(1))->mBoneRoot;
    EXPECT_EQ(bare.mName, "");
    EXPECT_TRUE(bare.mChildren.empty());
}

TEST(Material, hasDefaultsAndBooleansOfOneByte)
{
    const std::string two = "\2";
    Manager manager;
    load(&manager,
         file(named(CHUNK_MATERIAL, "bare") +
              named(CHUNK_MATERIAL, "two",
                    chunk(CHUNK_MATERIAL_SHADELESS, two) + chunk(CHUNK_MATERIAL_FLAG, two) +
                        named(CHUNK_MATERIAL_ATTRIBUTE, "a", chunk(CHUNK_TEXTURE, "") + named(CHUNK_TEXTURE, "t")))));
    const Material* bare = manager.getMaterial("bare");
    EXPECT_FALSE(bare->isShadeless());
    EXPECT_TRUE(bare->mDefaultOnFlag);
    EXPECT_EQ(bare->getNumAttributes(), 0);
    const Material* material = manager.getMaterial("two");
    EXPECT_FALSE(material->isShadeless());
    EXPECT_FALSE(material->mDefaultOnFlag);
    ASSERT_EQ(material->getAttribute(0)->getNumTextures(), 2);
    EXPECT_EQ(material->getAttribute(0)->getTexture(0)->mValue, 0);
    EXPECT_EQ(material->getAttribute(0)->getTexture(1)->getName(), "t");
}
