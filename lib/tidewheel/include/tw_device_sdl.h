#pragma once

#include "tw_events.h"

#include <string>

namespace AM
{
class Image;
}

namespace Tidewheel
{

class HUD;
class MiniHUD;

// The window and the frame: opens the window, turns SDL's input into event records, frames what is drawn, lays the
// HUDs over it and reads pictures back. At most one device is open at a time, since SDL itself has one window only.
class DeviceSDL
{
public:
    DeviceSDL();
    DeviceSDL(const DeviceSDL&) = delete;
    DeviceSDL& operator=(const DeviceSDL&) = delete;

    // Closes the device.
    virtual ~DeviceSDL();

    // Appends the waiting key and quit events to `events`, which is emptied by the caller. A quit event and a full list
    // end the poll; what is left waits for the next one.
    virtual void updateEvents(Events& events);

    // Opens the window, with `width` and `height` in pixels. Throws when SDL cannot.
    virtual void open(const std::string& caption, int width, int height, bool fullscreen) = 0;

    virtual void setFullscreen(bool fullscreen);
    virtual bool isFullscreen() const;

    // Closes SDL as a whole: window, input and, if it is still running, sound.
    virtual void close();

    virtual void beginFrame() = 0;
    virtual void endFrame() = 0;
    virtual void displayHUD(HUD& hud) = 0;
    virtual void displayMiniHUD(MiniHUD& hud) = 0;

    // A bare progress bar for a program without a loading screen; `delta` runs from 0 to 1.
    virtual void displayLoadingBar(float delta) = 0;

    // Reads the frame last shown, top row first: 3 bytes a pixel into a buffer of width * height * 3 bytes, or into an
    // image of exactly the device's size.
    virtual void getScreenShotRGB24(unsigned char* buffer) const;
    virtual void getScreenShot(AM::Image& image) const;

    virtual int getWidth() const;
    virtual int getHeight() const;

    std::string mCaption;
    int mWidth;  // pixels
    int mHeight; // pixels
    bool mFullscreen;
    bool mOpen;
    bool mAlt; // modifiers of the last key event
    bool mShift;
    bool mCtrl;

private:
    void appendKey(Events& events, int type, int key, int scancode, int modifiers);
};

} // namespace Tidewheel
