#pragma once

// The one way to OpenGL: the base library's headers, the table of entry points beyond them, and the error check.

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

namespace Tidewheel
{

// Entry points beyond the base library. Every slot starts at a stub that looks its name up with glXGetProcAddressARB
// on first use, stores the result here and calls it; so nothing is looked up before there is a context, and later
// calls go straight to the driver. A name that the driver lacks ends the program with a line that names it.
struct GLEntryPoints
{
    PFNGLGENBUFFERSARBPROC genBuffersARB;
    PFNGLDELETEBUFFERSARBPROC deleteBuffersARB;
    PFNGLBINDBUFFERARBPROC bindBufferARB;
    PFNGLBUFFERDATAARBPROC bufferDataARB;
    PFNGLDRAWRANGEELEMENTSPROC drawRangeElements;
};

extern GLEntryPoints glEntryPoints;

// The look-up that the stubs use: glXGetProcAddressARB, unless a test puts its own in place.
using GLLookUp = void (*(*)(const GLubyte* name))();
extern GLLookUp glLookUp;

} // namespace Tidewheel

// The renderer writes the plain names.
#define glGenBuffersARB Tidewheel::glEntryPoints.genBuffersARB
#define glDeleteBuffersARB Tidewheel::glEntryPoints.deleteBuffersARB
#define glBindBufferARB Tidewheel::glEntryPoints.bindBufferARB
#define glBufferDataARB Tidewheel::glEntryPoints.bufferDataARB
#define glDrawRangeElements Tidewheel::glEntryPoints.drawRangeElements

namespace Tidewheel
{

// Throws a Tidewheel::Exception for an error of OpenGL. Codes outside the table of eight are ignored.
void throwGLError(GLenum error, const char* file, int line, const char* statement);

} // namespace Tidewheel

// Asks OpenGL once for an error and throws it as a Tidewheel::Exception that names the source line, its text and the
// error. Not to be called between glBegin and glEnd. It stands behind nearly every call, so the common case, no error,
// is decided where it stands.
inline void GL_REPORT_ERROR(const char* file, int line, const char* statement)
{
    const GLenum error = glGetError();
    if (error != GL_NO_ERROR) Tidewheel::throwGLError(error, file, line, statement);
}

// A call and its check. The statement's text is made right here: handed on through a second macro, its constants
// would turn into numbers.
#define GL_CHECKED(call)                                                                                               \
    do                                                                                                                 \
    {                                                                                                                  \
        call;                                                                                                          \
        GL_REPORT_ERROR(__FILE__, __LINE__, #call);                                                                    \
    } while (0)
