#include "fe_submesh.h"

#include <cassert>

namespace Fennel
{

namespace
{

unsigned int bytesPerIndex(GLenum type)
{
    return type == GL_UNSIGNED_BYTE ? 1 : type == GL_UNSIGNED_SHORT ? 2 : 4;
}

GLuint nameOf(const BufferARB* buffer)
{
    return buffer ? buffer->ID : 0;
}

} // namespace

Submesh::~Submesh()
{
    if (!mInited) return;
    mVertexBuffer->release();
    if (mIndexBuffer) mIndexBuffer->release();
}

void Submesh::render(const Submesh* previous) const
{
    assert(mInited);

    if (previous != this)
    {
        const GLuint vertices = nameOf(mVertexBuffer);
        const GLuint indices = nameOf(mIndexBuffer);
        const GLuint lastVertices = previous ? nameOf(previous->mVertexBuffer) : 0;
        const GLuint lastIndices = previous ? nameOf(previous->mIndexBuffer) : 0;

        if (vertices != lastVertices)
        {
            GL_CHECKED(glBindBufferARB(GL_ARRAY_BUFFER_ARB, vertices));
            // Enables the client arrays of the format as well.
            GL_CHECKED(glInterleavedArrays(mVertexBuffer->format, 0, NULL));
        }
        if (indices != lastIndices) GL_CHECKED(glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, indices));
    }

    if (mIndexBuffer)
    {
        const std::size_t offset = std::size_t(mFirstIndex) * bytesPerIndex(mIndexBuffer->format);
        GL_CHECKED(glDrawRangeElements(GL_TRIANGLES, mFirstVertex, mFirstVertex + mNumVertices, mNumIndices,
                                       mIndexBuffer->format, reinterpret_cast<const void*>(offset)));
    }
    else
    {
        GL_CHECKED(glDrawArrays(GL_TRIANGLES, mFirstVertex, mNumVertices));
    }
}

} // namespace Fennel
