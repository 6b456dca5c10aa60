// How long a frame waits for the HUD. The timeline has 100 entries of which 20 are expanded, each with 10 triggers and
// 5 splines of 16 keys.

#include "tw_hud.h"

#include "script_script.h"

#include "am.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace
{

void fill(Script::ScriptEngine& engine)
{
    static const char* const types[] = {"square", "linear", "bezier", "smooth"};
    for (int i = 0; i < 100; ++i)
    {
        Script::Effect* effect = new Script::Effect;
        effect->mName = "effect number " + std::to_string(i);
        effect->mEnabled = true;
        effect->mStart = static_cast<float>(i);
        effect->mEnd = static_cast<float>(i + 60);
        engine.mEffects.push_back(effect);
        for (int k = 0; k < 10; ++k)
        {
            Script::Trigger* trigger = new Script::Trigger;
            trigger->mStart = static_cast<float>(k);
            trigger->mRepeat = 8;
            trigger->mDelay = 0.5f;
            effect->mTriggers.push_back(trigger);
        }
        for (int s = 0; s < 5; ++s)
        {
            Script::Spline* spline = new Script::Spline;
            spline->mType = types[s % 4];
            for (int k = 0; k < 16; ++k)
                spline->mKeys.push_back(
                    new Script::Spline::Key{4.0f * static_cast<float>(k), std::sin(static_cast<float>(k)), 0.0f});
            spline->recalculate();
            effect->mSplines.push_back(spline);
        }
    }
}

void redraw(benchmark::State& state, int selected)
{
    AM::ArchiveManager archive;
    archive.addArchive(HUD_DATA_FOLDER);
    Script::ScriptEngine engine;
    fill(engine);
    Tidewheel::HUD hud(archive);
    hud.setScriptEngine(&engine);
    for (std::size_t i = 0; i < 20; ++i) hud.mEffectStatus[i].mExpanded = true;
    hud.mCurrentEffect = selected;
    hud.mWindowStart = 20.0f;
    for (auto _ : state) hud.redraw();
}

void redrawAtTheTop(benchmark::State& state)
{
    redraw(state, 0);
}

// All expanded entries lie above the visible part.
void redrawAtTheEnd(benchmark::State& state)
{
    redraw(state, 99);
}

// Every visible row is a trigger that repeats a million times.
void redrawMillionsOfFirings(benchmark::State& state)
{
    AM::ArchiveManager archive;
    archive.addArchive(HUD_DATA_FOLDER);
    Script::ScriptEngine engine;
    fill(engine);
    for (int k = 0; k < 40; ++k)
    {
        Script::Trigger* trigger = new Script::Trigger;
        trigger->mRepeat = 1000000;
        trigger->mDelay = 0.0001f;
        engine.mEffects[0]->mTriggers.push_back(trigger);
    }
    Tidewheel::HUD hud(archive);
    hud.setScriptEngine(&engine);
    hud.mEffectStatus[0].mExpanded = true;
    for (auto _ : state) hud.redraw();
}

} // namespace

BENCHMARK(redrawAtTheTop)->Unit(benchmark::kMicrosecond);
BENCHMARK(redrawAtTheEnd)->Unit(benchmark::kMicrosecond);
BENCHMARK(redrawMillionsOfFirings)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
