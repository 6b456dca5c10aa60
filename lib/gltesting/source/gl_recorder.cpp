#include "gl_recorder.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace GLRecorder
{

Recorder gl;

namespace
{

GLuint compiling = 0; // the list between glNewList and glEndList
bool drawing = false; // between glBegin and glEnd

// The client arrays that are in use, packed.
const float *vertexArray = nullptr, *normalArray = nullptr, *texCoordArray = nullptr;
int texCoordSize = 0;

const Matrix IDENTITY{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

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
    if (stack.empty()) stack.push_back(IDENTITY);
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

// Writes a call down, or what stands between glBegin and glEnd behind its glBegin.
void note(const std::string& text)
{
    if (drawing) gl.faults.push_back(text + " between glBegin and glEnd");
    gl.calls.push_back(text);
}

// What may stand between glBegin and glEnd: there a part of the glBegin, under a letter.
template <typename... Arguments> void noteAttribute(const char* name, const char* letter, Arguments... arguments)
{
    if (!drawing)
        gl.calls.push_back(call(name, arguments...));
    else if (gl.inFull)
        gl.calls.back() += call(letter, arguments...);
}

void startPrimitive(GLenum mode)
{
    gl.primitives.push_back({mode,
                             {},
                             gl.on(GL_TEXTURE_2D) ? gl.state.bound[GL_TEXTURE_2D] : 0,
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
    vertex.position = {x, y, z};
    for (int i = 0; i < 3; ++i)
    {
        vertex.eye[i] = static_cast<float>(eye[i]);
        vertex.clip[i] = static_cast<float>(clip[i] / clip[3]);
    }
    vertex.color = gl.state.color;
    vertex.normal = gl.state.normal;
    vertex.texture = gl.state.texture;
    gl.primitives.back().vertices.push_back(vertex);
}

// Draws from the client arrays; what lies in buffers is noted alone.
void drawElements(GLenum mode, GLsizei count, GLenum type, const void* indices)
{
    if (!vertexArray) return;
    startPrimitive(mode);
    for (int i = 0; i < count; ++i)
    {
        const GLuint index =
            type == GL_UNSIGNED_BYTE ? static_cast<const GLubyte*>(indices)[i] : static_cast<const GLuint*>(indices)[i];
        const float *v = vertexArray + 3 * index, *n = normalArray + 3 * index;
        if (normalArray) gl.state.normal = {n[0], n[1], n[2]};
        if (texCoordArray) gl.state.texture = {texCoordArray[texCoordSize * index], 0};
        addVertex(v[0], v[1], v[2]);
        if (!gl.inFull) continue;
        gl.calls.back() += call(", v", v[0], v[1], v[2]);
        if (normalArray) gl.calls.back() += call(" n", n[0], n[1], n[2]);
        if (texCoordArray) gl.calls.back() += call(" t", gl.state.texture[0]);
    }
}

void forgetArray(GLenum array)
{
    if (array == GL_VERTEX_ARRAY) vertexArray = nullptr;
    if (array == GL_NORMAL_ARRAY) normalArray = nullptr;
    if (array == GL_TEXTURE_COORD_ARRAY) texCoordArray = nullptr;
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

template <typename Number> Matrix copyOf(const Number* matrix)
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

void fill(std::vector<unsigned char>& block, std::size_t size, const void* data)
{
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    block.assign(bytes, bytes + size);
}

void upload(GLenum target, GLenum format, int width, int height, const void* data)
{
    const int components = format == GL_RGB ? 3 : format == GL_BGRA ? 4 : 1;
    fill(gl.textures[gl.state.bound[target]], static_cast<std::size_t>(components * width * height), data);
}

void generate(std::map<GLuint, std::vector<unsigned char>>& alive, GLsizei count, GLuint* names)
{
    for (int i = 0; i < count; ++i) alive[names[i] = ++gl.lastName];
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
    for (const std::function<void()>& listed : gl.lists[list]) listed();
}

// The entry points beyond the base library.
#define NOTED(name, parameters, arguments, ...)                                                                        \
    void APIENTRY name parameters                                                                                      \
    {                                                                                                                  \
        if (gl.asleep) return;                                                                                         \
        note(call arguments);                                                                                          \
        __VA_ARGS__;                                                                                                   \
    }

NOTED(genBuffers, (GLsizei count, GLuint* names), ("glGenBuffersARB"), generate(gl.buffers, count, names))
NOTED(deleteBuffers, (GLsizei, const GLuint* names), ("glDeleteBuffersARB", *names), gl.buffers.erase(*names))
NOTED(bindBuffer, (GLenum target, GLuint name), ("glBindBufferARB", target, name), gl.state.bound[target] = name)
NOTED(bufferData, (GLenum target, GLsizeiptrARB size, const void* data, GLenum usage),
      ("glBufferDataARB", target, size, usage), fill(gl.buffers[gl.state.bound[target]], size, data))
NOTED(drawRangeElements, (GLenum mode, GLuint start, GLuint end, GLsizei count, GLenum type, const void* offset),
      ("glDrawRangeElements", mode, start, end, count, type, reinterpret_cast<std::size_t>(offset)), )

} // namespace

void reset()
{
    gl = Recorder();
    compiling = 0;
    drawing = false;
    vertexArray = normalArray = texCoordArray = nullptr;
    Tidewheel::glEntryPoints = {genBuffers, deleteBuffers, bindBuffer, bufferData, drawRangeElements};
}

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
    return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& text) {
        return text.compare(0, text.find(' '), name) == 0;
    }));
}

std::string Recorder::last(const std::string& name) const
{
    for (auto text = calls.rbegin(); text != calls.rend(); ++text)
        if (text->compare(0, name.size() + 1, name + " ") == 0) return *text;
    return "";
}

} // namespace GLRecorder

