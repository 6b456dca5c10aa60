#include "tw_device_sdl.h"

#include <SDL.h>

namespace Tidewheel
{

DeviceSDL::DeviceSDL()
    : mWidth(0), mHeight(0), mFullscreen(false), mOpen(false), mAlt(false), mShift(false), mCtrl(false)
{
}

DeviceSDL::~DeviceSDL()
{
    DeviceSDL::close();
}

void DeviceSDL::updateEvents(Events& events)
{
    SDL_Event event;
    while (!events.isFull() && SDL_PollEvent(&event))
    {
        if (event.type == SDL_KEYDOWN)
            appendKey(events, EVENT_KEYDOWN, event.key.keysym.sym, event.key.keysym.scancode, event.key.keysym.mod);
        else if (event.type == SDL_KEYUP)
            appendKey(events, EVENT_KEYUP, event.key.keysym.sym, event.key.keysym.scancode, event.key.keysym.mod);
        else if (event.type == SDL_QUIT)
        {
            Event quit;
            quit.type = EVENT_QUIT;
            events.append(quit);
            return;
        }
    }
}

void DeviceSDL::appendKey(Events& events, int type, int key, int scancode, int modifiers)
{
    mCtrl = (modifiers & (KMOD_LCTRL | KMOD_RCTRL)) != 0;
    mShift = (modifiers & (KMOD_LSHIFT | KMOD_RSHIFT)) != 0;
    mAlt = (modifiers & (KMOD_LALT | KMOD_RALT)) != 0;

    Event event;
    event.type = type;
    event.key = key;
    event.scancode = static_cast<unsigned char>(scancode);
    event.ctrl = mCtrl;
    event.alt = mAlt;
    event.shift = mShift;
    events.append(event);
}

void DeviceSDL::setFullscreen(bool) {}

bool DeviceSDL::isFullscreen() const
{
    return false;
}

void DeviceSDL::close()
{
    SDL_Quit();
    mOpen = false;
}

void DeviceSDL::getScreenShotRGB24(unsigned char*) const {}

void DeviceSDL::getScreenShot(AM::Image&) const {}

int DeviceSDL::getWidth() const
{
    return mWidth;
}

int DeviceSDL::getHeight() const
{
    return mHeight;
}

} // namespace Tidewheel
