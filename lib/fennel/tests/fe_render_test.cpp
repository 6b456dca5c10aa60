#include "fe_glfake.h"
#include "fe_material.h"
#include "fe_mesh.h"
#include "fe_rendermanager.h"
#include "fe_scenes.h"
#include "fe_submeshmanager.h"
#include "fe_texturemanager.h"

#include <gtest/gtest.h>

using Fennel::RenderManager;
using Fennel::Submesh;
using GLFake::call;
using GLFake::gl;

namespace
{

// Buffers of a source with this many vertices, used in turn by this many indices.
struct Made
{
    Made(unsigned numVertices, unsigned numIndices)
    {
        std::vector<Vector3f> positions;
        for (unsigned i = 0; i < numVertices; ++i) positions.push_back(Vector3f(static_cast<float>(i), 0, 0));
        std::vector<unsigned> indices;
        for (unsigned i = 0; i < numIndices; ++i) indices.push_back(i % numVertices);
        y3d::Mesh mesh;
        submesh.mSource = addSubmesh(&mesh, positions, indices, "");
        manager.addSubmeshJob(&submesh, nullptr, nullptr);
    }

    Fennel::SubmeshManager manager;
    Submesh submesh;
};

std::vector<std::string> callsOf(const Submesh& submesh, const Submesh* previous)
{
    gl.calls.clear();
    submesh.render(previous);
    return gl.calls;
}

const MathBase::Matrix4x4Col identity;

} // namespace

TEST(SubmeshBuffers, theNarrowestIndexIsTakenAndNoneWhereTrianglesShareTooLittle)
{
    GLFake::reset();
    const struct
    {
        unsigned vertices, indices;
        GLenum type; // 0 without an index buffer
        std::size_t bytes;
    } cases[] = {
        {255, 600, GL_UNSIGNED_BYTE, 600},      {256, 600, GL_UNSIGNED_SHORT, 1200},
        {65535, 90000, GL_UNSIGNED_SHORT, 180000}, {65536, 90000, GL_UNSIGNED_INT, 360000},
        {100, 108, GL_UNSIGNED_BYTE, 108},      {101, 108, 0, 0},
        {6, 6, 0, 0},                           {9, 3, 0, 0},
    };
    for (const auto& one : cases)
    {
        const Made made(one.vertices, one.indices);
        SCOPED_TRACE(one.vertices);
        EXPECT_TRUE(made.submesh.mInited);
        EXPECT_EQ(made.submesh.mSource, nullptr);
        EXPECT_EQ(made.submesh.mNumVertices, one.type ? one.vertices : one.indices);
        EXPECT_EQ(gl.buffers[made.submesh.mVertexBuffer->ID].size(), 12u * made.submesh.mNumVertices);
        ASSERT_EQ(made.submesh.mIndexBuffer != nullptr, one.type != 0);
        if (!one.type) continue;
        EXPECT_EQ(made.submesh.mIndexBuffer->format, one.type);
        EXPECT_EQ(gl.buffers[made.submesh.mIndexBuffer->ID].size(), one.bytes);
    }
    EXPECT_TRUE(gl.buffers.empty()) << "they go with their submeshes";
}

TEST(SubmeshBuffers, holdTextureCoordinatesNormalAndPositionOfEachVertex)
{
    GLFake::reset();
    y3d::Mesh mesh;
    y3d::Submesh* source = addSubmesh(&mesh, quadAt(5), {0, 1, 2, 0, 2, 3}, "");
    addNormalsAndCoordinates(source, Vector3f(0, 0, 1));
    Submesh submesh;
    submesh.mSource = source;
    Fennel::SubmeshManager().addSubmeshJob(&submesh, nullptr, nullptr);

    const float vertex1[] = {1, -1, 0, 0, 1, 1, -1, 5};
    const std::vector<unsigned char>& bytes = gl.buffers[submesh.mVertexBuffer->ID];
    ASSERT_EQ(bytes.size(), 4u * sizeof(vertex1));
    EXPECT_EQ(std::memcmp(bytes.data() + sizeof(vertex1), vertex1, sizeof(vertex1)), 0);
    EXPECT_EQ(gl.buffers[submesh.mIndexBuffer->ID], (std::vector<unsigned char>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(submesh.mVertexBuffer->format, GLenum(GL_T2F_N3F_V3F));
    EXPECT_EQ(gl.bound[GL_ARRAY_BUFFER_ARB], 0u);
}

TEST(SubmeshBuffers, areBoundOnlyWhereTheyDifferFromThePreviousOnes)
{
    GLFake::reset();
    const Made indexed(4, 6);
    const Made plain(3, 3);
    const GLuint vertices = indexed.submesh.mVertexBuffer->ID;
    const GLuint indices = indexed.submesh.mIndexBuffer->ID;
    const std::string draw = call("glDrawRangeElements", GL_TRIANGLES, 0, 4, 6, GL_UNSIGNED_BYTE, 0);

    EXPECT_EQ(callsOf(indexed.submesh, nullptr),
              (std::vector<std::string>{call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, vertices),
                                        call("glInterleavedArrays", GL_V3F, 0),
                                        call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, indices), draw}));
    EXPECT_EQ(callsOf(indexed.submesh, &indexed.submesh), std::vector<std::string>{draw});
    EXPECT_EQ(callsOf(plain.submesh, &indexed.submesh),
              (std::vector<std::string>{call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, plain.submesh.mVertexBuffer->ID),
                                        call("glInterleavedArrays", GL_V3F, 0),
                                        call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0),
                                        call("glDrawArrays", GL_TRIANGLES, 0, 3)}));
}

