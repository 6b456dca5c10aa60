#pragma once

#include "script_callback.h"
#include "script_effect.h"

#include <map>
#include <string>
#include <vector>

namespace Script
{

// The show's score: entries on the music clock, and the effect objects they drive by name. An update is what draws. The
// fields are open, since the editor changes entries, triggers and splines while the show runs; a change acts on the
// next update. Entries and effect objects meet only by name, so the order of loading and registering does not matter.
class ScriptEngine
{
public:
    ScriptEngine() = default;
    ScriptEngine(const ScriptEngine&) = delete;
    ScriptEngine& operator=(const ScriptEngine&) = delete;
    ~ScriptEngine();

    // Registers an effect object, which stays the caller's; a later one of the same name takes its place.
    void addCallback(const std::string& name, Callback* callback);

    // Works out mEndTime. Only the reader of the script calls it: an end edited later does not change the show's
    // length.
    void init();

    // One step of the timeline to `time`, in seconds of music. A step backwards makes every top-level entry start over.
    // False when the show is over. A time below 0 does nothing and is true.
    bool update(const float& time);

    float mLastTime = 0.0f;                      // seconds; time of the last update that was not negative
    float mEndTime = 0.0f;                       // seconds; end of the last top-level entry
    std::map<std::string, Callback*> mCallbacks; // not owned
    std::vector<Effect*> mEffects;               // owned; script order, which is also the layer order on screen
};

} // namespace Script
