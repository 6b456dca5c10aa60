#pragma once

// Stands in for OpenGL in a test binary that needs no display. The binary defines the gl functions itself, so that our
// code and GLU find these ahead of the library's. They keep the state that effects work with, transform what is drawn
// and remember it, and notice calls that OpenGL would refuse. While asleep they do nothing at all, which shows what an
// effect costs without its drawing.

#include <GL/gl.h>

#include <array>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace GLRecorder
{

struct Vertex
{
    std::array<float, 3> eye;  // after the modelview matrix
    std::array<float, 3> clip; // after the projection too, divided by w
    std::array<float, 4> color;
    std::array<float, 2> texture;
};

// What stands between a glBegin and its glEnd, or one glDrawElements, with the state it was drawn in.
struct Primitive
{
    GLenum mode;
    std::vector<Vertex> vertices;
    GLuint texture; // 0 where texturing is off
    bool blended;
    std::array<GLenum, 2> blendFunction;
    float lineWidth;
};

struct Upload
{
    GLuint texture;
    GLenum format;
    int width, height;
    std::vector<unsigned char> data;
};

using Matrix = std::array<double, 16>;

struct State
{
    std::map<GLenum, bool> enabled;
    std::array<GLenum, 2> blendFunction{GL_ONE, GL_ZERO};
    std::array<GLuint, 3> stencilFunction{GL_ALWAYS, 0, ~0u}; // comparison, reference, mask
    std::array<GLenum, 3> stencilOperation{GL_KEEP, GL_KEEP, GL_KEEP};
    std::array<int, 4> viewport{0, 0, 800, 600};
    std::array<float, 4> clearColor{0, 0, 0, 0};
    std::array<float, 4> color{1, 1, 1, 1};
    std::array<float, 2> texture{0, 0};
    std::array<float, 3> normal{0, 0, 1};
    bool depthMask = true, colorMask = true; // of the four colour masks, which effects set alike, the first
    GLenum depthFunction = GL_LEQUAL;
    GLenum polygonMode = GL_FILL;
    float lineWidth = 1;
    GLuint boundTexture = 0; // GL_TEXTURE_2D
    GLenum matrixMode = GL_MODELVIEW;
    std::map<GLenum, std::vector<Matrix>> stacks; // by matrix mode; the current matrix is the last
};

struct Recorder
{
    bool asleep = false;
    State state;
    std::vector<State> attributes;     // pushed by glPushAttrib
    std::vector<std::string> calls;    // "glTranslatef 0 0 -1"; within glBegin and glEnd there are none
    std::vector<Primitive> primitives; // all but those of display lists being compiled
    std::vector<Upload> uploads;
    std::vector<std::string> faults; // what OpenGL would refuse, in words
    std::map<GLuint, std::vector<std::function<void()>>> lists;
    unsigned char (*readBack)(int x, int y, int component) = nullptr; // answers glReadPixels; null reads black
    int textures = 0;                                                 // names in use, as are lists.size()

    // Forgets what was drawn and begins a frame as the device does: most of the state off, a perspective of 45 degrees.
    void beginFrame();

    bool on(GLenum capability) { return state.enabled[capability]; }

    // How many of the calls have this name.
    int count(const std::string& name) const;

    // The last call of this name with its arguments, or an empty text.
    std::string last(const std::string& name) const;
};

extern Recorder gl;

} // namespace GLRecorder
