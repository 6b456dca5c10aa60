#pragma once

#include "tw_glinclude.h"

#include <cstddef>

namespace Fennel
{

// A counted GL buffer. It is made with one user, who calls release() instead of deleting it.
class BufferARB
{
public:
    BufferARB(GLuint name, GLenum contents) : ID(name), format(contents) {}
    BufferARB(const BufferARB&) = delete;
    BufferARB& operator=(const BufferARB&) = delete;

    // Render jobs are sorted by the addresses of their buffers, and where surfaces touch, the order of drawing shows in
    // single pixels. So the objects lie in one block, each in the foremost free place: as long as the block lasts,
    // addresses follow the order of creation, and every run draws the same picture.
    static void* operator new(std::size_t size);
    static void operator delete(void* memory);

    // One user less; the last one deletes the GL buffer and this object. Unchecked, since destructors come here.
    void release()
    {
        if (--mRefCount > 0) return;
        glDeleteBuffersARB(1, &ID);
        delete this;
    }

    GLuint ID;                  // GL buffer name
    GLenum format;              // interleaved format of vertices, or type of indices
    unsigned int mRefCount = 1; // users

private:
    ~BufferARB() {}
};

} // namespace Fennel
