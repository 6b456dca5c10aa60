#include "fe_submeshmanager.h"

#include "fe_submesh.h"

#include "tw_exception.h"
#include "y3d_submesh.h"
#include "ytd_utils.h"

#include <cassert>
#include <memory>

namespace Fennel
{

namespace
{

// A buffer that is given back unless it reaches its submesh.
struct Release
{
    void operator()(BufferARB* buffer) const { buffer->release(); }
};
using OwnedBuffer = std::unique_ptr<BufferARB, Release>;

// GL's name for a vertex layout, 0 for one that it has no name for.
GLenum interleavedFormat(unsigned int format)
{
    static const GLenum formats[8] = {0, GL_V3F, 0, GL_N3F_V3F, 0, GL_T2F_V3F, 0, GL_T2F_N3F_V3F};
    return format < 8 ? formats[format] : 0;
}

OwnedBuffer generateBuffer(GLenum contents)
{
    GLuint name = 0;
    GL_CHECKED(glGenBuffersARB(1, &name));
    return OwnedBuffer(new BufferARB(name, contents));
}

void upload(GLenum target, const BufferARB& buffer, GLsizeiptrARB size, const unsigned char* data)
{
    GL_CHECKED(glBindBufferARB(target, buffer.ID));
    GL_CHECKED(glBufferDataARB(target, size, data, GL_STATIC_DRAW_ARB));
    GL_CHECKED(glBindBufferARB(target, 0));
}

// The block as the graphics library takes it; with `indices` one vertex for each of them.
OwnedBuffer makeVertexBuffer(y3d::Submesh* source, const y3d::StructList<y3d::Index>* indices)
{
    const unsigned int format = ytd::Utils::getFormat(source);
    const GLenum glFormat = interleavedFormat(format);
    assert(glFormat);

    OwnedBuffer buffer = generateBuffer(glFormat);
    const unsigned int size = ytd::Utils::getVertexBufferSize(source, format, indices);
    const std::unique_ptr<unsigned char[]> data(new unsigned char[size]);
    ytd::Utils::compileVertexBuffer(data.get(), source, format, indices, 0);
    upload(GL_ARRAY_BUFFER_ARB, *buffer, size, data.get());
    return buffer;
}

// The narrowest type that can name all vertices.
OwnedBuffer makeIndexBuffer(y3d::Submesh* source, unsigned int numVertices)
{
    const int bits = numVertices < 256 ? 8 : numVertices < 65536 ? 16 : 32;
    const GLenum type = bits == 8 ? GL_UNSIGNED_BYTE : bits == 16 ? GL_UNSIGNED_SHORT : GL_UNSIGNED_INT;

    OwnedBuffer buffer = generateBuffer(type);
    const unsigned int size = ytd::Utils::getIndexBufferSize(source, bits);
    const std::unique_ptr<unsigned char[]> data(new unsigned char[size]);
    ytd::Utils::compileIndexBuffer(data.get(), source, bits, 0, 0);
    upload(GL_ELEMENT_ARRAY_BUFFER_ARB, *buffer, size, data.get());
    return buffer;
}

// With so few indices for a vertex an index buffer saves nothing.
bool drawsWithIndices(unsigned int numVertices, unsigned int numIndices)
{
    return !(numVertices > numIndices * double(0.93f));
}

} // namespace

SubmeshManager::~SubmeshManager()
{
    try
    {
        clear();
    }
    catch (const Tidewheel::Exception&)
    {
        // An error that somebody else has left in GL is nothing a destructor could report.
    }
}

void SubmeshManager::addSubmeshJob(Submesh* submesh, Mesh*, Material*)
{
    if (submesh->mInited) return;

    y3d::Submesh* source = submesh->mSource;
    const unsigned int numIndices = source->getNumIndices();
    unsigned int numVertices = source->getNumVertices();
    assert(numIndices > 0 && numVertices > 0);

    OwnedBuffer vertexBuffer;
    OwnedBuffer indexBuffer;
    if (drawsWithIndices(numVertices, numIndices))
    {
        vertexBuffer = makeVertexBuffer(source, nullptr);
        indexBuffer = makeIndexBuffer(source, numVertices);
    }
    else
    {
        vertexBuffer = makeVertexBuffer(source, source->getIndices());
        numVertices = numIndices;
    }

    submesh->mNumIndices = numIndices;
    submesh->mFirstIndex = 0;
    submesh->mNumVertices = numVertices;
    submesh->mFirstVertex = 0;
    submesh->mVertexBuffer = vertexBuffer.release();
    submesh->mIndexBuffer = indexBuffer.release();
    submesh->mInited = true;
    submesh->mSource = nullptr;
}

void SubmeshManager::flush() {}

void SubmeshManager::clear()
{
    GL_CHECKED(glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0));
    GL_CHECKED(glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0));
    GL_CHECKED(glDisableClientState(GL_VERTEX_ARRAY));
    GL_CHECKED(glDisableClientState(GL_NORMAL_ARRAY));
    GL_CHECKED(glDisableClientState(GL_TEXTURE_COORD_ARRAY));
}

} // namespace Fennel
