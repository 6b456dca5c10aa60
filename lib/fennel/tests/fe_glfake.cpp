#include "fe_glfake.h"

#include <cstdlib>
#include <new>

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

using GLFake::call;
using GLFake::gl;

namespace
{

template <typename... Arguments>
void note(const char* name, Arguments... arguments)
{
    if (!gl.asleep) gl.calls.push_back(call(name, arguments...));
}

void noteVector(const char* name, GLenum target, GLenum parameter, const GLfloat* v)
{
    note(name, target, parameter, v[0], v[1], v[2], v[3]);
}

void upload(GLenum target, int width, int height, const void* data)
{
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    gl.textures[gl.bound[target]].assign(bytes, bytes + 4 * width * height);
}

void APIENTRY genBuffersARB(GLsizei, GLuint* names)
{
    *names = ++gl.lastName;
    gl.buffers[*names];
    note("glGenBuffersARB");
}

void APIENTRY deleteBuffersARB(GLsizei, const GLuint* names)
{
    gl.buffers.erase(*names);
    note("glDeleteBuffersARB", *names);
}

void APIENTRY bindBufferARB(GLenum target, GLuint name)
{
    if (gl.asleep) return;
    gl.bound[target] = name;
    note("glBindBufferARB", target, name);
}

void APIENTRY bufferDataARB(GLenum target, GLsizeiptrARB size, const void* data, GLenum usage)
{
    if (gl.asleep) return;
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    gl.buffers[gl.bound[target]].assign(bytes, bytes + size);
    note("glBufferDataARB", target, size, usage);
}

void APIENTRY drawRangeElements(GLenum mode, GLuint start, GLuint end, GLsizei count, GLenum type, const void* offset)
{
    note("glDrawRangeElements", mode, start, end, count, type, reinterpret_cast<std::size_t>(offset));
}

} // namespace

void GLFake::reset()
{
    gl = State();
    Tidewheel::glEntryPoints = {genBuffersARB, deleteBuffersARB, bindBufferARB, bufferDataARB, drawRangeElements};
}

extern "C"
{
GLenum glGetError()
{
    const GLenum error = gl.error;
    gl.error = GL_NO_ERROR;
    return error;
}
const GLubyte* glGetString(GLenum) { return reinterpret_cast<const GLubyte*>(gl.extensions); }

void glGenTextures(GLsizei, GLuint* names)
{
    *names = ++gl.lastName;
    gl.textures[*names];
    note("glGenTextures");
}
void glDeleteTextures(GLsizei, const GLuint* names)
{
    gl.textures.erase(*names);
    note("glDeleteTextures", *names);
}
void glBindTexture(GLenum target, GLuint name)
{
    if (gl.asleep) return;
    gl.bound[target] = name;
    note("glBindTexture", target, name);
}
void glTexImage1D(GLenum target, GLint level, GLint components, GLsizei width, GLint border, GLenum format,
                  GLenum type, const void* data)
{
    note("glTexImage1D", target, level, components, width, border, format, type);
    upload(target, width, 1, data);
}
void glTexImage2D(GLenum target, GLint level, GLint components, GLsizei width, GLsizei height, GLint border,
                  GLenum format, GLenum type, const void* data)
{
    note("glTexImage2D", target, level, components, width, height, border, format, type);
    upload(target, width, height, data);
}
GLint gluBuild1DMipmaps(GLenum target, GLint components, GLsizei width, GLenum format, GLenum type, const void* data)
{
    note("gluBuild1DMipmaps", target, components, width, format, type);
    upload(target, width, 1, data);
    return 0;
}
GLint gluBuild2DMipmaps(GLenum target, GLint components, GLsizei width, GLsizei height, GLenum format, GLenum type,
                        const void* data)
{
    note("gluBuild2DMipmaps", target, components, width, height, format, type);
    upload(target, width, height, data);
    return 0;
}
void glTexParameterf(GLenum target, GLenum name, GLfloat value) { note("glTexParameterf", target, name, value); }

void glMaterialf(GLenum face, GLenum name, GLfloat value) { note("glMaterialf", face, name, value); }
void glMaterialfv(GLenum face, GLenum name, const GLfloat* v) { noteVector("glMaterialfv", face, name, v); }
void glLightf(GLenum light, GLenum name, GLfloat value) { note("glLightf", light, name, value); }
void glLightfv(GLenum light, GLenum name, const GLfloat* v) { noteVector("glLightfv", light, name, v); }
void glLightModelf(GLenum name, GLfloat value) { note("glLightModelf", name, value); }
void glEnable(GLenum capability) { note("glEnable", capability); }
void glDisable(GLenum capability) { note("glDisable", capability); }
void glColor4f(GLfloat r, GLfloat g, GLfloat b, GLfloat a) { note("glColor4f", r, g, b, a); }
void glColor4fv(const GLfloat* v) { note("glColor4fv", v[0], v[1], v[2], v[3]); }
void glMatrixMode(GLenum mode) { note("glMatrixMode", mode); }
void glLoadIdentity() { note("glLoadIdentity"); }
void glLoadMatrixf(const GLfloat* m) { note("glLoadMatrixf", m[0], m[5], m[10], m[12], m[13], m[14]); }
void glClear(GLbitfield mask) { note("glClear", mask); }
void glDepthMask(GLboolean on) { note("glDepthMask", on); }
void glCullFace(GLenum face) { note("glCullFace", face); }
void glFrontFace(GLenum winding) { note("glFrontFace", winding); }
void glInterleavedArrays(GLenum format, GLsizei stride, const void*) { note("glInterleavedArrays", format, stride); }
void glDrawArrays(GLenum mode, GLint first, GLsizei count) { note("glDrawArrays", mode, first, count); }
void glEnableClientState(GLenum array) { note("glEnableClientState", array); }
void glMultMatrixf(const GLfloat* m) { note("glMultMatrixf", m[0], m[5], m[10], m[12], m[13], m[14]); }
void glTexGeni(GLenum coordinate, GLenum name, GLint value) { note("glTexGeni", coordinate, name, value); }
void glVertexPointer(GLint, GLenum, GLsizei, const void* points)
{
    note("glVertexPointer");
    gl.pointArray = static_cast<const float*>(points);
}
void glNormalPointer(GLenum, GLsizei, const void* normals)
{
    note("glNormalPointer");
    gl.normalArray = static_cast<const float*>(normals);
}
void glDrawElements(GLenum mode, GLsizei count, GLenum type, const void* indices)
{
    if (gl.asleep) return;
    note("glDrawElements", mode, count, type);
    GLFake::Draw draw;
    for (int i = 0; i < count; ++i)
    {
        const float* point = gl.pointArray + 3 * static_cast<const GLubyte*>(indices)[i];
        const float* normal = gl.normalArray + 3 * static_cast<const GLubyte*>(indices)[i];
        draw.points.push_back({point[0], point[1], point[2]});
        draw.normals.push_back({normal[0], normal[1], normal[2]});
    }
    gl.draws.push_back(draw);
}
void glDisableClientState(GLenum array) { note("glDisableClientState", array); }
}
