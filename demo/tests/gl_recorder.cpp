#include "gl_recorder.h"

#include <GL/glu.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace GLRecorder
{

Recorder gl;

namespace
{

GLuint lastName = 0;
GLuint compiling = 0; // the list between glNewList and glEndList
bool drawing = false; // between glBegin and glEnd
const float* vertexArray = nullptr;

const Matrix identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

Matrix multiply(const Matrix& a, const Matrix& b)
{
    Matrix product{};
    for (int column = 0; column < 4; ++column)
        for (int row = 0; row < 4; ++row)
            for (int k = 0; k < 4; ++k) product[column * 4 + row] += a[k * 4 + row] * b[column * 4 + k];
    return product;
}

std::array<double, 4> transform(const Matrix& m, const std::array<double, 4>& v)
{
    std::array<double, 4> result{};
    for (int row = 0; row < 4; ++row)
        for (int k = 0; k < 4; ++k) result[row] += m[k * 4 + row] * v[k];
    return result;
}

Matrix& top(GLenum mode)
{
    std::vector<Matrix>& stack = gl.state.stacks[mode];
    if (stack.empty()) stack.push_back(identity);
    return stack.back();
}

Matrix& current()
{
    return top(gl.state.matrixMode);
}

void apply(const Matrix& matrix)
{
    current() = multiply(current(), matrix);
}

// The arguments of a call as text.
struct Numbers
{
    template <typename... Arguments> explicit Numbers(Arguments... arguments)
    {
        char number[32];
        (text.append(number, std::snprintf(number, sizeof number, " %.7g", static_cast<double>(arguments))), ...);
    }

    std::string text;
};

// Notes a call. False: the call is not to take effect now.
bool note(const char* name, const Numbers& numbers)
{
    if (drawing) gl.faults.push_back(std::string(name) + " between glBegin and glEnd");
    gl.calls.push_back(name + numbers.text);
    return true;
}

void startPrimitive(GLenum mode)
{
    gl.primitives.push_back({mode,
                             {},
                             gl.on(GL_TEXTURE_2D) ? gl.state.boundTexture : 0,
                             gl.on(GL_BLEND),
                             gl.state.blendFunction,
                             gl.state.lineWidth});
}

void endPrimitive()
{
    if (!drawing) gl.faults.push_back("glEnd without glBegin");
    drawing = false;
}

void addVertex(float x, float y, float z)
{
    const std::array<double, 4> eye = transform(top(GL_MODELVIEW), {x, y, z, 1});
    const std::array<double, 4> clip = transform(top(GL_PROJECTION), eye);
    Vertex vertex;
    for (int i = 0; i < 3; ++i)
    {
        vertex.eye[i] = static_cast<float>(eye[i]);
        vertex.clip[i] = static_cast<float>(clip[i] / clip[3]);
    }
    vertex.color = gl.state.color;
    vertex.texture = gl.state.texture;
    gl.primitives.back().vertices.push_back(vertex);
}

void drawElements(GLenum mode, GLsizei count, const GLuint* indices)
{
    startPrimitive(mode);
    for (int i = 0; i < count; ++i)
    {
        const float* vertex = vertexArray + 3 * indices[i];
        addVertex(vertex[0], vertex[1], vertex[2]);
    }
}

void pushMatrix()
{
    const Matrix copy = current();
    gl.state.stacks[gl.state.matrixMode].push_back(copy);
}

void popMatrix()
{
    std::vector<Matrix>& stack = gl.state.stacks[gl.state.matrixMode];
    if (stack.size() < 2)
        gl.faults.push_back("glPopMatrix on the last matrix");
    else
        stack.pop_back();
}

// About the axis (x, y, z), as glRotatef has it.
Matrix rotation(double degrees, double x, double y, double z)
{
    const double length = std::sqrt(x * x + y * y + z * z);
    const double u = x / length, v = y / length, w = z / length;
    const double c = std::cos(degrees * M_PI / 180), s = std::sin(degrees * M_PI / 180), d = 1 - c;
    return {u * u * d + c,
            v * u * d + w * s,
            u * w * d - v * s,
            0,
            u * v * d - w * s,
            v * v * d + c,
            v * w * d + u * s,
            0,
            u * w * d + v * s,
            v * w * d - u * s,
            w * w * d + c,
            0,
            0,
            0,
            0,
            1};
}

Matrix copyOf(const double* matrix)
{
    Matrix copy;
    std::copy(matrix, matrix + 16, copy.begin());
    return copy;
}

void getMatrix(GLenum name, float* values)
{
    const Matrix& matrix = top(name == GL_MODELVIEW_MATRIX ? GL_MODELVIEW : GL_PROJECTION);
    std::copy(matrix.begin(), matrix.end(), values);
}

// GL_ENABLE_BIT is the one group that effects save.
void popAttributes()
{
    if (gl.attributes.empty()) return gl.faults.push_back("glPopAttrib without glPushAttrib");
    gl.state.enabled = gl.attributes.back().enabled;
    gl.attributes.pop_back();
}

void bindTexture(GLenum target, GLuint texture)
{
    if (target == GL_TEXTURE_2D) gl.state.boundTexture = texture;
}

void upload(GLenum format, int width, int height, const void* data)
{
    const int components = format == GL_RGB ? 3 : format == GL_BGRA ? 4 : 1;
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    gl.uploads.push_back({gl.state.boundTexture, format, width, height, {bytes, bytes + width * height * components}});
}

void readPixels(int x, int y, int width, int height, unsigned char* pixel)
{
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column)
            for (int i = 0; i < 3; ++i) *pixel++ = gl.readBack ? gl.readBack(x + column, y + row, i) : 0;
}

void callList(GLuint list)
{
    if (gl.lists.count(list) == 0) gl.faults.push_back("glCallList of a list that does not exist");
    for (const std::function<void()>& call : gl.lists[list]) call();
}

} // namespace

