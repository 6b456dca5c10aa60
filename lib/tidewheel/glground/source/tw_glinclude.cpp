#include "tw_glinclude.h"

#include "tw_exception.h"

#include <GL/glx.h>

#include <cstdio>
#include <cstdlib>

namespace Tidewheel
{

GLLookUp glLookUp = glXGetProcAddressARB;

namespace
{

// Finds `name`, or ends the program: there is nothing the show could draw with instead.
template <typename Function> Function lookUp(const char* name)
{
    Function function = reinterpret_cast<Function>(glLookUp(reinterpret_cast<const GLubyte*>(name)));
    if (!function)
    {
        std::fprintf(stderr, "Error: The OpenGL driver lacks '%s'\n", name);
        std::exit(1);
    }
    return function;
}

void APIENTRY firstGenBuffersARB(GLsizei n, GLuint* buffers)
{
    glEntryPoints.genBuffersARB = lookUp<PFNGLGENBUFFERSARBPROC>("glGenBuffersARB");
    glEntryPoints.genBuffersARB(n, buffers);
}

void APIENTRY firstDeleteBuffersARB(GLsizei n, const GLuint* buffers)
{
    glEntryPoints.deleteBuffersARB = lookUp<PFNGLDELETEBUFFERSARBPROC>("glDeleteBuffersARB");
    glEntryPoints.deleteBuffersARB(n, buffers);
}

void APIENTRY firstBindBufferARB(GLenum target, GLuint buffer)
{
    glEntryPoints.bindBufferARB = lookUp<PFNGLBINDBUFFERARBPROC>("glBindBufferARB");
    glEntryPoints.bindBufferARB(target, buffer);
}

void APIENTRY firstBufferDataARB(GLenum target, GLsizeiptrARB size, const void* data, GLenum usage)
{
    glEntryPoints.bufferDataARB = lookUp<PFNGLBUFFERDATAARBPROC>("glBufferDataARB");
    glEntryPoints.bufferDataARB(target, size, data, usage);
}

void APIENTRY firstDrawRangeElements(GLenum mode, GLuint start, GLuint end, GLsizei count, GLenum type,
                                     const void* indices)
{
    glEntryPoints.drawRangeElements = lookUp<PFNGLDRAWRANGEELEMENTSPROC>("glDrawRangeElements");
    glEntryPoints.drawRangeElements(mode, start, end, count, type, indices);
}

} // namespace

GLEntryPoints glEntryPoints = {firstGenBuffersARB, firstDeleteBuffersARB, firstBindBufferARB, firstBufferDataARB,
                               firstDrawRangeElements};

namespace
{

const int ERROR_COUNT = 8;

const GLenum mCode[ERROR_COUNT] = {GL_NO_ERROR,       GL_INVALID_ENUM,    GL_INVALID_VALUE, GL_INVALID_OPERATION,
                                   GL_STACK_OVERFLOW, GL_STACK_UNDERFLOW, GL_OUT_OF_MEMORY, GL_TABLE_TOO_LARGE};

const char* const mName[ERROR_COUNT] = {"GL_NO_ERROR",          "GL_INVALID_ENUM",   "GL_INVALID_VALUE",
                                        "GL_INVALID_OPERATION", "GL_STACK_OVERFLOW", "GL_STACK_UNDERFLOW",
                                        "GL_OUT_OF_MEMORY",     "GL_TABLE_TOO_LARGE"};

} // namespace

void throwGLError(GLenum error, const char* file, int line, const char* statement)
{
    // The search starts behind GL_NO_ERROR, which therefore never matches.
    for (int i = 1; i < ERROR_COUNT; i++)
    {
        if (mCode[i] == error)
            throw Exception("[Tidewheel] GL-error at [%d] %s\nLine: %s\nError: '%s'", line, file, statement, mName[i]);
    }
}

} // namespace Tidewheel
