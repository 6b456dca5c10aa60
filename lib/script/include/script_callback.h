#pragma once

#include <string>

namespace Script
{

// What the timeline can drive. An entry that becomes active calls, each frame and in this order: resetTriggers if it is
// due, executeTrigger for each due trigger, updateSpline for each spline, and update, which draws.
class Callback
{
public:
    virtual ~Callback() {}

    // Back to the initial state: the entry starts over, at its first frame or after a seek backwards.
    virtual void resetTriggers() {}

    // `time` is the entry's local time in seconds, not the trigger's own.
    virtual void executeTrigger(float /*time*/, const std::string& /*name*/, const std::string& /*value*/) {}

    virtual void updateSpline(float /*time*/, const std::string& /*name*/, float /*value*/) {}

    // `time`: seconds since the entry's start. `delta`: seconds since the last update of the timeline, negative after
    // a seek backwards, 0 while paused. `position`: 0 at the entry's start, just below 1 at its end.
    virtual void update(float time, float delta, float position) = 0;
};

} // namespace Script
