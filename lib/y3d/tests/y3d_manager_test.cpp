#include "y3d_testing.h"

#include "y3d_camera.h"
#include "y3d_dummy.h"
#include "y3d_exception.h"
#include "y3d_image.h"
#include "y3d_light.h"
#include "y3d_material.h"
#include "y3d_mesh.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"
#include "y3d_submesh.h"
#include "y3d_texture.h"

using namespace y3d;

namespace
{

template <class T, class Object> void expectClearedAsNew(Object* object)
{
    ChunkLib::WriteBuffer cleared("Y3DF", 0, 4, 0), fresh("Y3DF", 0, 4, 0);
    object->clear();
    object->writeChunk(cleared);
    T().writeChunk(fresh);
    EXPECT_EQ(cleared.getData(), fresh.getData());
}

} // namespace

TEST(Manager, writesWhatItRead)
{
    Manager manager;
    EXPECT_EQ(load(&manager, corpus("everything.y3d")), "    bonegroup::arm\n");
    EXPECT_EQ(write(manager), corpus("everything.y3d"));

    Manager triangle;
    EXPECT_EQ(load(&triangle, corpus("triangle.y3d")), "");
    EXPECT_EQ(write(triangle), corpus("triangle.y3d"));
    const Submesh* submesh = triangle.getMesh("tri")->getSubmesh(0);
    EXPECT_EQ(submesh->getPositions()->at(2).y, 1.0f);
    EXPECT_EQ(submesh->getNormals()->at(2).z, 1.0f);
    EXPECT_EQ(submesh->getUVW(0)->at(1).x, 1.0f);
    EXPECT_EQ(submesh->getBoundingBox().mMax.y, 1.0f);
    EXPECT_EQ(submesh->getMaterialName(), "mat");
    EXPECT_EQ(triangle.getMaterial("mat")->getAttribute(0)->getTexture(0)->getImageName(), "img");
    EXPECT_EQ(triangle.getImage("img")->getFileName(), "a.png");
    EXPECT_EQ(triangle.getScene("Scene")->getChild(0)->getScale().getValue(5).z, 1.0f);
}

TEST(Manager, clearsObjectsAsIfTheyWereNew)
{
    Manager manager;
    load(&manager, corpus("everything.y3d"));
    Scene* scene = manager.mScenes[0];
    SceneNode* dummy = scene->mChildren[2];
    TrackColor4f& color = static_cast<Light*>(scene->mChildren[3])->mLightColor;
    for (TrackBlenderFloat* curve : {&dummy->mPosition.mX, &dummy->mPosition.mZ, &dummy->mRotation.mW,
                                     &dummy->mRotation.mY, &dummy->mRotation.mZ, &color.mG, &color.mB})
    {
        curve->mKeys.resize(1); // which the others have in the file
    }
    expectClearedAsNew<MeshInstance>(scene->mChildren[0]);
    expectClearedAsNew<Camera>(scene->mChildren[1]);
    expectClearedAsNew<Dummy>(dummy);
    expectClearedAsNew<Light>(scene->mChildren[3]);
    expectClearedAsNew<Scene>(scene);
    manager.mMeshes[0]->mSubmeshes[0]->mMaterialName.clear(); // which else stays
    expectClearedAsNew<Submesh>(manager.mMeshes[0]->mSubmeshes[0]);
    expectClearedAsNew<Mesh>(manager.mMeshes[0]);
    expectClearedAsNew<Material>(manager.mMaterials[0]);
    expectClearedAsNew<Image>(manager.mImages[0]);
}

TEST(Manager, refusesWhatIsNoFileOfItsVersion)
{
    const struct
    {
        const char* name;
        std::string bytes;
        const char* what;
    } cases[] = {
        {"one byte short of a header", std::string("Y3DF\0", 5),
         "Manager-file is of wrong version (0:0 of format void)"},
        {"older", std::string("Y3DF\0\3", 6), "Manager-file is of wrong version (0:3 of format Y3DF)"},
        {"other major version and tag", std::string("Y3DG\1\4", 6),
         "Manager-file is of wrong version (1:4 of format Y3DG)"},
        {"only a header", std::string("Y3DF\0\4", 6),
         "There can only be a main-chunk as the top of the hiarchy! Found 0x0"},
        {"a mesh first", std::string("Y3DF\0\4", 6) + named(CHUNK_MESH, "a") + chunk(CHUNK_MAIN, ""),
         "There can only be a main-chunk as the top of the hiarchy! Found 0x2000"},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.name);
        Manager manager;
        try
        {
            load(&manager, test.bytes);
            ADD_FAILURE() << "loaded";
        }
        catch (const Exception& exception)
        {
            EXPECT_STREQ(exception.what(), test.what);
        }
    }
    Manager manager;
    EXPECT_THROW(manager.load(nullptr, -1), Exception);
}