TEST(RenderJobs, groupBySubmeshAndThenByTexture)
{
    GLFake::reset();
    const Made one(4, 6);
    const Made other(4, 6);
    Fennel::TextureManager textures;
    {
        Fennel::Material plain, textured;
        Fennel::TextureFormat format;
        format.type = Fennel::TextureFormat::TEXTURE2D;
        textured.mTexture = textures.loadTexture("t", makeImage(1, 1, {}), format);

        RenderManager manager;
        manager.sort();
        for (int i = 0; i < 60; ++i)
        {
            manager.add(&one.submesh, i % 2 ? &plain : &textured, identity, 0);
            manager.add(&other.submesh, i % 3 ? &textured : &plain, identity, 0);
        }
        manager.sort();
        int submeshChanges = 0, materialChanges = 0;
        for (int i = 1; i < 120; ++i)
        {
            submeshChanges += manager.mJobs[i].submesh != manager.mJobs[i - 1].submesh;
            materialChanges += manager.mJobs[i].material != manager.mJobs[i - 1].material;
        }
        EXPECT_EQ(submeshChanges, 1);
        EXPECT_EQ(materialChanges, 3);
        EXPECT_EQ(manager.mJobs.front().material, &plain) << "without a texture comes first";

        gl.calls.clear();
        manager.render();
        EXPECT_EQ(gl.count("glInterleavedArrays"), 2);
        EXPECT_EQ(gl.count("glMaterialf"), 4);
        EXPECT_EQ(gl.count("glLoadMatrixf"), 120);

        const std::size_t room = manager.mJobs.capacity();
        manager.clear();
        EXPECT_EQ(manager.mJobs.capacity(), room);
    }
}

TEST(RenderJobs, turnTheWindingOnlyAroundMirroredOnes)
{
    GLFake::reset();
    const Made made(4, 6);
    const Fennel::Material material;
    RenderManager manager;
    gl.calls.clear();
    for (const unsigned flags : {0u, 1u, 1u, 0u}) manager.add(&made.submesh, &material, identity, flags);
    manager.render();

    const std::vector<std::string> base = {
        call("glColor4f", 1, 1, 1, 1),       call("glDisable", GL_LIGHTING), call("glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 0),
        call("glEnable", GL_CULL_FACE),      call("glFrontFace", GL_CCW),    call("glCullFace", GL_BACK),
        call("glDisable", GL_BLEND),         call("glDisable", GL_TEXTURE_2D)};
    ASSERT_GE(gl.calls.size(), base.size());
    EXPECT_EQ(std::vector<std::string>(gl.calls.begin(), gl.calls.begin() + base.size()), base);

    std::vector<std::string> turns;
    for (const std::string& text : gl.calls)
    {
        if (text.find("glFrontFace") == 0 || text.find("glDraw") == 0) turns.push_back(text);
    }
    const std::string draw = call("glDrawRangeElements", GL_TRIANGLES, 0, 4, 6, GL_UNSIGNED_BYTE, 0);
    EXPECT_EQ(turns, (std::vector<std::string>{call("glFrontFace", GL_CCW), draw, call("glFrontFace", GL_CW), draw,
                                               draw, call("glFrontFace", GL_CCW), draw}));
}

TEST(Materials, takeOverTheFiveAttributesAndLimitTheShininess)
{
    GLFake::reset();
    SceneFile file;
    Fennel::TextureManager textures;
    const struct
    {
        float hardness, shininess;
    } cases[] = {{300, 127}, {254, 127}, {100, 50}, {-1, 0}};
    for (const auto& one : cases)
    {
        y3d::Material* source = file.material("m", 0.1f, 0.2f, 0.3f, true);
        SceneFile::attribute(source, "specular", y3d::Color4f(1, 2, 3, 4));
        SceneFile::attribute(source, "emissive", y3d::Color4f(5, 6, 7, 8));
        SceneFile::attribute(source, "ambient", y3d::Color4f(9, 10, 11, 12));
        SceneFile::attribute(source, "hardness", y3d::Color4f(one.hardness, 0, 0, 0));
        SceneFile::attribute(source, "Diffuse", y3d::Color4f(1, 1, 1, 1)); // another name, no effect
        Fennel::Material material;
        material.load(&file.manager, source, textures, "");
        EXPECT_EQ(material.mShininess, one.shininess);

        gl.calls.clear();
        material.activate(nullptr);
        EXPECT_EQ(gl.calls,
                  (std::vector<std::string>{
                      call("glMaterialfv", GL_FRONT_AND_BACK, GL_DIFFUSE, 0.1f, 0.2f, 0.3f, 1),
                      call("glMaterialfv", GL_FRONT_AND_BACK, GL_AMBIENT, 9, 10, 11, 12),
                      call("glMaterialfv", GL_FRONT_AND_BACK, GL_SPECULAR, 1, 2, 3, 4),
                      call("glMaterialfv", GL_FRONT_AND_BACK, GL_EMISSION, 5, 6, 7, 8),
                      call("glMaterialf", GL_FRONT_AND_BACK, GL_SHININESS, one.shininess),
                      call("glDisable", GL_LIGHTING), call("glColor4fv", 0.1f, 0.2f, 0.3f, 1),
                      call("glDisable", GL_TEXTURE_2D)}));
    }
}
