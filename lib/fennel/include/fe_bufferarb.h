#pragma once

#include "tw_glinclude.h"

namespace Fennel
{

// A counted GL buffer. It is made with one user, who calls release() instead of deleting it.
class BufferARB
{
public:
    BufferARB(GLuint name, GLenum contents) : ID(name), format(contents) {}
    BufferARB(const BufferARB&) = delete;
    BufferARB& operator=(const BufferARB&) = delete;

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

    // Counts up from buffer to buffer. Render jobs are sorted by it: where surfaces touch, the order of drawing shows
    // in single pixels, and so every run draws the same picture.
    const unsigned long mNumber = ++sLastNumber;

private:
    inline static unsigned long sLastNumber = 0;

    ~BufferARB() {}
};

} // namespace Fennel