void Recorder::beginFrame()
{
    state = State();
    attributes.clear();
    calls.clear();
    primitives.clear();
    faults.clear();
    state.matrixMode = GL_PROJECTION;
    gluPerspective(45, 800.0 / 600, 0.1, 100);
    state.matrixMode = GL_MODELVIEW;
    state.color = {1, 1, 1, 0.5f};
    state.blendFunction = {GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA};
    calls.clear();
}

int Recorder::count(const std::string& name) const
{
    return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
        return call == name || call.compare(0, name.size() + 1, name + " ") == 0;
    }));
}

std::string Recorder::last(const std::string& name) const
{
    for (auto call = calls.rbegin(); call != calls.rend(); ++call)
        if (call->compare(0, name.size() + 1, name + " ") == 0) return *call;
    return "";
}

} // namespace GLRecorder

using namespace GLRecorder;

// A call that is noted, and what it does then.
#define NOTED(name, parameters, arguments, effect)                                                                     \
    void name parameters                                                                                               \
    {                                                                                                                  \
        if (!gl.asleep && note(#name, Numbers arguments))                                                              \
        {                                                                                                              \
            effect;                                                                                                    \
        }                                                                                                              \
    }

// The same for one that may stand in a display list: while a list is compiled, the call is kept for glCallList.
#define LISTED(name, parameters, arguments, effect)                                                                    \
    void name parameters                                                                                               \
    {                                                                                                                  \
        if (compiling)                                                                                                 \
            gl.lists[compiling].push_back([=] { name arguments; });                                                    \
        else if (!gl.asleep && note(#name, Numbers arguments))                                                         \
        {                                                                                                              \
            effect;                                                                                                    \
        }                                                                                                              \
    }

// The same for what stands between glBegin and glEnd, which is not noted.
#define IN_PRIMITIVE(name, parameters, arguments, effect)                                                              \
    void name parameters                                                                                               \
    {                                                                                                                  \
        if (compiling)                                                                                                 \
            gl.lists[compiling].push_back([=] { name arguments; });                                                    \
        else if (!gl.asleep)                                                                                           \
            effect;                                                                                                    \
    }

#define SET(member, ...) gl.state.member = {__VA_ARGS__}

extern "C" {

// Primitives.

LISTED(glBegin, (GLenum mode), (mode), (startPrimitive(mode), drawing = true))
IN_PRIMITIVE(glEnd, (), (), endPrimitive())
IN_PRIMITIVE(glVertex3f, (GLfloat x, GLfloat y, GLfloat z), (x, y, z), addVertex(x, y, z))
IN_PRIMITIVE(glVertex2f, (GLfloat x, GLfloat y), (x, y), addVertex(x, y, 0))
IN_PRIMITIVE(glTexCoord2f, (GLfloat s, GLfloat t), (s, t), SET(texture, s, t))
IN_PRIMITIVE(glNormal3f, (GLfloat x, GLfloat y, GLfloat z), (x, y, z), SET(normal, x, y, z))
IN_PRIMITIVE(glColor4f, (GLfloat r, GLfloat g, GLfloat b, GLfloat a), (r, g, b, a), SET(color, r, g, b, a))

void glColor3f(GLfloat r, GLfloat g, GLfloat b)
{
    glColor4f(r, g, b, 1);
}

void glColor3ub(GLubyte r, GLubyte g, GLubyte b)
{
    glColor4f(r / 255.0f, g / 255.0f, b / 255.0f, 1);
}

NOTED(glEnableClientState, (GLenum array), (array), )
NOTED(glDisableClientState, (GLenum array), (array), )
NOTED(glVertexPointer, (GLint size, GLenum type, GLsizei stride, const void* pointer), (size, type, stride),
      vertexArray = static_cast<const float*>(pointer))
NOTED(glTexCoordPointer, (GLint size, GLenum type, GLsizei stride, const void*), (size, type, stride), )
NOTED(glDrawElements, (GLenum mode, GLsizei count, GLenum type, const void* indices), (mode, count, type),
      drawElements(mode, count, static_cast<const GLuint*>(indices)))

// Matrices.

NOTED(glMatrixMode, (GLenum mode), (mode), gl.state.matrixMode = mode)
NOTED(glLoadIdentity, (), (), current() = identity)
LISTED(glPushMatrix, (), (), pushMatrix())
LISTED(glPopMatrix, (), (), popMatrix())
LISTED(glTranslatef, (GLfloat x, GLfloat y, GLfloat z), (x, y, z),
       apply({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1}))
LISTED(glScalef, (GLfloat x, GLfloat y, GLfloat z), (x, y, z), apply({x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1}))
LISTED(glRotatef, (GLfloat degrees, GLfloat x, GLfloat y, GLfloat z), (degrees, x, y, z),
       apply(rotation(degrees, x, y, z)))
NOTED(glMultMatrixd, (const GLdouble* matrix), (), apply(copyOf(matrix)))

void glGetFloatv(GLenum name, GLfloat* values) { getMatrix(name, values); }

// State.

NOTED(glEnable, (GLenum capability), (capability), gl.state.enabled[capability] = true)
NOTED(glDisable, (GLenum capability), (capability), gl.state.enabled[capability] = false)
NOTED(glBlendFunc, (GLenum source, GLenum target), (source, target), SET(blendFunction, source, target))
NOTED(glClearColor, (GLfloat r, GLfloat g, GLfloat b, GLfloat a), (r, g, b, a), SET(clearColor, r, g, b, a))
NOTED(glClear, (GLbitfield buffers), (buffers), )
NOTED(glColorMask, (GLboolean r, GLboolean g, GLboolean b, GLboolean a), (r, g, b, a), SET(colorMask, r != 0))
NOTED(glDepthMask, (GLboolean on), (on), SET(depthMask, on != 0))
NOTED(glDepthFunc, (GLenum comparison), (comparison), SET(depthFunction, comparison))
NOTED(glStencilFunc, (GLenum comparison, GLint reference, GLuint mask), (comparison, reference, mask),
      SET(stencilFunction, comparison, static_cast<GLuint>(reference), mask))
NOTED(glStencilOp, (GLenum fail, GLenum depthFail, GLenum pass), (fail, depthFail, pass),
      SET(stencilOperation, fail, depthFail, pass))
NOTED(glCullFace, (GLenum face), (face), )
NOTED(glPolygonMode, (GLenum face, GLenum mode), (face, mode), SET(polygonMode, mode))
NOTED(glLineWidth, (GLfloat width), (width), SET(lineWidth, width))
NOTED(glViewport, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height),
      SET(viewport, x, y, width, height))
NOTED(glFogi, (GLenum name, GLint value), (name, value), )
NOTED(glFogf, (GLenum name, GLfloat value), (name, value), )
NOTED(glFogfv, (GLenum name, const GLfloat* color), (name, color[0], color[1], color[2], color[3]), )
NOTED(glPushAttrib, (GLbitfield groups), (groups), gl.attributes.push_back(gl.state))
NOTED(glPopAttrib, (), (), popAttributes())

GLenum glGetError()
{
    if (drawing) gl.faults.push_back("glGetError between glBegin and glEnd");
    return GL_NO_ERROR;
}

// Textures, display lists and pixels.

void glGenTextures(GLsizei count, GLuint* names)
{
    gl.textures += count;
    for (int i = 0; i < count; ++i) names[i] = ++lastName;
}

void glDeleteTextures(GLsizei count, const GLuint* names)
{
    for (int i = 0; i < count; ++i) gl.textures -= names[i] != 0;
}

NOTED(glBindTexture, (GLenum target, GLuint texture), (target, texture), bindTexture(target, texture))
NOTED(glTexImage1D, (GLenum, GLint, GLint internal, GLsizei width, GLint, GLenum format, GLenum, const void* data),
      (internal, width, format), upload(format, width, 1, data))
NOTED(glTexImage2D,
      (GLenum, GLint, GLint internal, GLsizei width, GLsizei height, GLint, GLenum format, GLenum, const void* data),
      (internal, width, height, format), upload(format, width, height, data))
NOTED(glTexParameteri, (GLenum target, GLenum name, GLint value), (target, name, value), )
NOTED(glTexParameterf, (GLenum target, GLenum name, GLfloat value), (target, name, value), )
NOTED(glCopyTexSubImage2D, (GLenum, GLint, GLint, GLint, GLint x, GLint y, GLsizei width, GLsizei height),
      (x, y, width, height), )
NOTED(glCopyTexImage2D, (GLenum, GLint, GLenum internal, GLint x, GLint y, GLsizei width, GLsizei height, GLint),
      (internal, x, y, width, height), )
NOTED(glReadPixels, (GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum, void* pixels),
      (x, y, width, height, format), readPixels(x, y, width, height, static_cast<unsigned char*>(pixels)))

GLuint glGenLists(GLsizei range)
{
    lastName += range;
    return lastName - range + 1;
}

NOTED(glNewList, (GLuint list, GLenum mode), (list, mode), (gl.lists[list].clear(), compiling = list))

void glEndList()
{
    compiling = 0;
}

NOTED(glCallList, (GLuint list), (list), callList(list))
NOTED(glDeleteLists, (GLuint list, GLsizei range), (list, range), gl.lists.erase(list))

// GLU's own asks the driver about its textures.
GLint gluBuild2DMipmaps(GLenum, GLint, GLsizei width, GLsizei height, GLenum format, GLenum, const void* data)
{
    upload(format, width, height, data);
    return 0;
}

} // extern "C"
