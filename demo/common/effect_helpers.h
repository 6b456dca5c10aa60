#pragma once

// What the effects share, each thing in this one place: random unit numbers, numbers out of a trigger's text, the
// format of pictures, the soft spot, the full-screen frame, and the quads that nearly every effect draws.

#include "fe_texturemanager.h"
#include "tw_glinclude.h"

#include "frame_size.h"
#include "picture_files.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

// A random number from 0 to 1. The factor is 2 to the power of -31 and RAND_MAX one less than its inverse, so that the
// largest one rounds to 1 itself.
inline float randomUnit()
{
    return static_cast<float>(std::rand()) * 4.656613e-10f;
}

// The number at the start of a trigger's text: 0 if there is none; what follows it is ignored.
inline float readFloat(const std::string& text)
{
    return static_cast<float>(std::strtod(text.c_str(), nullptr));
}

// The same for a whole number in base 10, held within the range of int.
inline int readInteger(const std::string& text)
{
    return static_cast<int>(std::clamp<long>(std::strtol(text.c_str(), nullptr, 10), INT_MIN, INT_MAX));
}

// The same for how many things a frame is to draw, at most `most`: a slip of the hand in a script must not hold the
// frame up for minutes. A count below 0 draws nothing.
inline int readCount(const std::string& text, int most)
{
    return std::min(readInteger(text), most);
}

// Loads a picture from the archives as all effects want theirs: 2D, in the size of its file, with mipmap levels. A
// picture that is missing or damaged throws an AM::Exception that names it.
inline Fennel::Texture loadPicture(Fennel::TextureManager& manager, const std::string& filename)
{
    Fennel::TextureFormat format;
    format.type = Fennel::TextureFormat::TEXTURE2D | Fennel::TextureFormat::MIPMAP;
    return manager.loadTexture(filename, format, "");
}

// A round spot with a soft rim, `size` by `size` bytes from the first row on; `size` is a power of two. With w for 1
// minus the distance from the middle, which is 1 at the middle of an edge, a texel has 256 w^2 + 92 w, as a share of
// 256. w is not limited: in the corners, where it is far below 0, the spot glows faintly once more.
inline std::vector<unsigned char> makeSoftSpot(int size)
{
    const float half = static_cast<float>(size) / 2;
    std::vector<unsigned char> spot;
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
        {
            const float dx = (static_cast<float>(x) - half) / half;
            const float dy = (static_cast<float>(y) - half) / half;
            const float w = 1 - std::sqrt(dx * dx + dy * dy);
            const int value = static_cast<int>((256 * w * w + 92 * w) * 255) >> 8;
            spot.push_back(static_cast<unsigned char>(std::clamp(value, 0, 255)));
        }
    return spot;
}

// Clip space for a layer over the whole screen: x and y from -1 to 1. The projection returns at the end of the scope,
// the modelview matrix stays what the layer made of it.
class FullScreenFrame
{
public:
    FullScreenFrame()
    {
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
    }

    ~FullScreenFrame()
    {
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
    }

    FullScreenFrame(const FullScreenFrame&) = delete;
    FullScreenFrame& operator=(const FullScreenFrame&) = delete;
};

// Pushes the current matrix and pops it at the end of the scope.
class PushedMatrix
{
public:
    PushedMatrix() { glPushMatrix(); }
    ~PushedMatrix() { glPopMatrix(); }

    PushedMatrix(const PushedMatrix&) = delete;
    PushedMatrix& operator=(const PushedMatrix&) = delete;
};

// The side of the textures that hold a copy of the frame, in their lower left corner.
const int COPY_SIZE = 1024;

// Copies the frame into the bound texture.
inline void copyFrame()
{
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, FRAME_WIDTH, FRAME_HEIGHT);
}

// The perspective of the device with a near plane at 1, and no modelview matrix. It is not put back: the near plane
// holds for the rest of the frame.
inline void setNearPerspective()
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(45, 1.33333333, 1, 100);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

// Both filters of the bound 2D texture: GL_NEAREST or GL_LINEAR.
inline void setTextureFilter(GLint filter)
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
}

// One quad over the whole of a full-screen frame, without a texture.
inline void drawFullScreenQuad()
{
    glBegin(GL_QUADS);
    glVertex3f(-1, 1, 0);
    glVertex3f(1, 1, 0);
    glVertex3f(1, -1, 0);
    glVertex3f(-1, -1, 0);
    glEnd();
}

// Between glBegin(GL_QUADS) and glEnd: a whole picture about the origin, upright, in half its width and height.
inline void pictureCorners(float halfWidth, float halfHeight)
{
    glTexCoord2f(0, 0);
    glVertex3f(-halfWidth, halfHeight, 0);
    glTexCoord2f(1, 0);
    glVertex3f(halfWidth, halfHeight, 0);
    glTexCoord2f(1, 1);
    glVertex3f(halfWidth, -halfHeight, 0);
    glTexCoord2f(0, 1);
    glVertex3f(-halfWidth, -halfHeight, 0);
}

// A triangle strip of one quad about the z axis, in half its width and height; s0 and s1 are its left and right edge
// in the texture, t0 and t1 its top and bottom.
inline void drawStrip(float s0, float t0, float s1, float t1, float halfWidth, float halfHeight, float z = 0)
{
    glBegin(GL_TRIANGLE_STRIP);
    glTexCoord2f(s0, t0);
    glVertex3f(-halfWidth, halfHeight, z);
    glTexCoord2f(s0, t1);
    glVertex3f(-halfWidth, -halfHeight, z);
    glTexCoord2f(s1, t0);
    glVertex3f(halfWidth, halfHeight, z);
    glTexCoord2f(s1, t1);
    glVertex3f(halfWidth, -halfHeight, z);
    glEnd();
}
