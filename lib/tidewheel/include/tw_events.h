#pragma once

#include <cassert>

namespace Tidewheel
{

// What a record of the event list tells.
enum EventType
{
    EVENT_KEYDOWN = 8, // a key went down, or repeats while it is held
    EVENT_KEYUP = 9,
    EVENT_TIME = 11, // the clock moved by about one pixel of the HUD's axis; made by the runtime, not the device
    EVENT_QUIT = 12  // the window is to be closed
};

struct Event
{
    int type = 0;               // an EventType
    float time = 0.0f;          // EVENT_TIME: show time in seconds
    float start = 0.0f;         // EVENT_TIME: where the show begins, in seconds
    float fps = 0.0f;           // EVENT_TIME: mean frames per second, 0 right after a seek and while paused
    int key = 0;                // key events: SDL's key symbol
    unsigned char scancode = 0; // key events: SDL's scan code
    bool ctrl = false;          // key events: either Ctrl key is held
    bool alt = false;
    bool shift = false;
};

// The events of one frame, in the order of arrival. The array belongs to whoever made the list: in the show that is
// the runtime, which empties `count` before each poll.
struct Events
{
    static constexpr int CAPACITY = 10;

    int count = 0;
    Event* events = nullptr; // `CAPACITY` records

    bool isFull() const { return count >= CAPACITY; }

    // Appends a record to a list that is not full. What finds it full waits for the next frame.
    void append(const Event& event)
    {
        assert(!isFull());
        events[count++] = event;
    }
};

} // namespace Tidewheel
