#include "script_script.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <new>
#include <sstream>

using Script::Effect;
using Script::ScriptEngine;
using Script::Spline;
using Script::Trigger;

namespace
{

std::size_t allocationCount = 0; // blocks taken from the heap by the whole program

} // namespace

__attribute__((noinline)) void* operator new(std::size_t size)
{
    ++allocationCount;
    if (void* block = std::malloc(size)) return block;
    throw std::bad_alloc();
}

// Or the sanitizer's own form would give out what is freed below.
__attribute__((noinline)) void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    ++allocationCount;
    return std::malloc(size);
}

__attribute__((noinline)) void operator delete(void* block) noexcept
{
    std::free(block);
}

__attribute__((noinline)) void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

namespace
{

// Writes down each call, " name.what(arguments)", in the log that all probes share.
struct Probe : public Script::Callback
{
    Probe(const char* name, std::ostream& log) : mName(name), mLog(log) {}

    std::ostream& log() { return mLog << ' ' << mName << '.'; }
    void resetTriggers() override { log() << "reset"; }
    void executeTrigger(float time, const std::string& name, const std::string& value) override
    {
        log() << name << '=' << value << '@' << time;
    }
    void updateSpline(float time, const std::string& name, float value) override
    {
        log() << name << '~' << value << '@' << time;
    }
    void update(float time, float delta, float position) override
    {
        log() << "draw(" << time << ',' << delta << ',' << position << ')';
    }

    const char* mName;
    std::ostream& mLog;
};

Effect* makeEntry(const char* name, float start, float end)
{
    Effect* entry = new Effect;
    entry->mName = name;
    entry->mEnabled = true;
    entry->mStart = start;
    entry->mEnd = end;
    return entry;
}

void addTrigger(Effect& entry, const char* name, float start, int repeat = 1, float delay = 0.0f)
{
    entry.mTriggers.push_back(new Trigger{0, name, "v", start, repeat, delay});
}

// An engine with the probes "a", "b", "c".
struct Timeline : public testing::Test
{
    Timeline()
    {
        for (Probe* probe : {&a, &b, &c}) engine.addCallback(probe->mName, probe);
    }

    Effect& add(const char* name, float start, float end)
    {
        engine.mEffects.push_back(makeEntry(name, start, end));
        engine.init();
        return *engine.mEffects.back();
    }

    // The calls of one update.
    std::string at(float time)
    {
        log.str("");
        engine.update(time);
        return log.str().empty() ? "" : log.str().substr(1);
    }

    std::ostringstream log;
    Probe a{"a", log}, b{"b", log}, c{"c", log};
    ScriptEngine engine;
};

} // namespace

TEST_F(Timeline, entryRunsFromItsStartUpToButNotAtItsEnd)
{
    add("a", 10.0f, 20.0f);
    EXPECT_EQ(at(9.999f), "");
    EXPECT_EQ(at(10.0f), "a.reset a.draw(0,0.0010004,0)");
    EXPECT_TRUE(engine.update(-0.5f)); // no time of the show
    EXPECT_TRUE(engine.update(NAN));
    EXPECT_EQ(at(15.0f), "a.draw(5,5,0.5)");
    EXPECT_EQ(at(15.0f), "a.draw(5,0,0.5)");
    EXPECT_NE(at(19.999f), "");
    EXPECT_EQ(at(20.0f), "");
}

TEST_F(Timeline, showEndsAfterTheLatestEnd)
{
    EXPECT_TRUE(engine.update(0.0f));
    EXPECT_FALSE(engine.update(0.001f));
    add("a", 0.0f, 100.0f);
    add("a", 50.0f, 60.0f).mEnabled = false;
    add("a", 0.0f, NAN);
    EXPECT_TRUE(engine.update(100.0f));
    EXPECT_FALSE(engine.update(100.001f));
    engine.mEffects[1]->mEnd = 200.0f; // the length of the show is fixed when the script is read
    EXPECT_FALSE(engine.update(150.0f));
}

TEST_F(Timeline, orderIsResetTriggersSplinesDrawChildren)
{
    Effect& first = add("a", 1.0f, 9.0f);
    add("c", 0.0f, 9.0f);
    addTrigger(first, "t", 0.5f);
    addTrigger(first, "s", 0.25f);
    first.mSplines = {new Spline, new Spline};
    first.mSplines[1]->mValueOffset = 7.0f;
    first.mEffects = {makeEntry("b", 1.0f, 3.0f), makeEntry("c", 0.0f, 2.0f), makeEntry("c", 2.0f, 2.5f)};
    first.mEffects[0]->mEffects.push_back(makeEntry("a", 0.0f, 9.0f));
    EXPECT_EQ(at(3.0f), "a.reset a.t=v@2 a.s=v@2 a.new~0@2 a.new~7@2 a.draw(2,3,0.25) b.reset b.draw(1,3,0.5) "
                        "a.reset a.draw(1,3,0.111111) c.reset c.draw(0,3,0) c.reset c.draw(3,3,0.333333)");
}

