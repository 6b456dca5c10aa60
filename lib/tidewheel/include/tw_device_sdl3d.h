#pragma once

#include "tw_device_sdl.h"

namespace Fennel
{
class TextureManager;
}

namespace Tidewheel
{

// The OpenGL window that every effect draws in. It owns the texture manager of the effects.
class DeviceSDL3D : public DeviceSDL
{
public:
    DeviceSDL3D();

    // Frees the HUDs' textures and the texture manager, of which no texture may be in use any more, and closes SDL.
    ~DeviceSDL3D() override;

    // Opens a window with 8 bits a channel, 24 bits of depth and 8 of stencil, shows it black, and makes the texture
    // manager, without archives yet. Throws a Tidewheel::Exception with SDL's reason.
    void open(const std::string& caption, int width, int height, bool fullscreen) override;

    // Changes between window and full screen. The GL context may go with the old mode, so all textures are dropped
    // before and made again after it. Not to be called within a frame. Throws when no mode is to be had.
    void setFullscreen(bool fullscreen) override;
    bool isFullscreen() const override;

    // Opens a frame in the base state that every effect can rely on: smooth shading, no depth test, lighting, blending
    // or texturing, and a perspective of 45 degrees from 0.1 to 100. What is changed within the frame is undone at its
    // end. Throws the first GL error left over by whatever was drawn before.
    void beginFrame() override;
    void endFrame() override;

    // Lays the HUD over the middle of the frame, if it is visible, scaled down only where it is taller than the window.
    void displayHUD(HUD& hud) override;

    // Lays the mini HUD over the bottom right corner, visible or not.
    void displayMiniHUD(MiniHUD& hud) override;
    void displayLoadingBar(float delta) override;

    // True if the driver lists exactly this extension.
    bool hasExtension(const char* name) const;

    // Both throw a Tidewheel::Exception if the height is odd, and the second an AM::Exception if others share the
    // image. Alpha comes out as 255.
    void getScreenShotRGB24(unsigned char* buffer) const override;
    void getScreenShot(AM::Image& image) const override;

    unsigned int mHudTexture;                // GL texture name, 0 for none
    unsigned int mMiniHudTexture;            // GL texture name, 0 for none
    bool mInFrame;                           // the attribute stacks hold the state that beginFrame pushed
    const char* mExtensions;                 // GL's list of extensions; null until `open`
    Fennel::TextureManager* mTextureManager; // owned; null until `open`

private:
    void popFrameState();
    void swapRows(unsigned char* pixels, int bytesPerPixel) const;
};

} // namespace Tidewheel
