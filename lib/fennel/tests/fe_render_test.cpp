#include "gl_recorder.h"
#include "fe_material.h"
#include "fe_rendermanager.h"
#include "fe_scenes.h"
#include "fe_submesh.h"
#include "fe_submeshmanager.h"
#include "fe_texturemanager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using Fennel::Submesh;
using GLRecorder::call;
using GLRecorder::gl;
using Calls = std::vector<std::string>;

namespace
{

// The buffers of a source with so many vertices, used in turn by so many indices. x counts the vertices.
struct Made
{
    Made(unsigned numVertices, unsigned numIndices)
    {
        std::vector<Vector3f> positions;
        for (unsigned i = 0; i < numVertices; ++i) positions.push_back(Vector3f(static_cast<float>(i), 7, 8));
        std::vector<unsigned> indices;
        for (unsigned i = 0; i < numIndices; ++i) indices.push_back(i % numVertices);
        y3d::Mesh mesh;
        submesh.mSource = addSubmesh(&mesh, positions, indices, "");
        Fennel::SubmeshManager().addSubmeshJob(&submesh, nullptr, nullptr);
    }

    Submesh submesh;
};

Calls callsOf(const Submesh& submesh, const Submesh* previous)
{
    gl.calls.clear();
    submesh.render(previous);
    return gl.calls;
}

const std::string drawQuad = call("glDrawRangeElements", GL_TRIANGLES, 0, 4, 6, GL_UNSIGNED_BYTE, 0);
const MathBase::Matrix4x4Col identity;

} // namespace

TEST(SubmeshBuffers, takeTheNarrowestIndexAndNoneWhereTrianglesShareTooLittle)
{
    GLRecorder::reset();
    const struct
    {
        unsigned vertices, indices;
        GLenum type; // 0 without an index buffer
        unsigned width;
    } cases[] = {{255, 600, GL_UNSIGNED_BYTE, 1},
                 {256, 600, GL_UNSIGNED_SHORT, 2},
                 {65535, 90000, GL_UNSIGNED_SHORT, 2},
                 {65536, 90000, GL_UNSIGNED_INT, 4},
                 {100, 108, GL_UNSIGNED_BYTE, 1},
                 {101, 108, 0, 0},
                 {6, 6, 0, 0},
                 {9, 3, 0, 0}};
    for (const auto& one : cases)
    {
        const Made made(one.vertices, one.indices);
        SCOPED_TRACE(one.vertices);
        EXPECT_EQ(made.submesh.mNumVertices, one.type ? one.vertices : one.indices);
        ASSERT_EQ(made.submesh.mIndexBuffer != nullptr, one.type != 0);
        if (one.type)
        {
            EXPECT_EQ(made.submesh.mIndexBuffer->format, one.type);
            EXPECT_EQ(gl.buffers[made.submesh.mIndexBuffer->ID].size(), one.width * one.indices);
        }
        // Texture coordinates, normal and position of vertex 2.
        const std::vector<unsigned char>& bytes = gl.buffers[made.submesh.mVertexBuffer->ID];
        const float vertex[] = {2, 7, 0, 0, 1, 2, 7, 8};
        ASSERT_EQ(bytes.size(), 32u * made.submesh.mNumVertices);
        EXPECT_EQ(std::memcmp(bytes.data() + 64, vertex, sizeof vertex), 0);
    }
    EXPECT_TRUE(gl.buffers.empty()) << "they go with their submeshes";
}

TEST(SubmeshBuffers, areBoundOnlyWhereTheyDifferFromThePreviousOnes)
{
    GLRecorder::reset();
    const Made quad(4, 6);
    const Made triangle(3, 3);
    EXPECT_EQ(callsOf(quad.submesh, nullptr),
              (Calls{call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, quad.submesh.mVertexBuffer->ID),
                     call("glInterleavedArrays", GL_T2F_N3F_V3F, 0),
                     call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, quad.submesh.mIndexBuffer->ID), drawQuad}));
    EXPECT_EQ(callsOf(quad.submesh, &quad.submesh), Calls{drawQuad});
    EXPECT_EQ(
        callsOf(triangle.submesh, &quad.submesh),
        (Calls{call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, triangle.submesh.mVertexBuffer->ID),
               call("glInterleavedArrays", GL_T2F_N3F_V3F, 0), call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0),
               call("glDrawArrays", GL_TRIANGLES, 0, 3)}));
}

