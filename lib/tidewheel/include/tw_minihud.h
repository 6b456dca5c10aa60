#pragma once

#include "tw_hudbase.h"

namespace Tidewheel
{

// A small panel with the clock and the frame rate, for watching the show without the timeline.
class MiniHUD : public HUDBase
{
public:
    explicit MiniHUD(AM::ArchiveManager& archive);

    void redraw() override;

    // Takes and shows each time event; other events are not for this display.
    void processEvents(Events& events) override;

    float mTime = 0.0f;      // seconds; from the last time event, as the others
    float mStartTime = 0.0f; // seconds
    float mFps = 0.0f;       // frames per second
};

} // namespace Tidewheel
