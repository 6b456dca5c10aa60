#pragma once

#include "script_callback.h"
#include "script_spline.h"
#include "script_trigger.h"

#include <map>
#include <string>
#include <vector>

namespace Script
{

// One entry of the timeline: when the effect object of this name runs, and the triggers, splines and child entries that
// belong to it. Several entries may name one effect object and then share its state. Entries may be nested to any
// depth.
class Effect
{
public:
    Effect() = default;
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;
    ~Effect();

    // One step of the active entry: reset if due, triggers, splines, draw, then the active children. `time` is in the
    // parent's time, `delta` the step of the timeline. Does nothing if `callbacks` has no effect of this name.
    void update(const float& time, float delta, std::map<std::string, Callback*>& callbacks);

    // The same where all entries of a frame share `firings`, as executeTriggers has it.
    void update(const float& time, float delta, std::map<std::string, Callback*>& callbacks, int& firings);

    // Fires what is due at `time`, in the entry's local seconds, each trigger as often as it takes to catch up.
    void executeTriggers(float time, Callback* callback);

    // The same with at most `firings` in all, which counts down, and no more than half of them for one trigger, so that
    // the others have their turn. A trigger that is not through goes on in the next frame.
    void executeTriggers(float time, Callback* callback, int& firings);

    // How often the triggers of one frame fire: far more than a show asks for, and so few that the frame comes to an
    // end also when the script repeats a trigger 2147483647 times at once.
    static constexpr int MAX_FIRINGS = 1000000;

    // Makes the entry start over: nothing has fired, a reset is due. `delta` is not used; children are not touched.
    void reverse(float delta);

    std::string mName = "new";       // registered name of the effect object
    bool mEnabled = false;           // the entry and its children run only if true
    float mStart = 0.0f;             // seconds; music time, or the parent's local time for a child
    float mEnd = 0.0f;               // seconds; the entry is active strictly before it
    bool mNeedsReset = true;         // resetTriggers is due on the next update
    std::vector<Effect*> mEffects;   // children, owned; their times count from this entry's start
    std::vector<Trigger*> mTriggers; // owned
    std::vector<Spline*> mSplines;   // owned

private:
    Callback* findCallback(const std::map<std::string, Callback*>& callbacks) const;
    void run(float time, float delta, Callback* callback, int& firings);
};

} // namespace Script