// Where surfaces touch, the order shows in the picture. A place on the heap that becomes free must not change it.
TEST(RenderJobs, runFromTheOldestBuffersToTheYoungest)
{
    GLRecorder::reset();
    std::vector<std::unique_ptr<Made>> made;
    for (int i = 0; i < 20; ++i) made.push_back(std::make_unique<Made>(4, 6));
    for (int i = 0; i < 20; i += 3)
    {
        made.erase(made.begin());
        made.push_back(std::make_unique<Made>(4, 6));
    }
    const Fennel::Material material;
    Fennel::RenderManager manager;
    for (auto one = made.rbegin(); one != made.rend(); ++one) manager.add(&(*one)->submesh, &material, identity, 0);
    manager.sort();
    for (std::size_t i = 0; i < made.size(); ++i) EXPECT_EQ(manager.mJobs[i].submesh, &made[i]->submesh) << i;
}

TEST(RenderJobs, groupBySubmeshAndThenByTextureAndKeepTheirRoom)
{
    GLRecorder::reset();
    const Made one(4, 6), other(4, 6);
    Fennel::TextureManager textures;
    Fennel::TextureFormat format;
    format.type = Fennel::TextureFormat::TEXTURE2D;
    Fennel::Material plain, textured;
    textured.mTexture = textures.loadTexture("t", makeImage(1, 1, {}), format);

    Fennel::RenderManager manager;
    manager.sort();
    for (int i = 0; i < 60; ++i)
    {
        manager.add(&one.submesh, i % 2 ? &plain : &textured, identity, 0);
        manager.add(&other.submesh, i % 3 ? &textured : &plain, identity, 0);
    }
    std::vector<Fennel::RenderManager::Job> jobs = manager.mJobs;
    for (std::size_t i = 0; i < jobs.size(); ++i) jobs[i].matrix.m[0] = manager.mJobs[i].matrix.m[0] = float(i);
    std::stable_sort(jobs.begin(), jobs.end());
    manager.sort();
    for (std::size_t i = 0; i < jobs.size(); ++i) EXPECT_EQ(manager.mJobs[i].matrix.m[0], jobs[i].matrix.m[0]);
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

TEST(RenderJobs, turnTheWindingOnlyAroundMirroredOnes)
{
    GLRecorder::reset();
    const Made made(4, 6);
    const Fennel::Material material;
    Fennel::RenderManager manager;
    for (const unsigned flags : {0u, 1u, 1u, 0u}) manager.add(&made.submesh, &material, identity, flags);
    gl.calls.clear();
    manager.render();
    Calls turns;
    for (const std::string& text : gl.calls)
    {
        if (text.find("glFrontFace") == 0 || text.find("glDraw") == 0) turns.push_back(text);
    }
    const std::string toCW = call("glFrontFace", GL_CW), toCCW = call("glFrontFace", GL_CCW);
    EXPECT_EQ(turns, (Calls{toCCW, drawQuad, toCW, drawQuad, drawQuad, toCCW, drawQuad}));
}

TEST(Materials, takeOverTheFiveAttributesAndLimitTheShininess)
{
    GLRecorder::reset();
    SceneFile file;
    Fennel::TextureManager textures;
    const std::pair<float, float> shininess[] = {{300, 127}, {254, 127}, {100, 50}, {-1, 0}};
    for (const auto& one : shininess)
    {
        y3d::Material* source = file.material("m", 0.1f, 0.2f, 0.3f, true);
        SceneFile::attribute(source, "specular", y3d::Color4f(1, 2, 3, 4));
        SceneFile::attribute(source, "emissive", y3d::Color4f(5, 6, 7, 8));
        SceneFile::attribute(source, "ambient", y3d::Color4f(9, 10, 11, 12));
        SceneFile::attribute(source, "hardness", y3d::Color4f(one.first, 0, 0, 0));
        SceneFile::attribute(source, "Diffuse", y3d::Color4f(1, 1, 1, 1)); // another name, no effect
        Fennel::Material material;
        material.load(&file.manager, source, textures, "");
        gl.calls.clear();
        material.activate(nullptr);
        EXPECT_EQ(gl.calls, (Calls{call("glMaterialfv", GL_FRONT_AND_BACK, GL_DIFFUSE, 0.1f, 0.2f, 0.3f, 1),
                                   call("glMaterialfv", GL_FRONT_AND_BACK, GL_AMBIENT, 9, 10, 11, 12),
                                   call("glMaterialfv", GL_FRONT_AND_BACK, GL_SPECULAR, 1, 2, 3, 4),
                                   call("glMaterialfv", GL_FRONT_AND_BACK, GL_EMISSION, 5, 6, 7, 8),
                                   call("glMaterialf", GL_FRONT_AND_BACK, GL_SHININESS, one.second),
                                   call("glDisable", GL_LIGHTING), call("glColor4fv", 0.1f, 0.2f, 0.3f, 1),
                                   call("glDisable", GL_TEXTURE_2D)}));
    }
}
