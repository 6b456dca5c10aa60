#pragma once

#include "gr_pool.h"

#include <cstddef>
#include <string>

namespace Script
{

// An event in an entry's local time: it hands a name and a text to the entry's effect. Firing n, from 0, is due at
// mStart + n * mDelay. The entry drives it (Effect::executeTriggers) and sets it back (Effect::reverse).
class Trigger
{
public:
    static void* operator new(std::size_t size) { return Pool<Trigger>::take(size); }
    static void operator delete(void* trigger, std::size_t size) { Pool<Trigger>::give(trigger, size); }

    int mFired = 0; // firings since the last reset; not stored in the script
    std::string mName = "new";
    std::string mValue;  // any text; the effect makes sense of it
    float mStart = 0.0f; // seconds, first firing
    int mRepeat = 1;     // firings in all; 0 or less never fires
    float mDelay = 0.0f; // seconds between firings
};

} // namespace Script
