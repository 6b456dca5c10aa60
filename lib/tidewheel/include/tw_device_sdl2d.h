#pragma once

#include "tw_device_sdl.h"

struct SDL_Surface;

namespace Tidewheel
{

// A window with a plain frame buffer in memory. The show cannot run on it, since its effects draw with OpenGL.
class DeviceSDL2D : public DeviceSDL
{
public:
    // The pixels of the frame, 32 bits each. Valid between beginFrame and endFrame.
    struct Backbuffer
    {
        int width;
        int height;
        void* pixels; // SDL's
    };

    DeviceSDL2D();
    ~DeviceSDL2D() override;

    // Throws a plain std::exception after a line on standard output (no video) or standard error (no such mode).
    void open(const std::string& caption, int width, int height, bool fullscreen) override;
    bool isFullscreen() const override;
    void beginFrame() override;
    void endFrame() override;
    void displayHUD(HUD& hud) override;
    void displayMiniHUD(MiniHUD& hud) override;
    void displayLoadingBar(float delta) override;

    // The record lives in the device and is filled anew by each call.
    virtual Backbuffer* getBackbuffer();

    Backbuffer mBackbuffer;
    SDL_Surface* mSurface; // SDL's: it goes when SDL closes
};

} // namespace Tidewheel