TEST_F(Timeline, unknownOrDisabledEntryKeepsItsChildrenFromRunning)
{
    add("nobody", 0.0f, 9.0f).mEffects.push_back(makeEntry("b", 0.0f, 9.0f));
    Effect& off = add("a", 0.0f, 9.0f);
    off.mEnabled = false;
    off.mEffects.push_back(makeEntry("b", 0.0f, 9.0f));
    Effect& on = add("a", 0.0f, 9.0f);
    on.mEffects = {makeEntry("b", 0.0f, 9.0f), makeEntry("nobody", 0.0f, 9.0f)};
    on.mEffects[0]->mEnabled = false;
    on.mEffects[1]->mEffects.push_back(makeEntry("b", 0.0f, 9.0f));
    EXPECT_EQ(at(1.0f), "a.reset a.draw(1,1,0.111111)");
    engine.mEffects[0]->mName = "c"; // edited while the show runs
    engine.addCallback("c", &a);     // the later one of a name counts
    EXPECT_EQ(at(1.0f), "a.reset a.draw(1,0,0.111111) b.reset b.draw(1,0,0.111111) a.draw(1,0,0.111111)");
}

TEST_F(Timeline, triggersCatchUpWithTheCurrentTime)
{
    Effect& entry = add("a", 0.0f, 100.0f);
    addTrigger(entry, "r", 1.0f, 3, 0.5f);
    addTrigger(entry, "once", 2.0f);
    addTrigger(entry, "early", -5.0f);
    addTrigger(entry, "never", 0.0f, 0);
    addTrigger(entry, "together", 3.0f, 3);
    addTrigger(entry, "nan", NAN, 3);
    addTrigger(entry, "inf", 0.0f, 3, INFINITY);
    EXPECT_EQ(at(0.5f), "a.reset a.early=v@0.5 a.draw(0.5,0.5,0.005)");
    EXPECT_EQ(at(1.75f), "a.r=v@1.75 a.r=v@1.75 a.draw(1.75,1.25,0.0175)");
    EXPECT_EQ(at(2.0f), "a.r=v@2 a.once=v@2 a.draw(2,0.25,0.02)");
    EXPECT_EQ(at(3.0f), "a.together=v@3 a.together=v@3 a.together=v@3 a.draw(3,1,0.03)");
    EXPECT_EQ(at(4.0f), "a.draw(4,1,0.04)");
}

TEST_F(Timeline, triggersWithoutEndGoOnInTheNextFrame)
{
    log.setstate(std::ios::failbit); // which makes it write nothing
    std::vector<Trigger*> endless;
    for (int i = 0; i < 30; ++i)
    {
        addTrigger(add("a", 0.0f, 9.0f), "endless", 0.0f, 2000000000);
        endless.push_back(engine.mEffects.back()->mTriggers[0]);
        if (i == 0) addTrigger(*engine.mEffects[0], "few", 0.0f, 1000, 0.001f);
    }
    for (int frame = 1; frame <= 2; ++frame)
    {
        engine.update(2.0f);
        EXPECT_EQ(endless[0]->mFired, frame * Effect::MAX_FIRINGS / 2);
        EXPECT_EQ(engine.mEffects[0]->mTriggers[1]->mFired, 1000);
    }
    EXPECT_EQ(endless[29]->mFired, 0);
}

TEST_F(Timeline, seekBackResetsAndFiresAgainButChildrenKeepTheirState)
{
    Effect& entry = add("a", 0.0f, 8.0f);
    addTrigger(entry, "t", 1.0f);
    addTrigger(entry, "u", 3.0f);
    entry.mEffects.push_back(makeEntry("b", 0.0f, 8.0f));
    addTrigger(*entry.mEffects[0], "w", 0.0f);
    Effect& later = add("c", 6.0f, 8.0f);
    EXPECT_EQ(at(4.0f), "a.reset a.t=v@4 a.u=v@4 a.draw(4,4,0.5) b.reset b.w=v@4 b.draw(4,4,0.5)");
    EXPECT_EQ(at(7.0f), "a.draw(7,3,0.875) b.draw(7,3,0.875) c.reset c.draw(1,3,0.5)");
    EXPECT_EQ(at(2.0f), "a.reset a.t=v@2 a.draw(2,-5,0.25) b.draw(2,-5,0.25)");
    EXPECT_TRUE(later.mNeedsReset); // until it is active again
    EXPECT_EQ(at(7.0f), "a.u=v@7 a.draw(7,5,0.875) b.draw(7,5,0.875) c.reset c.draw(1,5,0.5)");
}

TEST_F(Timeline, frameTakesNothingFromTheHeap)
{
    log.setstate(std::ios::failbit); // which makes it write nothing
    Effect* entry = &add("a", 0.0f, 8.0f);
    for (int depth = 1; depth < 8; ++depth)
    {
        addTrigger(*entry, "t", 0.0f, 100, 0.01f);
        entry->mSplines.push_back(new Spline);
        entry->mEffects.push_back(makeEntry("a", 0.0f, 8.0f));
        entry = entry->mEffects[0];
    }
    engine.update(0.5f);
    const std::size_t before = allocationCount;
    engine.update(2.0f);
    engine.update(1.0f);
    EXPECT_EQ(allocationCount, before);
    EXPECT_FALSE(entry->mNeedsReset); // the innermost did run
}

TEST_F(Timeline, entriesOfAnyDepthRunAndAreFreed)
{
    Effect* innermost = &add("a", 0.0f, 8.0f);
    for (int depth = 1; depth < 100000; ++depth)
    {
        innermost->mEffects.push_back(makeEntry(depth == 99999 ? "b" : "a", depth % 20000 ? 0.0f : 1.0f, 8.0f));
        innermost = innermost->mEffects[0];
    }
    const std::string last = " a.draw(2,6,0.25) b.reset b.draw(2,6,0.25)"; // four levels start a second later
    const std::string calls = at(6.0f);
    EXPECT_EQ(calls.substr(calls.size() - last.size()), last);
}
