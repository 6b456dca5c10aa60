#include "y3d_testing.h"

#include "y3d_exception.h"
#include "y3d_image.h"
#include "y3d_material.h"
#include "y3d_mesh.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"
#include "y3d_submesh.h"
#include "y3d_texture.h"

using namespace y3d;

namespace
{

// One textured triangle in a scene: mesh, material, image, scene. Sizes and identifiers by hand.
std::string triangleFile()
{
    const std::string unit = floats({0, 0, 0, 1, 0, 0, 0, 1, 0});
    const std::string box = std::string("\x20\xF0\x18\0\0\0", 6) + floats({0, 0, 0, 1, 1, 0});
    return std::string("Y3DF\0\4\x00\x10\xCD\x01\0\0", 12) +
           std::string("\x00\x20\xE6\0\0\0\x10\xF0\4\0\0\0tri\0", 16) + box +
           std::string("\x00\x22\xB8\0\0\0\x50\xF0\4\0\0\0mat\0", 16) + box +
           std::string("\x30\xFF\x0C\0\0\0\0\0\0\0\1\0\0\0\2\0\0\0", 18) +              //
           std::string("\x00\xFF\x24\0\0\0", 6) + unit +                                // positions
           std::string("\x50\xFF\x24\0\0\0", 6) + floats({0, 0, 1, 0, 0, 1, 0, 0, 1}) + // normals
           std::string("\x10\xFF\x24\0\0\0", 6) + unit +                                // texture coordinates
           std::string("\x00\x60\x53\0\0\0\x10\xF0\4\0\0\0mat\0\x01\x61\0\x11\x61\1", 22) +
           std::string("\x00\x61\x3D\0\0\0\x10\xF0\x08\0\0\0diffuse\0\x07\xF0", 22) + floats({1, 1, 1, 1}) +
           std::string("\x00\x70\x17\0\0\0\x10\xF0\4\0\0\0tex\0\x30\xF0\4\0\0\0img\0\x01\x70\0", 29) +
           std::string("\x00\x40\x16\0\0\0\x10\xF0\4\0\0\0img\0\x20\xF0\6\0\0\0a.png\0", 28) +
           std::string("\x00\x50\x66\0\0\0\x10\xF0\6\0\0\0Scene\0", 18) +
           std::string("\x20\x51\x54\0\0\0\x40\xF0\4\0\0\0tri\0\x10\xF0\4\0\0\0obj\0", 26) +
           std::string("\x00\xFA\x0E\0\0\0\x06\xF0", 8) + floats({0, 0, 0}) +
           std::string("\x10\xFA\x12\0\0\0\x07\xF0", 8) + floats({1, 0, 0, 0}) +
           std::string("\x20\xFA\x0E\0\0\0\x06\xF0", 8) + floats({1, 1, 1});
}

void fillWithTriangle(Manager* manager)
{
    const MathBase::AABBpointsf box(MathBase::Vector3f(0, 0, 0), MathBase::Vector3f(1, 1, 0));
    const MathBase::Vector3f x(1, 0, 0), y(0, 1, 0), z(0, 0, 1), origin;

    Submesh* submesh = new Submesh;
    submesh->mMaterialName = "mat";
    submesh->mHasBoundingBox = true;
    submesh->mBoundingBox = box;
    submesh->mIndices = new StructList<Index>{0, 1, 2};
    submesh->setPositions(new StructList<MathBase::Vector3f>{origin, x, y});
    submesh->setNormals(new StructList<MathBase::Vector3f>{z, z, z});
    submesh->mUVWs.push_back(new UVWList{origin, x, y});
    Mesh* mesh = new Mesh;
    mesh->mName = "tri";
    mesh->mHasBoundingBox = true;
    mesh->mBoundingBox = box;
    mesh->mSubmeshes.push_back(submesh);
    manager->mMeshes.push_back(mesh);

    Texture* texture = new Texture;
    texture->mName = "tex";
    texture->mImageName = "img";
    Material::Attribute* attribute = new Material::Attribute;
    attribute->mName = "diffuse";
    attribute->mColor = Color4f(1, 1, 1, 1);
    attribute->mTextures.push_back(texture);
    Material* material = new Material;
    material->mName = "mat";
    material->mAttributes.push_back(attribute);
    manager->mMaterials.push_back(material);

    Image* image = new Image;
    image->mName = "img";
    image->mFileName = "a.png";
    manager->mImages.push_back(image);

    MeshInstance* instance = new MeshInstance;
    instance->mName = "obj";
    instance->mMeshName = "tri";
    instance->mScale.mX.mBaseValue = instance->mScale.mY.mBaseValue = instance->mScale.mZ.mBaseValue = 1;
    Scene* scene = new Scene;
    scene->mName = "Scene";
    scene->addChild(instance);
    manager->mScenes.push_back(scene);
}

} // namespace

TEST(Manager, writesObjectsExactlyAndReadsThemBack)
{
    Manager made;
    fillWithTriangle(&made);
    const std::string bytes = write(made);
    EXPECT_EQ(bytes.size(), 473u);
    EXPECT_EQ(bytes, triangleFile());

    Manager read;
    EXPECT_EQ(load(&read, bytes), "");
    EXPECT_EQ(write(read), bytes);
    EXPECT_EQ(read.getMesh("tri")->getSubmesh(0)->getPositions()->at(2).y, 1.0f);
    EXPECT_EQ(read.getMaterial("mat")->getAttribute(0)->getTexture(0)->getImageName(), "img");
    EXPECT_EQ(read.getImage("img")->getFileName(), "a.png");
    EXPECT_EQ(read.getScene("Scene")->getChild(0)->getScale().getValue(5).z, 1.0f);
}

TEST(Manager, refusesWhatIsNoFileOfItsVersion)
{
    const struct
    {
        const char* name;
        std::string bytes;
        const char* what;
    } cases[] = {
        {"nothing", "", "Manager-file is of wrong version (0:0 of format void)"},
        {"one byte short of a header", std::string("Y3DF\0", 5),
         "Manager-file is of wrong version (0:0 of format void)"},
        {"older", std::string("Y3DF\0\3", 6), "Manager-file is of wrong version (0:3 of format Y3DF)"},
        {"newer", std::string("Y3DF\0\5", 6), "Manager-file is of wrong version (0:5 of format Y3DF)"},
        {"other major version", std::string("Y3DF\1\4", 6), "Manager-file is of wrong version (1:4 of format Y3DF)"},
        {"other tag", std::string("Y3DG\0\4", 6), "Manager-file is of wrong version (0:4 of format Y3DG)"},
        {"only a header", std::string("Y3DF\0\4", 6),
         "There can only be a main-chunk as the top of the hiarchy! Found 0x0"},
        {"half an identifier", std::string("Y3DF\0\4\0", 7),
         "There can only be a main-chunk as the top of the hiarchy! Found 0x0"},
        {"no length", std::string("Y3DF\0\4\0\x10\1\0\0", 11),
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

TEST(Manager, writesWhatItRead)
{
    const std::string bytes = fileOfEverything();
    Manager manager;
    EXPECT_EQ(load(&manager, bytes), "    bonegroup::arm\n");
    EXPECT_EQ(write(manager), bytes);
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
