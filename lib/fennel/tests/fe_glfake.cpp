#include "fe_glfake.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace GLFake
{

State gl;
long allocations = 0;

int State::count(const std::string& name) const
{
    int found = 0;
    for (const std::string& text : calls) found += text.compare(0, text.find(' '), name) == 0;
    return found;
}

} // namespace GLFake

void* operator new(std::size_t size)
{
    ++GLFake::allocations;
    if (void* block = std::malloc(size ? size : 1)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

using GLFake::gl;

// A function that is written down with `arguments`, has `effect`, and does nothing while asleep.
#define NOTED(name, parameters, arguments, effect)                                                                     \
    void APIENTRY name parameters                                                                                      \
    {                                                                                                                  \
        if (gl.asleep) return;                                                                                         \
        gl.calls.push_back(GLFake::call arguments);                                                                    \
        effect;                                                                                                        \
    }

namespace
{

void fill(std::vector<unsigned char>& block, std::size_t size, const void* data)
{
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    block.assign(bytes, bytes + size);
}

void drawElements(int count, const GLubyte* indices)
{
    GLFake::Draw draw;
    for (int i = 0; i < count; ++i)
    {
        const float *p = gl.points + 3 * indices[i], *n = gl.normals + 3 * indices[i];
        draw.points.push_back({p[0], p[1], p[2]});
        draw.normals.push_back({n[0], n[1], n[2]});
    }
    gl.draws.push_back(draw);
}

NOTED(genBuffers, (GLsizei, GLuint* names), ("glGenBuffersARB"), gl.buffers[*names = ++gl.lastName])
NOTED(deleteBuffers, (GLsizei, const GLuint* names), ("glDeleteBuffersARB", *names), gl.buffers.erase(*names))
NOTED(bindBuffer, (GLenum target, GLuint name), ("glBindBufferARB", target, name), gl.bound[target] = name)
NOTED(bufferData, (GLenum target, GLsizeiptrARB size, const void* data, GLenum usage),
      ("glBufferDataARB", target, size, usage), fill(gl.buffers[gl.bound[target]], size, data))
NOTED(drawRangeElements, (GLenum mode, GLuint start, GLuint end, GLsizei count, GLenum type, const void* offset),
      ("glDrawRangeElements", mode, start, end, count, type, reinterpret_cast<std::size_t>(offset)), )

} // namespace

void GLFake::reset()
{
    gl = State();
    Tidewheel::glEntryPoints = {genBuffers, deleteBuffers, bindBuffer, bufferData, drawRangeElements};
}

extern "C"
{
GLenum glGetError() { return std::exchange(gl.error, GLenum(GL_NO_ERROR)); }
const GLubyte* glGetString(GLenum) { return reinterpret_cast<const GLubyte*>(gl.extensions); }

#define TEXTURE gl.textures[gl.bound[target]]
NOTED(glGenTextures, (GLsizei, GLuint* names), ("glGenTextures"), gl.textures[*names = ++gl.lastName])
NOTED(glDeleteTextures, (GLsizei, const GLuint* names), ("glDeleteTextures", *names), gl.textures.erase(*names))
NOTED(glBindTexture, (GLenum target, GLuint name), ("glBindTexture", target, name), gl.bound[target] = name)
NOTED(glTexImage1D, (GLenum target, GLint level, GLint parts, GLsizei w, GLint border, GLenum format, GLenum type,
      const void* data), ("glTexImage1D", target, level, parts, w, border, format, type), fill(TEXTURE, 4 * w, data))
NOTED(glTexImage2D, (GLenum target, GLint level, GLint parts, GLsizei w, GLsizei h, GLint border, GLenum format,
      GLenum type, const void* data), ("glTexImage2D", target, level, parts, w, h, border, format, type),
      fill(TEXTURE, 4 * w * h, data))
NOTED(glTexParameterf, (GLenum target, GLenum name, GLfloat value), ("glTexParameterf", target, name, value), )
NOTED(glTexGeni, (GLenum coordinate, GLenum name, GLint value), ("glTexGeni", coordinate, name, value), )

NOTED(glMaterialf, (GLenum face, GLenum name, GLfloat value), ("glMaterialf", face, name, value), )
NOTED(glMaterialfv, (GLenum face, GLenum name, const GLfloat* v),
      ("glMaterialfv", face, name, v[0], v[1], v[2], v[3]), )
NOTED(glLightf, (GLenum light, GLenum name, GLfloat value), ("glLightf", light, name, value), )
NOTED(glLightfv, (GLenum light, GLenum name, const GLfloat* v), ("glLightfv", light, name, v[0], v[1], v[2], v[3]), )
NOTED(glLightModelf, (GLenum name, GLfloat value), ("glLightModelf", name, value), )
NOTED(glEnable, (GLenum capability), ("glEnable", capability), )
NOTED(glDisable, (GLenum capability), ("glDisable", capability), )
NOTED(glColor4f, (GLfloat r, GLfloat g, GLfloat b, GLfloat a), ("glColor4f", r, g, b, a), )
NOTED(glColor4fv, (const GLfloat* v), ("glColor4fv", v[0], v[1], v[2], v[3]), )
NOTED(glMatrixMode, (GLenum mode), ("glMatrixMode", mode), )
NOTED(glLoadIdentity, (), ("glLoadIdentity"), )
NOTED(glLoadMatrixf, (const GLfloat* m), ("glLoadMatrixf", m[0], m[5], m[10], m[12], m[13], m[14]), )
NOTED(glMultMatrixf, (const GLfloat* m), ("glMultMatrixf", m[0], m[5], m[10], m[12], m[13], m[14]), )
NOTED(glClear, (GLbitfield mask), ("glClear", mask), )
NOTED(glDepthMask, (GLboolean on), ("glDepthMask", on), )
NOTED(glCullFace, (GLenum face), ("glCullFace", face), )
NOTED(glFrontFace, (GLenum winding), ("glFrontFace", winding), )

NOTED(glInterleavedArrays, (GLenum format, GLsizei stride, const void*), ("glInterleavedArrays", format, stride), )
NOTED(glEnableClientState, (GLenum array), ("glEnableClientState", array), )
NOTED(glDisableClientState, (GLenum array), ("glDisableClientState", array), )
NOTED(glVertexPointer, (GLint, GLenum, GLsizei, const void* p), ("glVertexPointer"),
      gl.points = static_cast<const float*>(p))
NOTED(glNormalPointer, (GLenum, GLsizei, const void* p), ("glNormalPointer"),
      gl.normals = static_cast<const float*>(p))
NOTED(glDrawArrays, (GLenum mode, GLint first, GLsizei count), ("glDrawArrays", mode, first, count), )
NOTED(glDrawElements, (GLenum mode, GLsizei count, GLenum type, const void* indices),
      ("glDrawElements", mode, count, type), drawElements(count, static_cast<const GLubyte*>(indices)))

GLint gluBuild1DMipmaps(GLenum target, GLint parts, GLsizei w, GLenum format, GLenum type, const void* data)
{
    gl.calls.push_back(GLFake::call("gluBuild1DMipmaps", target, parts, w, format, type));
    fill(TEXTURE, 4 * w, data);
    return 0;
}
GLint gluBuild2DMipmaps(GLenum target, GLint parts, GLsizei w, GLsizei h, GLenum format, GLenum type, const void* data)
{
    gl.calls.push_back(GLFake::call("gluBuild2DMipmaps", target, parts, w, h, format, type));
    fill(TEXTURE, 4 * w * h, data);
    return 0;
}
}
