#include "tw_device_sdl3d.h"

#include "tw_exception.h"
#include "tw_glinclude.h"
#include "tw_hud.h"
#include "tw_minihud.h"

#include "fe_texturemanager.h"

#include "am_image.h"

#include <SDL.h>

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstring>
#include <exception>

namespace Tidewheel
{

namespace
{

// Where a HUD lies on the screen, in clip coordinates.
struct Rectangle
{
    float left, top, right, bottom;
};

void deleteTexture(GLuint& texture)
{
    if (texture) glDeleteTextures(1, &texture);
    texture = 0;
}

void uploadHUD(HUDBase& pHUD)
{
    glTexImage2D(GL_TEXTURE_2D, 0, 4, pHUD.mWidth, pHUD.mHeight, 0, GL_BGRA, GL_UNSIGNED_BYTE, pHUD.mData);
    pHUD.mDirty = false;
}

// Binds the texture of a HUD, with what the HUD has drawn by now.
void bindHUD(HUDBase& hud, GLuint& texture)
{
    if (!texture)
    {
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
        uploadHUD(hud);
        return;
    }

    glBindTexture(GL_TEXTURE_2D, texture);
    if (hud.mDirty) uploadHUD(hud);
}

// Lays a HUD over the finished frame, in an attribute scope of its own. The viewport outside of frames is whatever the
// setup of an effect left it at, hence the whole window here.
void drawHUD(HUDBase& hud, GLuint& texture, const Rectangle& place, int width, int height)
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    glViewport(0, 0, width, height);

    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glEnable(GL_TEXTURE_2D);
    glMatrixMode(GL_MODELVIEW);
    bindHUD(hud, texture);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glLoadIdentity();

    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    glBegin(GL_QUADS);
    glTexCoord2f(0.0f, 0.0f);
    glVertex2f(place.left, place.top);
    glTexCoord2f(0.0f, 1.0f);
    glVertex2f(place.left, place.bottom);
    glTexCoord2f(1.0f, 1.0f);
    glVertex2f(place.right, place.bottom);
    glTexCoord2f(1.0f, 0.0f);
    glVertex2f(place.right, place.top);
    glEnd();
    glBindTexture(GL_TEXTURE_2D, 0);

    glPopClientAttrib();
    glPopAttrib();
}

// An upright rectangle around the y axis.
void bar(float halfWidth, float bottom, float top)
{
    glVertex2f(-halfWidth, top);
    glVertex2f(halfWidth, top);
    glVertex2f(halfWidth, bottom);
    glVertex2f(-halfWidth, bottom);
}

} // namespace

DeviceSDL3D::DeviceSDL3D()
    : mHudTexture(0), mMiniHudTexture(0), mInFrame(false), mExtensions(nullptr), mTextureManager(nullptr)
{
}

DeviceSDL3D::~DeviceSDL3D()
{
    deleteTexture(mHudTexture);
    deleteTexture(mMiniHudTexture);
    delete mTextureManager;
}

void DeviceSDL3D::open(const std::string& caption, int width, int height, bool fullscreen)
{
    if (mOpen)
    {
        // The context goes with the window, and the textures with it.
        deleteTexture(mHudTexture);
        deleteTexture(mMiniHudTexture);
        mTextureManager->dispatch();
        close();
    }
    mCaption = caption;
    mWidth = width;
    mHeight = height;
    mFullscreen = fullscreen;

    if (SDL_Init(SDL_INIT_VIDEO) < 0) throw Exception("Video initialization failed: %s\n", SDL_GetError());

    SDL_GL_SetAttribute(SDL_GL_RED_SIZE, 8);
    SDL_GL_SetAttribute(SDL_GL_GREEN_SIZE, 8);
    SDL_GL_SetAttribute(SDL_GL_BLUE_SIZE, 8);
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
    SDL_GL_SetAttribute(SDL_GL_STENCIL_SIZE, 8);
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);

    SDL_WM_SetCaption(mCaption.c_str(), nullptr);
    Uint32 flags = SDL_OPENGL | SDL_ANYFORMAT;
    if (mFullscreen)
    {
        SDL_ShowCursor(0);
        flags |= SDL_FULLSCREEN;
    }
    if (!SDL_SetVideoMode(mWidth, mHeight, 0, flags)) throw Exception("Could not set video mode '%s'", SDL_GetError());
    std::printf("Using %d bpp\n", 32);

    SDL_EnableKeyRepeat(500, 30); // milliseconds to the first repeat, and between repeats
    mExtensions = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    mOpen = true;
    mInFrame = false;

    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    SDL_GL_SwapBuffers();

    if (mTextureManager)
        mTextureManager->restore();
    else
        mTextureManager = new Fennel::TextureManager(nullptr);
}

void DeviceSDL3D::setFullscreen(bool fullscreen)
{
    mTextureManager->dispatch();
    deleteTexture(mHudTexture);
    deleteTexture(mMiniHudTexture);

    Uint32 flags = SDL_OPENGL;
    if (fullscreen) flags |= SDL_FULLSCREEN;
    if (!SDL_SetVideoMode(mWidth, mHeight, 32, flags) && !SDL_SetVideoMode(mWidth, mHeight, 24, flags) &&
        !SDL_SetVideoMode(mWidth, mHeight, 16, flags))
    {
        std::fprintf(stderr, "Video mode set failed: %s\n", SDL_GetError());
        throw std::exception();
    }
    mFullscreen = fullscreen;
    mTextureManager->restore();
}

bool DeviceSDL3D::isFullscreen() const
{
    return mFullscreen;
}

