#pragma once

// Stands in for OpenGL in binaries that need no display: they define the gl functions that renderer and scene effects
// call. Calls are written down as text, textures and buffers are kept, so that a test sees what was made, what is in it
// and what is left. Asleep, every call returns at once: that shows what a frame costs without its drawing.

#include "tw_glinclude.h"

#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace GLFake
{

// "glEnable 2896": a call as it is written down, its numbers as printf's %g gives them.
template <typename... Arguments> std::string call(const char* name, Arguments... arguments)
{
    std::string text = name;
    char number[32];
    (text.append(number, std::snprintf(number, sizeof number, " %g", static_cast<double>(arguments))), ...);
    return text;
}

// One glDrawElements: what its indices lead to.
struct Draw
{
    std::vector<std::array<float, 3>> points, normals;
};

struct State
{
    bool asleep = false;
    std::vector<std::string> calls;
    std::map<GLuint, std::vector<unsigned char>> textures, buffers; // alive, with pixels of level 0 and bytes
    std::map<GLenum, GLuint> bound;                                 // by target
    std::vector<Draw> draws;
    const float *points = nullptr, *normals = nullptr; // the client arrays
    GLuint lastName = 0;
    GLenum error = GL_NO_ERROR; // what the next glGetError gives
    const char* extensions = "GL_ARB_vertex_buffer_object";

    int count(const std::string& name) const; // calls of this name
};

extern State gl;
extern long allocations; // blocks taken from the heap since the program began

// Empties the state and puts the fake's entry points in place of the looked-up ones.
void reset();

} // namespace GLFake
