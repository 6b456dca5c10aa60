#include "y3d_testing.h"

#include "y3d_armature.h"
#include "y3d_exception.h"
#include "y3d_light.h"
#include "y3d_mesh.h"
#include "y3d_scene.h"
#include "y3d_submesh.h"
#include "ytd_utils.h"

// Files that are cut off or wrong in any one byte, each in a block of its exact size. Whatever was read must be of use:
// its tracks have values, its meshes give blocks or an exception, and it can be written and read again.

using namespace y3d;

namespace
{

void use(const SceneNode& node)
{
    node.getPosition().getValue(1.5f);
    node.getScale().getValue(-1.5f);
    const MathBase::Quatf rotation = node.getRotation().getValue(0.5f);
    EXPECT_NEAR(rotation.length(), 1.0f, 1e-5f);
    for (const SceneNode* child : node.mChildren) use(*child);
}

void use(Submesh* submesh)
{
    const unsigned int format = ytd::Utils::getFormat(submesh) & 7;
    std::vector<unsigned char> block(ytd::Utils::getVertexBufferSize(submesh, format, submesh->getIndices()));
    try
    {
        ytd::Utils::compileVertexBuffer(block.data(), submesh, format, submesh->getIndices(), 0);
    }
    catch (const Exception&)
    {
    }
    block.assign(ytd::Utils::getIndexBufferSize(submesh, 16) + 1, 0);
    ytd::Utils::compileIndexBuffer(block.data(), submesh, 16, 0, 0);
}

void tryFile(const std::string& bytes)
{
    Manager manager;
    try
    {
        loadBlock(&manager, bytes);
    }
    catch (const Exception&)
    {
        return;
    }
    for (const Scene* scene : manager.mScenes) use(*scene);
    for (const Mesh* mesh : manager.mMeshes)
    {
        for (Submesh* submesh : mesh->mSubmeshes) use(submesh);
    }

    const std::string written = write(manager);
    if (written.size() == 6) return; // nothing was left
    Manager again;
    loadBlock(&again, written);
    EXPECT_EQ(write(again).size(), written.size());
}

} // namespace

TEST(Damage, isSurvivedAtEveryByte)
{
    testing::internal::CaptureStdout(); // unknown chunks and keys out of order give lines
    const std::string skeleton = file(chunk(CHUNK_SCENE, armature()));
    for (const std::string& good : {corpus("everything.y3d"), skeleton})
    {
        for (std::size_t i = 0; i < good.size(); ++i)
        {
            SCOPED_TRACE(i);
            tryFile(good.substr(0, i));
            for (const char change : {'\x01', '\x10', '\x80', '\xFF'})
            {
                std::string bad = good;
                bad[i] ^= change;
                tryFile(bad);
            }
            std::string bad = good;
            bad[i] = 0;
            tryFile(bad);
        }
    }
    testing::internal::GetCapturedStdout();
}

TEST(Damage, ofALengthIsHeldWithinTheParent)
{
    // A list of 13 bytes that claims 4 GB, in a submesh that does so too, in a mesh of 25 bytes.
    const std::string list = std::string("\x00\xFF\xFF\xFF\xFF\xFF", 6) + floats({1, 2, 3}) + "!";
    const std::string mesh = named(CHUNK_MESH, "m", std::string("\x00\x22\xF0\xFF\xFF\xFF", 6) + list);
    Manager manager;
    load(&manager, std::string("Y3DF\0\4\0\x10\xFF\xFF\xFF\xFF", 12) + mesh + named(CHUNK_IMAGE, "behind"));
    EXPECT_NE(manager.getImage("behind"), nullptr);
    EXPECT_EQ(manager.getMesh("m")->getSubmesh(0)->getNumVertices(), 1);
}

TEST(Damage, costsNoMoreMemoryAndLinesThanAFileOfItsLengthMay)
{
    const auto repeated = [](int count, const std::string& part) {
        std::string all;
        for (int i = 0; i < count; ++i) all += part;
        return all;
    };
    const std::string nodes = repeated(50000, chunk(CHUNK_LIGHT, ""));
    const std::string bones = chunk(CHUNK_ARMATURE, chunk(CHUNK_BONE, repeated(50000, chunk(CHUNK_BONE, ""))));
    const std::string scenes = repeated(50000, chunk(CHUNK_SCENE, ""));
    const std::string names = repeated(20000, chunk(CHUNK_NAME, text("longer and longer")));
    const std::string groups = chunk(CHUNK_MESH, chunk(CHUNK_SUBMESH, chunk(CHUNK_BONEGROUP, names)));
    for (const std::string& wild : {chunk(CHUNK_SCENE, nodes), chunk(CHUNK_SCENE, bones), scenes, groups})
    {
        Manager manager;
        const std::string bytes = file(wild + named(CHUNK_MESH, "behind"));
        const std::string printed = load(&manager, bytes);
        EXPECT_LT(printed.size(), 70000 + 2 * bytes.size());
        EXPECT_NE(manager.getMesh("behind"), nullptr);
        std::size_t size = manager.mScenes.size() * sizeof(Scene);
        if (!manager.mScenes.empty())
        {
            for (const SceneNode* node : manager.mScenes[0]->mChildren)
            {
                const Armature* armature = dynamic_cast<const Armature*>(node);
                size += armature ? armature->mBoneRoot.mChildren.size() * sizeof(Armature::Bone) : sizeof(Light);
            }
        }
        EXPECT_LT(size, (1 << 20) + 36 * bytes.size());
    }

    Manager manager;
    EXPECT_EQ(load(&manager, file(chunk(CHUNK_SCENE, repeated(5000, named(CHUNK_LIGHT, "", restingTracks()))))), "");
    EXPECT_EQ(manager.mScenes[0]->getNumChildren(), 5000);
}