void DeviceSDL3D::beginFrame()
{
    // An error message quotes the statement as it stands here.
    // clang-format off
    GL_CHECKED(glShadeModel(GL_SMOOTH));
    GL_CHECKED(glClearDepth(1.0f));
    GL_CHECKED(glDisable(GL_DEPTH_TEST));
    GL_CHECKED(glDepthFunc(GL_LEQUAL));
    GL_CHECKED(glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST));
    GL_CHECKED(glDisable(GL_LIGHTING));
    GL_CHECKED(glColor4f(1.0f,1.0f,1.0f,0.5f));
    GL_CHECKED(glDisable(GL_BLEND));
    GL_CHECKED(glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA));
    GL_CHECKED(glDisable(GL_TEXTURE_2D));
    // clang-format on

    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    mInFrame = true;

    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glViewport(0, 0, mWidth, mHeight);
    gluPerspective(45.0f, static_cast<GLfloat>(mWidth) / static_cast<GLfloat>(mHeight), 0.1f, 100.0f);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void DeviceSDL3D::endFrame()
{
    popFrameState();
    SDL_GL_SwapBuffers();
}

void DeviceSDL3D::popFrameState()
{
    if (!mInFrame) return;
    glPopClientAttrib();
    glPopAttrib();
    mInFrame = false;
}

void DeviceSDL3D::displayHUD(HUD& hud)
{
    if (!hud.mVisible) return;
    popFrameState();

    // One pixel of the HUD on one of the screen, or the whole HUD on the height of a lower screen.
    float x = static_cast<float>(hud.mWidth) / static_cast<float>(mWidth);
    float y = static_cast<float>(hud.mHeight) / static_cast<float>(mHeight);
    if (-y < -1.0f)
    {
        const float scale = static_cast<float>(mHeight) / static_cast<float>(hud.mHeight);
        x *= scale;
        y *= scale;
    }
    drawHUD(hud, mHudTexture, {-x, y, x, -y}, mWidth, mHeight);
}

void DeviceSDL3D::displayMiniHUD(MiniHUD& hud)
{
    popFrameState();

    const int margin = 5;
    const float halfWidth = static_cast<float>(std::max(mWidth / 2, 1));
    const float halfHeight = static_cast<float>(std::max(mHeight / 2, 1));
    Rectangle place;
    place.left = static_cast<float>(mWidth - hud.mWidth - margin) / halfWidth - 1.0f;
    place.right = static_cast<float>(mWidth - margin) / halfWidth - 1.0f;
    place.top = static_cast<float>(hud.mHeight + margin) / halfHeight - 1.0f;
    place.bottom = static_cast<float>(margin) / halfHeight - 1.0f;
    drawHUD(hud, mMiniHudTexture, place, mWidth, mHeight);
}

void DeviceSDL3D::displayLoadingBar(float delta)
{
    glClearColor(0, 0, 0, 1);
    glDisable(GL_DEPTH_TEST);
    glClear(GL_COLOR_BUFFER_BIT);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(0.0f, 0.3f, -13.05f);
    glRotatef(-90.0f + 180.0f * delta, 0, 0, 1);

    glBegin(GL_QUADS);
    glColor3f(0.7f, 0.7f, 0.7f);
    bar(0.2f, -2.0f, 2.0f);
    glColor3f(0.0f, 0.0f, 0.0f);
    bar(0.18f, -1.98f, 1.98f);
    glColor3f(0.3f, 0.3f, 0.3f);
    bar(0.14f, -1.96f, 2.0f * (2.0f * delta - 1.0f - 0.02f));
    glEnd();
}

bool DeviceSDL3D::hasExtension(const char* name) const
{
    const std::size_t length = std::strlen(name);
    if (!mExtensions || length == 0) return false;

    for (const char* match = std::strstr(mExtensions, name); match; match = std::strstr(match + length, name))
        if (match[length] == ' ' || match[length] == '\0') return true;
    return false;
}

void DeviceSDL3D::getScreenShotRGB24(unsigned char* buffer) const
{
    if (mHeight % 2 != 0)
        throw Exception("DeviceSDL3D::getScreenShotRGB24, The height of the window must be even (%d)", mHeight);

    // Rows of three bytes a pixel need not end at a multiple of four.
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, mWidth, mHeight, GL_RGB, GL_UNSIGNED_BYTE, buffer);
    glPopClientAttrib();
    swapRows(buffer, 3);
}

void DeviceSDL3D::getScreenShot(AM::Image& image) const
{
    if (mHeight % 2 != 0)
        throw Exception("DeviceSDL3D::getScreenShot, The height of the window must be even (%d)", mHeight);
    assert(!image.isNull());
    assert(image->getWidth() == mWidth && image->getHeight() == mHeight);

    unsigned char* pixels = image->getWriteData();
    glReadPixels(0, 0, mWidth, mHeight, GL_BGRA, GL_UNSIGNED_BYTE, pixels);
    const std::size_t size = static_cast<std::size_t>(mWidth) * static_cast<std::size_t>(mHeight) * 4;
    for (std::size_t i = 3; i < size; i += 4) pixels[i] = 255;
    swapRows(pixels, 4);
}

// GL gives the bottom row first; pictures have the top row first.
void DeviceSDL3D::swapRows(unsigned char* pixels, int bytesPerPixel) const
{
    const std::size_t rowSize = static_cast<std::size_t>(mWidth) * static_cast<std::size_t>(bytesPerPixel);
    for (int y = 0; y < mHeight / 2; y++)
    {
        unsigned char* upper = pixels + static_cast<std::size_t>(y) * rowSize;
        unsigned char* lower = pixels + static_cast<std::size_t>(mHeight - 1 - y) * rowSize;
        std::swap_ranges(upper, upper + rowSize, lower);
    }
}

} // namespace Tidewheel
