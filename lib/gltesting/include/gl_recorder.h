#pragma once

// Stands in for OpenGL in a binary that needs no display: it defines the gl functions that renderer and effects call,
// and our code and GLU find these ahead of the library's. Calls are written down as text. Besides, they keep the state
// that effects work with and the textures and buffers that are alive, transform what is drawn and remember it, and
// notice calls that OpenGL would refuse. While asleep they do nothing at all, which shows what a frame costs without
// its drawing.

#include "tw_glinclude.h"

#include <array>
#include <charconv>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace GLRecorder
{

// "glEnable 2896": a call as it is written down, its numbers as printf's %.7g gives them.
template <typename... Arguments> std::string call(const char* name, Arguments... arguments)
{
    std::string text = name;
    char number[32] = " ";
    [[maybe_unused]] const auto write = [&](double value) {
        return text.append(number,
                           std::to_chars(number + 1, std::end(number), value, std::chars_format::general, 7).ptr);
    };
    (write(static_cast<double>(arguments)), ...);
    return text;
}

struct Vertex
{
    std::array<float, 3> position; // as the call has it
    std::array<float, 3> eye;      // after the modelview matrix
    std::array<float, 3> clip;     // after the projection too, divided by w
    std::array<float, 4> color;
    std::array<float, 3> normal;
    std::array<float, 2> texture;
};

// What stands between a glBegin and its glEnd, or one glDrawElements from client arrays, with the state it was drawn
// in.
struct Primitive
{
    GLenum mode;
    std::vector<Vertex> vertices;
    GLuint texture; // 0 where texturing is off
    bool blended;
    std::array<GLenum, 2> blendFunction;
    float lineWidth;
};

using Matrix = std::array<double, 16>;

struct State
{
    std::map<GLenum, bool> enabled;
    std::map<GLenum, GLuint> bound; // textures and buffers, by target
    std::array<GLenum, 2> blendFunction{GL_ONE, GL_ZERO};
    std::array<GLuint, 3> stencilFunction{GL_ALWAYS, 0, ~0u}; // comparison, reference, mask
    std::array<int, 4> viewport{0, 0, 800, 600};
    std::array<float, 4> color{1, 1, 1, 1};
    std::array<float, 2> texture{0, 0};
    std::array<float, 3> normal{0, 0, 1};
    bool colorMask = true; // of the four, which effects set alike, the first
    GLenum depthFunction = GL_LEQUAL;
    GLenum polygonMode = GL_FILL;
    float lineWidth = 1;
    GLenum matrixMode = GL_MODELVIEW;
    std::map<GLenum, std::vector<Matrix>> stacks; // by matrix mode; the current matrix is the last
};

struct Recorder
{
    bool asleep = false;
    bool inFull = false; // a call that draws is written down with all its vertices
    State state;
    std::vector<State> attributes;     // pushed by glPushAttrib
    std::vector<std::string> calls;    // "glTranslatef 0 0 -1"; between glBegin and glEnd there are none
    std::vector<Primitive> primitives; // all but those of display lists being compiled
    std::vector<std::string> faults;   // what OpenGL would refuse, in words
    std::map<GLuint, std::vector<std::function<void()>>> lists;
    std::map<GLuint, std::vector<unsigned char>> textures, buffers;   // alive, with the bytes of level 0
    unsigned char (*readBack)(int x, int y, int component) = nullptr; // answers glReadPixels; null reads black
    GLenum error = GL_NO_ERROR;                                       // what the next glGetError gives
    const char* extensions = "GL_ARB_vertex_buffer_object";           // of glGetString
    GLuint lastName = 0;

    // Forgets what was drawn and begins a frame as the device does: most of the state off, a perspective of 45 degrees.
    void beginFrame();

    bool on(GLenum capability) { return state.enabled[capability]; }

    // How many of the calls have this name.
    int count(const std::string& name) const;

    // The last call of this name with its arguments, or an empty text.
    std::string last(const std::string& name) const;
};

extern Recorder gl;

// Forgets everything and puts the recorder's entry points in place of the looked-up ones.
void reset();

} // namespace GLRecorder
