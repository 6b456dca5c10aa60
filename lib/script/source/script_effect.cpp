#include "script_effect.h"

#include <array>
#include <cstddef>

namespace Script
{

namespace
{

// An active entry whose children are being stepped through.
struct Level
{
    const Effect* entry;
    float local;      // seconds since the entry's start
    std::size_t next; // index of the child to look at next
};

// The open entries from the outermost to the innermost. A script nests a few levels, which fit into the object, so
// that a frame does not allocate; only a deeper one goes to the heap, and none goes on the program's stack.
class LevelStack
{
public:
    bool empty() const { return mCount == 0; }
    Level& top() { return mCount <= mNear.size() ? mNear[mCount - 1] : mFar.back(); }

    void push(const Level& level)
    {
        if (mCount < mNear.size())
            mNear[mCount] = level;
        else
            mFar.push_back(level);
        ++mCount;
    }

    void pop()
    {
        if (mCount > mNear.size()) mFar.pop_back();
        --mCount;
    }

private:
    std::size_t mCount = 0;
    std::array<Level, 8> mNear;
    std::vector<Level> mFar;
};

} // namespace

// Takes the children apart from the innermost up. On the way down the place of a child in its parent's list remembers
// the parent's own parent, so that nesting of any depth costs neither stack nor memory.
Effect::~Effect()
{
    for (Trigger* trigger : mTriggers) delete trigger;
    for (Spline* spline : mSplines) delete spline;

    Effect* entry = this;
    Effect* parent = nullptr;
    for (;;)
    {
        if (!entry->mEffects.empty())
        {
            Effect* child = entry->mEffects.back();
            entry->mEffects.back() = parent;
            parent = entry;
            entry = child;
            continue;
        }
        if (entry == this) return;
        delete entry;
        entry = parent;
        parent = entry->mEffects.back();
        entry->mEffects.pop_back();
    }
}

void Effect::update(const float& time, float delta, std::map<std::string, Callback*>& callbacks)
{
    int firings = MAX_FIRINGS;
    update(time, delta, callbacks, firings);
}

void Effect::update(const float& time, float delta, std::map<std::string, Callback*>& callbacks, int& firings)
{
    const float local = time - mStart;
    Callback* callback = findCallback(callbacks);
    if (!callback) return;
    run(time, delta, callback, firings);

    LevelStack levels;
    levels.push({this, local, 0});
    while (!levels.empty())
    {
        Level& level = levels.top();
        if (level.next >= level.entry->mEffects.size())
        {
            levels.pop();
            continue;
        }
        Effect* child = level.entry->mEffects[level.next++];
        const float childTime = level.local;
        if (!(child->mStart <= childTime && childTime < child->mEnd && child->mEnabled)) continue;
        callback = child->findCallback(callbacks);
        if (!callback) continue;
        child->run(childTime, delta, callback, firings);
        levels.push({child, childTime - child->mStart, 0});
    }
}

Callback* Effect::findCallback(const std::map<std::string, Callback*>& callbacks) const
{
    const auto found = callbacks.find(mName);
    return found == callbacks.end() ? nullptr : found->second;
}

// The entry's own part of an update, without its children.
void Effect::run(float time, float delta, Callback* callback, int& firings)
{
    const float position = (time - mStart) / (mEnd - mStart);
    const float local = time - mStart;
    if (mNeedsReset)
    {
        callback->resetTriggers();
        mNeedsReset = false;
    }
    executeTriggers(local, callback, firings);
    for (Spline* spline : mSplines) spline->update(callback, local);
    callback->update(local, delta, position);
}

void Effect::executeTriggers(float time, Callback* callback)
{
    int firings = MAX_FIRINGS;
    executeTriggers(time, callback, firings);
}

void Effect::executeTriggers(float time, Callback* callback, int& firings)
{
    for (Trigger* trigger : mTriggers)
    {
        const int left = firings / 2;
        while (trigger->mFired < trigger->mRepeat && firings > left &&
               time >= static_cast<float>(trigger->mFired) * trigger->mDelay + trigger->mStart)
        {
            callback->executeTrigger(time, trigger->mName, trigger->mValue);
            ++trigger->mFired;
            --firings;
        }
    }
}

void Effect::reverse(float /*delta*/)
{
    for (Trigger* trigger : mTriggers) trigger->mFired = 0;
    mNeedsReset = true;
}

} // namespace Script