using namespace GLRecorder;

// A call that may stand in a display list: while one is compiled, the call is kept for glCallList.
#define LISTED(name, parameters, arguments, written, ...)                                                              \
    void name parameters                                                                                               \
    {                                                                                                                  \
        if (gl.asleep) return;                                                                                         \
        if (compiling) return gl.lists[compiling].push_back([=] { name arguments; });                                  \
        written;                                                                                                       \
        __VA_ARGS__;                                                                                                   \
    }

#define SET(member, ...) gl.state.member = {__VA_ARGS__}

extern "C" {

// Primitives.

LISTED(glBegin, (GLenum mode), (mode), note(call("glBegin", mode)), startPrimitive(mode), drawing = true)
LISTED(glEnd, (), (), , endPrimitive())
LISTED(glVertex3f, (GLfloat x, GLfloat y, GLfloat z), (x, y, z), noteAttribute("glVertex3f", ", v", x, y, z),
       addVertex(x, y, z))
LISTED(glTexCoord2f, (GLfloat s, GLfloat t), (s, t), noteAttribute("glTexCoord2f", ", t", s, t), SET(texture, s, t))
LISTED(glNormal3f, (GLfloat x, GLfloat y, GLfloat z), (x, y, z), noteAttribute("glNormal3f", ", n", x, y, z),
       SET(normal, x, y, z))
LISTED(glColor4f, (GLfloat r, GLfloat g, GLfloat b, GLfloat a), (r, g, b, a),
       noteAttribute("glColor4f", ", c", r, g, b, a), SET(color, r, g, b, a))

// What GLU writes for a flat disk.
void glVertex2f(GLfloat x, GLfloat y)
{
    glVertex3f(x, y, 0);
}

void glColor3f(GLfloat r, GLfloat g, GLfloat b)
{
    glColor4f(r, g, b, 1);
}

void glColor3ub(GLubyte r, GLubyte g, GLubyte b)
{
    glColor4f(r / 255.0f, g / 255.0f, b / 255.0f, 1);
}

NOTED(glColor4fv, (const GLfloat* c), ("glColor4fv", c[0], c[1], c[2], c[3]), SET(color, c[0], c[1], c[2], c[3]))
NOTED(glEnableClientState, (GLenum array), ("glEnableClientState", array), )
NOTED(glDisableClientState, (GLenum array), ("glDisableClientState", array), forgetArray(array))
NOTED(glInterleavedArrays, (GLenum format, GLsizei stride, const void*), ("glInterleavedArrays", format, stride), )
NOTED(glVertexPointer, (GLint size, GLenum type, GLsizei stride, const void* pointer),
      ("glVertexPointer", size, type, stride), vertexArray = static_cast<const float*>(pointer))
NOTED(glNormalPointer, (GLenum type, GLsizei stride, const void* pointer), ("glNormalPointer", type, stride),
      normalArray = static_cast<const float*>(pointer))
NOTED(glTexCoordPointer, (GLint size, GLenum type, GLsizei stride, const void* pointer),
      ("glTexCoordPointer", size, type, stride),
      (texCoordArray = static_cast<const float*>(pointer), texCoordSize = size))
NOTED(glDrawElements, (GLenum mode, GLsizei count, GLenum type, const void* indices),
      ("glDrawElements", mode, count, type), drawElements(mode, count, type, indices))
NOTED(glDrawArrays, (GLenum mode, GLint first, GLsizei count), ("glDrawArrays", mode, first, count), )

// Matrices. Of those that are given whole: the diagonal and the translation.

#define MATRIX(m) m[0], m[5], m[10], m[12], m[13], m[14]
NOTED(glMatrixMode, (GLenum mode), ("glMatrixMode", mode), gl.state.matrixMode = mode)
NOTED(glLoadIdentity, (), ("glLoadIdentity"), current() = IDENTITY)
NOTED(glLoadMatrixf, (const GLfloat* m), ("glLoadMatrixf", MATRIX(m)), current() = copyOf(m))
NOTED(glMultMatrixf, (const GLfloat* m), ("glMultMatrixf", MATRIX(m)), apply(copyOf(m)))
NOTED(glMultMatrixd, (const GLdouble* m), ("glMultMatrixd", MATRIX(m)), apply(copyOf(m)))
LISTED(glPushMatrix, (), (), note(call("glPushMatrix")), pushMatrix())
LISTED(glPopMatrix, (), (), note(call("glPopMatrix")), popMatrix())
LISTED(glTranslatef, (GLfloat x, GLfloat y, GLfloat z), (x, y, z), note(call("glTranslatef", x, y, z)),
       apply({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1}))
LISTED(glScalef, (GLfloat x, GLfloat y, GLfloat z), (x, y, z), note(call("glScalef", x, y, z)),
       apply({x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1}))
LISTED(glRotatef, (GLfloat degrees, GLfloat x, GLfloat y, GLfloat z), (degrees, x, y, z),
       note(call("glRotatef", degrees, x, y, z)), apply(rotation(degrees, x, y, z)))

void glGetFloatv(GLenum name, GLfloat* values)
{
    getMatrix(name, values);
}

// State.

NOTED(glEnable, (GLenum capability), ("glEnable", capability), gl.state.enabled[capability] = true)
NOTED(glDisable, (GLenum capability), ("glDisable", capability), gl.state.enabled[capability] = false)
NOTED(glBlendFunc, (GLenum source, GLenum target), ("glBlendFunc", source, target), SET(blendFunction, source, target))
NOTED(glClearColor, (GLfloat r, GLfloat g, GLfloat b, GLfloat a), ("glClearColor", r, g, b, a), )
NOTED(glClear, (GLbitfield buffers), ("glClear", buffers), )
NOTED(glColorMask, (GLboolean r, GLboolean g, GLboolean b, GLboolean a), ("glColorMask", r, g, b, a),
      SET(colorMask, r != 0))
NOTED(glDepthMask, (GLboolean on), ("glDepthMask", on), )
NOTED(glDepthFunc, (GLenum comparison), ("glDepthFunc", comparison), SET(depthFunction, comparison))
NOTED(glStencilFunc, (GLenum comparison, GLint reference, GLuint mask), ("glStencilFunc", comparison, reference, mask),
      SET(stencilFunction, comparison, static_cast<GLuint>(reference), mask))
NOTED(glStencilOp, (GLenum fail, GLenum depthFail, GLenum pass), ("glStencilOp", fail, depthFail, pass), )
NOTED(glCullFace, (GLenum face), ("glCullFace", face), )
NOTED(glFrontFace, (GLenum winding), ("glFrontFace", winding), )
NOTED(glPolygonMode, (GLenum face, GLenum mode), ("glPolygonMode", face, mode), SET(polygonMode, mode))
NOTED(glLineWidth, (GLfloat width), ("glLineWidth", width), SET(lineWidth, width))
NOTED(glViewport, (GLint x, GLint y, GLsizei width, GLsizei height), ("glViewport", x, y, width, height),
      SET(viewport, x, y, width, height))
NOTED(glFogi, (GLenum name, GLint value), ("glFogi", name, value), )
NOTED(glFogf, (GLenum name, GLfloat value), ("glFogf", name, value), )
NOTED(glFogfv, (GLenum name, const GLfloat* v), ("glFogfv", name, v[0], v[1], v[2], v[3]), )
NOTED(glMaterialf, (GLenum face, GLenum name, GLfloat value), ("glMaterialf", face, name, value), )
NOTED(glMaterialfv, (GLenum face, GLenum name, const GLfloat* v),
      ("glMaterialfv", face, name, v[0], v[1], v[2], v[3]), )
NOTED(glLightf, (GLenum light, GLenum name, GLfloat value), ("glLightf", light, name, value), )
NOTED(glLightfv, (GLenum light, GLenum name, const GLfloat* v), ("glLightfv", light, name, v[0], v[1], v[2], v[3]), )
NOTED(glLightModelf, (GLenum name, GLfloat value), ("glLightModelf", name, value), )
NOTED(glPushAttrib, (GLbitfield groups), ("glPushAttrib", groups), gl.attributes.push_back(gl.state))
NOTED(glPopAttrib, (), ("glPopAttrib"), popAttributes())

GLenum glGetError()
{
    if (drawing) gl.faults.push_back("glGetError between glBegin and glEnd");
    return std::exchange(gl.error, GLenum(GL_NO_ERROR));
}

const GLubyte* glGetString(GLenum)
{
    return reinterpret_cast<const GLubyte*>(gl.extensions);
}

// Textures, pixels and display lists.

void glGenTextures(GLsizei count, GLuint* names)
{
    if (!gl.asleep) note("glGenTextures");
    generate(gl.textures, count, names);
}

void glDeleteTextures(GLsizei count, const GLuint* names)
{
    if (!gl.asleep) note(call("glDeleteTextures", *names));
    for (int i = 0; i < count; ++i) gl.textures.erase(names[i]);
}

NOTED(glBindTexture, (GLenum target, GLuint texture), ("glBindTexture", target, texture),
      gl.state.bound[target] = texture)
NOTED(glTexImage1D,
      (GLenum target, GLint level, GLint parts, GLsizei w, GLint border, GLenum format, GLenum type, const void* data),
      ("glTexImage1D", target, level, parts, w, border, format, type), upload(target, format, w, 1, data))
NOTED(glTexImage2D,
      (GLenum target, GLint level, GLint parts, GLsizei w, GLsizei h, GLint border, GLenum format, GLenum type,
       const void* data),
      ("glTexImage2D", target, level, parts, w, h, border, format, type), upload(target, format, w, h, data))
NOTED(glTexParameteri, (GLenum target, GLenum name, GLint value), ("glTexParameteri", target, name, value), )
NOTED(glTexParameterf, (GLenum target, GLenum name, GLfloat value), ("glTexParameterf", target, name, value), )
NOTED(glTexGeni, (GLenum coordinate, GLenum name, GLint value), ("glTexGeni", coordinate, name, value), )
NOTED(glCopyTexSubImage2D,
      (GLenum target, GLint level, GLint toX, GLint toY, GLint x, GLint y, GLsizei width, GLsizei height),
      ("glCopyTexSubImage2D", target, level, toX, toY, x, y, width, height), )
NOTED(glCopyTexImage2D,
      (GLenum target, GLint level, GLenum internal, GLint x, GLint y, GLsizei width, GLsizei height, GLint border),
      ("glCopyTexImage2D", target, level, internal, x, y, width, height, border), )
NOTED(glReadPixels, (GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels),
      ("glReadPixels", x, y, width, height, format, type),
      readPixels(x, y, width, height, static_cast<unsigned char*>(pixels)))

GLuint glGenLists(GLsizei range)
{
    gl.lastName += static_cast<GLuint>(range);
    return gl.lastName - static_cast<GLuint>(range) + 1;
}

NOTED(glNewList, (GLuint list, GLenum mode), ("glNewList", list, mode), (gl.lists[list].clear(), compiling = list))

void glEndList()
{
    compiling = 0;
}

NOTED(glCallList, (GLuint list), ("glCallList", list), callList(list))
NOTED(glDeleteLists, (GLuint list, GLsizei range), ("glDeleteLists", list, range), gl.lists.erase(list))

// GLU's own ask the driver about its textures.

GLint gluBuild1DMipmaps(GLenum target, GLint parts, GLsizei w, GLenum format, GLenum type, const void* data)
{
    note(call("gluBuild1DMipmaps", target, parts, w, format, type));
    upload(target, format, w, 1, data);
    return 0;
}

GLint gluBuild2DMipmaps(GLenum target, GLint parts, GLsizei w, GLsizei h, GLenum format, GLenum type, const void* data)
{
    note(call("gluBuild2DMipmaps", target, parts, w, h, format, type));
    upload(target, format, w, h, data);
    return 0;
}

} // extern "C"
