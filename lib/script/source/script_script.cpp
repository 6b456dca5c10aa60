#include "script_script.h"

#include <algorithm>

namespace Script
{

ScriptEngine::~ScriptEngine()
{
    for (Effect* entry : mEffects) delete entry;
}

void ScriptEngine::addCallback(const std::string& name, Callback* callback)
{
    mCallbacks[name] = callback;
}

void ScriptEngine::init()
{
    mEndTime = 0.0f;
    for (const Effect* entry : mEffects) mEndTime = std::max(mEndTime, entry->mEnd);
}

bool ScriptEngine::update(const float& time)
{
    // A time that is not a number is no time either.
    if (!(time >= 0.0f)) return true;

    const float delta = time - mLastTime;
    mLastTime = time;
    if (time > mEndTime) return false;

    int firings = Effect::MAX_FIRINGS;
    for (Effect* entry : mEffects)
    {
        if (delta < 0.0f) entry->reverse(delta);
        if (entry->mEnabled && entry->mStart <= time && time < entry->mEnd)
            entry->update(time, delta, mCallbacks, firings);
    }
    return true;
}

} // namespace Script
