#include "view/viewwindow.h"

#include "y3d_exception.h"

#include <SDL.h>

#include <algorithm>
#include <cstdlib>

namespace
{

// Without a display SDL would go to one that draws letters into the terminal, or to none at all.
void needDisplay()
{
    const char* const names[] = {"DISPLAY", "WAYLAND_DISPLAY", "SDL_VIDEODRIVER"};
    for (const char* name : names)
    {
        const char* value = std::getenv(name);
        if (value && *value) return;
    }
    throw y3d::Exception("There is no display to open a window on; 'xvfb-run -a y3d view ...' makes one");
}

ViewInput makeInput(ViewInput::Kind kind, int x, int y)
{
    ViewInput input;
    input.kind = kind;
    input.x = x;
    input.y = y;
    return input;
}

} // namespace

ViewWindow::ViewWindow(const std::string& title, int width, int height, bool resizable)
    : mWidth(width), mHeight(height), mFlags(0)
{
    needDisplay();
    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_NOPARACHUTE) < 0)
        throw y3d::Exception("The display cannot be opened: %s", SDL_GetError());
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    mFlags = SDL_OPENGL | (resizable ? SDL_RESIZABLE : 0);
    if (!SDL_SetVideoMode(width, height, 0, mFlags))
    {
        const std::string reason = SDL_GetError();
        SDL_Quit();
        throw y3d::Exception("No window of %dx%d can be opened: %s", width, height, reason.c_str());
    }
    SDL_EnableKeyRepeat(400, 40); // milliseconds
    setTitle(title);
}

ViewWindow::~ViewWindow()
{
    SDL_Quit();
}

std::vector<ViewInput> ViewWindow::poll()
{
    std::vector<ViewInput> inputs;
    SDL_Event event;
    while (SDL_PollEvent(&event))
    {
        ViewInput input;
        switch (event.type)
        {
        case SDL_KEYDOWN:
            input.kind = ViewInput::KEY;
            input.key = event.key.keysym.sym;
            input.shift = (event.key.keysym.mod & KMOD_SHIFT) != 0;
            break;
        case SDL_MOUSEMOTION:
            inputs.push_back(makeInput(ViewInput::MOVE, event.motion.x, event.motion.y));
            if (!(event.motion.state & (SDL_BUTTON_LMASK | SDL_BUTTON_MMASK | SDL_BUTTON_RMASK))) continue;
            input = makeInput(ViewInput::DRAG, event.motion.xrel, event.motion.yrel);
            input.button = event.motion.state & SDL_BUTTON_LMASK ? 1 : event.motion.state & SDL_BUTTON_MMASK ? 2 : 3;
            input.shift = (SDL_GetModState() & KMOD_SHIFT) != 0;
            break;
        case SDL_MOUSEBUTTONDOWN:
            if (event.button.button != SDL_BUTTON_WHEELUP && event.button.button != SDL_BUTTON_WHEELDOWN) continue;
            input = makeInput(ViewInput::WHEEL, 0, event.button.button == SDL_BUTTON_WHEELUP ? 1 : -1);
            break;
        case SDL_VIDEORESIZE:
            mWidth = std::max(event.resize.w, 1);
            mHeight = std::max(event.resize.h, 1);
            input = makeInput(ViewInput::RESIZE, mWidth, mHeight);
            break;
        case SDL_QUIT:
            break;
        default:
            continue;
        }
        inputs.push_back(input);
    }
    return inputs;
}

bool ViewWindow::isHeld(int key) const
{
    int count = 0;
    const Uint8* keys = SDL_GetKeyState(&count);
    return key >= 0 && key < count && keys[key];
}

void ViewWindow::setTitle(const std::string& title)
{
    if (title == mTitle) return;
    mTitle = title;
    SDL_WM_SetCaption(title.c_str(), nullptr);
}

void ViewWindow::show()
{
    SDL_GL_SwapBuffers();
}

unsigned int ViewWindow::getTicks() const
{
    return SDL_GetTicks();
}
