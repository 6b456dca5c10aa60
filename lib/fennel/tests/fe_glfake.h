#pragma once

// Stands in for OpenGL in binaries that need no display: they define the gl functions that the renderer calls. The
// calls are written down as text, and textures and buffers are kept, so that a test sees what was made, what is in it
// and what is left. Asleep, every call returns at once: that shows what a frame costs without its drawing.

#include "tw_glinclude.h"

#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace GLFake
{

inline void appendTo(std::string& text, double value)
{
    char number[32];
    std::snprintf(number, sizeof(number), " %g", value);
    text += number;
}

// "glEnable 2896": a call as it is written down, its numbers as printf's %g gives them.
template <typename... Arguments>
std::string call(const char* name, Arguments... arguments)
{
    std::string text = name;
    (appendTo(text, static_cast<double>(arguments)), ...);
    return text;
}

// One glDrawElements: what its indices lead to.
struct Draw
{
    std::vector<std::array<float, 3>> points;
    std::vector<std::array<float, 3>> normals;
};

struct State
{
    bool asleep = false;
    std::vector<std::string> calls;
    std::map<GLuint, std::vector<unsigned char>> textures; // alive, with the pixels of level 0
    std::map<GLuint, std::vector<unsigned char>> buffers;  // alive, with their bytes
    std::map<GLenum, GLuint> bound;                        // by target
    std::vector<Draw> draws;
    const float* pointArray = nullptr;
    const float* normalArray = nullptr;
    GLuint lastName = 0;
    GLenum error = GL_NO_ERROR;                            // what the next glGetError gives
    const char* extensions = "GL_ARB_vertex_buffer_object";

    int count(const std::string& name) const; // calls that begin with this name
};

extern State gl;
extern long allocations; // blocks taken from the heap since the program began

// Empties the state and puts the fake's entry points in place of the looked-up ones.
void reset();

} // namespace GLFake
