#include "tw_device_sdl2d.h"

#include <SDL.h>

#include <cstdio>
#include <exception>

namespace Tidewheel
{

DeviceSDL2D::DeviceSDL2D() : mBackbuffer{0, 0, nullptr}, mSurface(nullptr) {}

DeviceSDL2D::~DeviceSDL2D() {}

void DeviceSDL2D::open(const std::string& caption, int width, int height, bool fullscreen)
{
    if (mOpen)
    {
        close();
        mSurface = nullptr; // closing SDL frees the surface of the window
    }
    mCaption = caption;
    mWidth = width;
    mHeight = height;
    mFullscreen = fullscreen;

    if (SDL_Init(SDL_INIT_VIDEO) < 0)
    {
        std::printf("Video initialization failed: %s\n", SDL_GetError());
        throw std::exception();
    }

    Uint32 flags = SDL_DOUBLEBUF;
    if (fullscreen) flags |= SDL_FULLSCREEN;
    mSurface = SDL_SetVideoMode(width, height, 32, flags);
    if (!mSurface)
    {
        std::fprintf(stderr, "Video mode set failed: %s\n", SDL_GetError());
        throw std::exception();
    }

    SDL_WM_SetCaption(mCaption.c_str(), nullptr);
    SDL_ShowCursor(0);
    mOpen = true;
}

bool DeviceSDL2D::isFullscreen() const
{
    return mFullscreen;
}

void DeviceSDL2D::beginFrame()
{
    if (SDL_MUSTLOCK(mSurface)) SDL_LockSurface(mSurface);
}

void DeviceSDL2D::endFrame()
{
    if (SDL_MUSTLOCK(mSurface)) SDL_UnlockSurface(mSurface);
    SDL_Flip(mSurface);
}

void DeviceSDL2D::displayHUD(HUD&) {}

void DeviceSDL2D::displayMiniHUD(MiniHUD&) {}

void DeviceSDL2D::displayLoadingBar(float) {}

DeviceSDL2D::Backbuffer* DeviceSDL2D::getBackbuffer()
{
    mBackbuffer.width = mSurface->w;
    mBackbuffer.height = mSurface->h;
    mBackbuffer.pixels = mSurface->pixels;
    return &mBackbuffer;
}

} // namespace Tidewheel
