#include "tw_minihud.h"

#include "tw_hudtext.h"

namespace Tidewheel
{

MiniHUD::MiniHUD(AM::ArchiveManager& archive) : HUDBase(archive)
{
    resize(64, 32);
}

void MiniHUD::redraw()
{
    drawBox(0, 0, 64, 32, 0xAA000000, false);
    for (int y = 1; y <= 30; ++y) drawBox(1, y, 63, 1, 0xAA660000, false);

    drawText(formatText("%02d:%02d.%02d", clockMinutes(mTime), clockSeconds(mTime), clockMilliseconds(mTime) / 10), 3,
             2, 0xFFFFFFFF, 64, false);
    drawText(formatText("fps:%.0f", mFps), 3, 16, 0xFFFFFFFF, 64, false);
}

void MiniHUD::processEvents(Events& events)
{
    for (int i = 0; i < events.count; ++i)
    {
        const Event& event = events.events[i];
        if (event.type != EVENT_TIME) continue;
        mTime = event.time;
        mStartTime = event.start;
        mFps = event.fps;
        redraw();
        mDirty = true;
    }
}

} // namespace Tidewheel
