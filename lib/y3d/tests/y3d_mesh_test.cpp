#include "y3d_testing.h"

#include "y3d_bonegroup.h"
#include "y3d_mesh.h"
#include "y3d_submesh.h"
#include "y3d_value.h"

using namespace y3d;

namespace
{

// The only submesh of a file that holds nothing but it.
const Submesh* loadSubmesh(Manager* manager, const std::string& chunks)
{
    load(manager, file(named(CHUNK_MESH, "mesh", chunk(CHUNK_SUBMESH, chunks))));
    return manager->getMesh("mesh")->getSubmesh(0);
}

} // namespace

TEST(Value, isReadAsItIsWritten)
{
    ChunkLib::WriteBuffer written("Y3DF", 0, 4, 0);
    writeValue(written, std::string("name"));
    writeValue(written, MathBase::Vector2f{1, 2});
    writeValue(written, MathBase::Quatf{3, 4, 5, 6});
    EXPECT_EQ(bytesOf(written.getData().data() + 6, written.getSize() - 6), text("name") + floats({1, 2, 3, 4, 5, 6}));

    ChunkLib::ReadBuffer buffer(written.getData().data(), static_cast<unsigned int>(written.getSize()), 0);
    std::string name;
    MathBase::Vector2f vector;
    MathBase::Quatf rotation;
    loadValue(buffer, &name);
    loadValue(buffer, &vector);
    loadValue(buffer, &rotation);
    EXPECT_EQ(name, "name");
    EXPECT_TRUE(vector.x == 1 && vector.y == 2 && rotation.w == 3 && rotation.z == 6);
}

TEST(Submesh, takesAsManyElementsAsAChunkHoldsWhole)
{
    const std::string vector = floats({1, 2, 3});
    Manager manager;
    const Submesh* submesh = loadSubmesh(
        &manager,
        chunk(CHUNK_POSITIONS, vector + floats({4, 5, 6}) + "!") + chunk(CHUNK_INDICES, integer(7) + "abc") +
            chunk(CHUNK_NORMALS, "abc") + chunk(CHUNK_COLORS, floats({1, 2, 3, 4, 5})) +
            named(CHUNK_BONEGROUP, "g", chunk(CHUNK_BONEGROUP_WEIGHTS, integer(1) + integer(2) + integer(3))));
    ASSERT_EQ(submesh->getNumVertices(), 2);
    EXPECT_EQ((*submesh->getPositions())[1].y, 5.0f);
    ASSERT_EQ(submesh->getNumIndices(), 1);
    EXPECT_EQ((*submesh->getIndices())[0], 7u);
    EXPECT_TRUE(submesh->getNormals()->empty());
    ASSERT_EQ(submesh->getColors(0)->size(), 1u);
    EXPECT_EQ((*submesh->getColors(0))[0].a, 4.0f);
    ASSERT_EQ(submesh->mBoneGroups[0]->mWeights.size(), 1u);
    EXPECT_EQ(submesh->mBoneGroups[0]->mWeights[0].mSecond, 2u);
}

TEST(Submesh, replacesListsAndCollectsChannels)
{
    Manager manager;
    const Submesh* submesh =
        loadSubmesh(&manager, chunk(CHUNK_POSITIONS, floats({1, 2, 3})) + chunk(CHUNK_UVWS, floats({1, 0, 0})) +
                                  chunk(CHUNK_POSITIONS, floats({4, 5, 6})) + chunk(CHUNK_UVWS, floats({2, 0, 0})) +
                                  chunk(CHUNK_MATERIAL_NAME, text("a")) + chunk(CHUNK_MATERIAL_NAME, "b"));
    EXPECT_EQ(submesh->getPositions()->at(0).x, 4.0f);
    ASSERT_EQ(submesh->getNumUVWs(), 2);
    EXPECT_EQ(submesh->getUVW(1)->at(0).x, 2.0f);
    EXPECT_EQ(submesh->getNumIndices(), 0);
    EXPECT_EQ(submesh->getIndices(), nullptr);
    EXPECT_EQ(submesh->getMaterialName(), "ab"); // texts are appended to; the last terminator is missing
}

TEST(Submesh, leavesEmptyListsOutOfAFile)
{
    Manager manager;
    load(&manager,
         file(named(CHUNK_MESH, "mesh",
                    chunk(CHUNK_SUBMESH, chunk(CHUNK_MATERIAL_NAME, text("m")) + chunk(CHUNK_POSITIONS, "") +
                                             chunk(CHUNK_UVWS, "") + chunk(CHUNK_UVWS, floats({1, 2, 3})) +
                                             named(CHUNK_BONEGROUP, "g", chunk(CHUNK_BONEGROUP_WEIGHTS, ""))))));
    EXPECT_EQ(manager.getMesh("mesh")->getSubmesh(0)->getNumUVWs(), 2);
    EXPECT_EQ(write(manager), file(named(CHUNK_MESH, "mesh",
                                         chunk(CHUNK_SUBMESH, chunk(CHUNK_MATERIAL_NAME, text("m")) +
                                                                  chunk(CHUNK_UVWS, floats({1, 2, 3})) +
                                                                  named(CHUNK_BONEGROUP, "g")))));
}

TEST(Submesh, writesLongListsWhole)
{
    std::string indices;
    for (unsigned int i = 0; i < 70000; ++i) indices += integer(i);
    const std::string bytes = file(named(
        CHUNK_MESH, "", chunk(CHUNK_SUBMESH, chunk(CHUNK_MATERIAL_NAME, text("")) + chunk(CHUNK_INDICES, indices))));
    Manager manager;
    load(&manager, bytes);
    EXPECT_TRUE(write(manager) == bytes);
}

TEST(Submesh, ownsTheListsThatAreSet)
{
    Submesh submesh; // leaks and double frees are the sanitizer's to find
    StructList<MathBase::Vector3f>* positions = new StructList<MathBase::Vector3f>(3);
    submesh.setPositions(positions);
    submesh.setPositions(positions);
    EXPECT_EQ(submesh.getNumVertices(), 3);
    submesh.setPositions(new StructList<MathBase::Vector3f>(5));
    EXPECT_EQ(submesh.getNumVertices(), 5);
    submesh.mUVWs.push_back(new UVWList(1));
    submesh.setUVW(0, new UVWList(2));
    submesh.clear();
    EXPECT_EQ(submesh.getNumVertices() + submesh.getNumUVWs(), 0);

    GTEST_FLAG_SET(death_test_style, "threadsafe");
    UVWList uvw;
    EXPECT_DEATH(submesh.setUVW(0, &uvw), "channel<\\(int\\)mUVWs.size\\(\\)");
}

TEST(Mesh, keepsOneByteOfFlagsAndAnyPartOfABox)
{
    Manager manager;
    Mesh* mesh = new Mesh;
    mesh->mMeshFlags = 0x1FF;
    manager.mMeshes.push_back(mesh);
    EXPECT_EQ(write(manager), file(named(CHUNK_MESH, "", chunk(CHUNK_MESH_FLAGS, "\xFF"))));

    load(&manager,
         file(named(CHUNK_MESH, "m", chunk(CHUNK_MESH_FLAGS, "\xFF") + chunk(CHUNK_FILE_OR_BOUNDS, floats({1, 2})))));
    const Mesh* read = manager.getMesh("m");
    EXPECT_EQ(read->mMeshFlags, 255);
    EXPECT_TRUE(read->hasBoundingBox());
    EXPECT_EQ(read->getBoundingBox().mMin.y, 2.0f);
    EXPECT_EQ(read->getBoundingBox().mMax.z, 0.0f);
}