TEST(Manager, findsObjectsByName)
{
    Manager manager;
    load(&manager, file(""));
    EXPECT_EQ(manager.getScene(""), nullptr);
    EXPECT_EQ(manager.getMesh(""), nullptr);

    // Interleaved in any order; a name that comes twice means the later mesh, but the earlier scene.
    load(&manager,
         file(named(CHUNK_SCENE, "s") + named(CHUNK_MESH, "a") + named(CHUNK_IMAGE, "i") + named(CHUNK_MATERIAL, "m") +
              named(CHUNK_MESH, "b") + named(CHUNK_MESH, "a") + named(CHUNK_SCENE, "s")) +
             "bytes behind the main chunk");
    const Manager& constant = manager;
    EXPECT_EQ(manager.getMeshIndex("a"), 2);
    EXPECT_EQ(manager.getMesh("a"), manager.mMeshes[2]);
    EXPECT_EQ(constant.getMesh("b"), manager.mMeshes[1]);
    EXPECT_EQ(manager.getScene("s"), manager.getSceneAt(0));
    EXPECT_EQ(constant.getScene("s"), manager.getSceneAt(0));
    EXPECT_EQ(constant.getMaterial("m"), manager.getMaterialAt(0));
    EXPECT_EQ(constant.getImage("i"), manager.mImages[0]);
    EXPECT_EQ(manager.getMaterialIndex("M"), -1);
    EXPECT_EQ(manager.getImageIndex("a"), -1);
    EXPECT_EQ(manager.mMeshes.size(), 3u);

    // A second load adds.
    load(&manager, file(named(CHUNK_MESH, "c")));
    EXPECT_EQ(manager.getMeshIndex("c"), 3);
    EXPECT_EQ(manager.getNumScenes(), 2);

    manager.clear();
    EXPECT_EQ(manager.getMesh("a"), nullptr);
    EXPECT_EQ(manager.getNumMaterials(), 0);
    EXPECT_EQ(write(manager).size(), 6u); // nothing in it, not even a main chunk
}

TEST(Manager, tellsWhatItDoesNotKnowAndSkipsIt)
{
    const std::string odd = chunk(0x1230, "?") + chunk(0x1236, floats({1, 2, 3}));
    const struct
    {
        std::string children;
        const char* printed;
    } cases[] = {
        {odd, "Unknown chunk with ID=0x1230\nUnknown chunk with ID=0x1236\n"},
        {chunk(CHUNK_MESH, odd), "mesh::Unknown chunk with ID=0x1230\nmesh::Unknown chunk with ID=0x1236\n"},
        {chunk(CHUNK_MESH, chunk(CHUNK_SUBMESH, chunk(0xFF40, "?"))), "Unknown chunk with ID=0xFF40\n"},
        {chunk(CHUNK_MESH, chunk(CHUNK_SUBMESH, named(CHUNK_BONEGROUP, "b", chunk(0xFF40, "?")))),
         "    bonegroup::b\nUnknown chunk with ID=0xFF40\n"},
        {chunk(CHUNK_IMAGE, chunk(0xFF40, "?")), "Unknown chunk with ID=0xFF40\n"},
        {chunk(CHUNK_MATERIAL, chunk(0xFF40, "?")), "Unknown chunk with ID=0xFF40\n"},
        {chunk(CHUNK_MATERIAL,
               chunk(CHUNK_MATERIAL_ATTRIBUTE, chunk(CHUNK_TEXTURE, chunk(0xFF40, "?")) + chunk(0xFF50, ""))),
         "Unknown chunk with ID=0xFF40\nUnknown chunk with ID=0xFF50\n"},
        {chunk(CHUNK_SCENE, chunk(0xFF40, "?")), "scene::loadchunkitem 0xFF40\n"},
        {chunk(CHUNK_SCENE, chunk(CHUNK_CAMERA, chunk(0xFF40, "?"))), "camera::loadchunkitem::unknown 0xFF40\n"},
        {chunk(CHUNK_SCENE, chunk(CHUNK_MESHINSTANCE, chunk(0xFF40, "?"))),
         "meshinstance::loadchunkitem::unknown 0xFF40\n"},
        {chunk(CHUNK_SCENE, chunk(CHUNK_LIGHT, chunk(0xFF40, "?"))), "light::loadchunkitem::unknown 0xFF40\n"},
        {chunk(CHUNK_SCENE, chunk(CHUNK_DUMMY, chunk(0xFF40, "?"))), ""},
        {chunk(CHUNK_SCENE, chunk(CHUNK_ARMATURE, chunk(0xFF40, "?"))), "armature::loadchunkitem::unknown 0xFF40\n"},
        {chunk(CHUNK_SCENE, chunk(CHUNK_ARMATURE, chunk(CHUNK_BONE, chunk(0xFF40, "?")))), "  rootbone\n"},
        {chunk(CHUNK_SCENE, armature()), "  rootbone\n  got rotation for bone\n  got rotation for bone\n"},
        {chunk(CHUNK_SCENE, chunk(CHUNK_DUMMY, chunk(CHUNK_TRACK_POSITION, chunk(0xFF40, "?")))), ""},
    };
    for (const auto& test : cases)
    {
        Manager manager;
        EXPECT_EQ(load(&manager, file(test.children + named(CHUNK_MESH, "behind"))), test.printed);
        EXPECT_NE(manager.getMesh("behind"), nullptr) << test.printed;
    }
}

TEST(Manager, keepsTheTopOfATreeThatIsTooDeep)
{
    for (const unsigned int id : {CHUNK_DUMMY, CHUNK_BONE})
    {
        // 100,000 chunks, each the only child of the one before.
        std::string heads;
        for (int below = 99999; below >= 0; --below) heads += bytesOf(&id, 2) + integer(6 * below);
        const std::string tree = id == CHUNK_BONE ? chunk(CHUNK_ARMATURE, heads) : heads;

        Manager manager;
        const std::string printed = load(&manager, file(chunk(CHUNK_SCENE, tree) + named(CHUNK_MESH, "behind")));
        EXPECT_NE(printed.find("lies more than 998 levels deep and is left out\n"), std::string::npos) << printed;
        EXPECT_NE(manager.getMesh("behind"), nullptr);
        if (id == CHUNK_BONE) continue;

        int levels = 0;
        for (const SceneNode* node = manager.getSceneAt(0); node;
             node = node->getNumChildren() ? node->getChild(0) : nullptr)
        {
            ++levels;
        }
        EXPECT_EQ(levels, 997); // with the main chunk 998
        Manager again;
        EXPECT_EQ(load(&again, write(manager)), "");
        EXPECT_EQ(write(again), write(manager));
    }
}
