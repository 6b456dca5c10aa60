#pragma once

#include <string>
#include <vector>

// What the user did, in the viewer's terms.
struct ViewInput
{
    enum Kind
    {
        KEY,    // `key` went down, or repeats
        DRAG,   // the mouse moved by x, y pixels with `button` held
        WHEEL,  // y steps away from the user
        MOVE,   // the mouse is at x, y
        RESIZE, // the window is x by y pixels
        QUIT
    };

    Kind kind = QUIT;
    int key = 0; // SDL's key symbol
    bool shift = false;
    int button = 0; // 1 left, 2 middle, 3 right
    int x = 0;
    int y = 0;
};

// A window with an OpenGL context. There is one at a time.
class ViewWindow
{
public:
    // Opens a window of so many pixels. Throws y3d::Exception with the reason where there is no display.
    ViewWindow(const std::string& title, int width, int height, bool resizable);
    ViewWindow(const ViewWindow&) = delete;
    ViewWindow& operator=(const ViewWindow&) = delete;
    ~ViewWindow();

    // What happened since the last call, in order.
    std::vector<ViewInput> poll();
    // True while the key is held.
    bool isHeld(int key) const;
    void setTitle(const std::string& title);
    void show();
    // Milliseconds since the window was opened.
    unsigned int getTicks() const;

    int getWidth() const { return mWidth; }
    int getHeight() const { return mHeight; }

private:
    int mWidth;
    int mHeight;
    unsigned int mFlags; // SDL's, of the window
    std::string mTitle;
};
