// The timeline under a load no show has: 1,000 entries that all run, with 10,000 triggers and 1,000 splines between
// them; and loading and saving of a script of 5 MB, each beside the part of it that is XML.

#include "script_loadxml.h"
#include "script_savexml.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace
{

class Sum : public Script::Callback
{
public:
    void executeTrigger(float time, const std::string&, const std::string&) override { mSum += time; }
    void updateSpline(float, const std::string&, float value) override { mSum += value; }
    void update(float time, float, float) override { mSum += time; }

    float mSum = 0.0f;
};

// A hundred seconds; entries of forty names, each with ten triggers and a spline of eight keys.
void fill(Script::ScriptEngine& engine, int count, float end)
{
    static const char* const TYPES[] = {"square", "linear", "bezier", "smooth"};
    for (int i = 0; i < count; ++i)
    {
        auto* entry = new Script::Effect;
        entry->mName = "effect" + std::to_string(i % 40);
        entry->mEnabled = true;
        entry->mEnd = end;
        for (int k = 0; k < 10; ++k)
        {
            auto* trigger = new Script::Trigger;
            trigger->mName = "color";
            trigger->mValue = "000000255";
            trigger->mStart = 10.0f * static_cast<float>(k) + 0.1f * static_cast<float>(i % 100);
            entry->mTriggers.push_back(trigger);
        }
        auto* spline = new Script::Spline;
        spline->mType = TYPES[i % 4];
        for (int k = 0; k < 8; ++k)
        {
            spline->mKeys.push_back(
                new Script::Spline::Key{12.5f * static_cast<float>(k), 0.1f * static_cast<float>(k), 0});
        }
        spline->recalculate();
        entry->mSplines.push_back(spline);
        engine.mEffects.push_back(entry);
    }
    engine.init();
}

void registerAll(Script::ScriptEngine& engine, Sum& sum)
{
    for (int i = 0; i < 40; ++i) engine.addCallback("effect" + std::to_string(i), &sum);
}

// Forwards through the show, a sixtieth of a second at a time.
void updateTimeline(benchmark::State& state)
{
    Script::ScriptEngine engine;
    Sum sum;
    fill(engine, 1000, 100.0f);
    registerAll(engine, sum);
    float time = 0.0f;
    for (auto _ : state)
    {
        engine.update(time);
        time = time < 99.0f ? time + 1.0f / 60.0f : 0.0f;
    }
    benchmark::DoNotOptimize(sum.mSum);
}
BENCHMARK(updateTimeline)->Unit(benchmark::kMicrosecond);

// A show as it is: of a thousand entries ten run at a time.
void updateMostlyIdle(benchmark::State& state)
{
    Script::ScriptEngine engine;
    Sum sum;
    fill(engine, 1000, 100.0f);
    registerAll(engine, sum);
    for (std::size_t i = 0; i < 1000; ++i)
    {
        engine.mEffects[i]->mStart = static_cast<float>(i / 10);
        engine.mEffects[i]->mEnd = static_cast<float>(i / 10 + 1);
    }
    float time = 0.0f;
    for (auto _ : state)
    {
        engine.update(time);
        time = time < 99.0f ? time + 1.0f / 60.0f : 0.0f;
    }
    benchmark::DoNotOptimize(sum.mSum);
}
BENCHMARK(updateMostlyIdle)->Unit(benchmark::kMicrosecond);

// Each step goes back and fires every trigger up to there again.
void seekBackwards(benchmark::State& state)
{
    Script::ScriptEngine engine;
    Sum sum;
    fill(engine, 1000, 100.0f);
    registerAll(engine, sum);
    float time = 99.0f;
    engine.update(time);
    for (auto _ : state)
    {
        time = time > 1.0f ? time - 1.0f / 60.0f : 99.0f;
        engine.update(time);
    }
    benchmark::DoNotOptimize(sum.mSum);
}
BENCHMARK(seekBackwards)->Unit(benchmark::kMicrosecond);

std::string bigScript()
{
    Script::ScriptEngine engine;
    fill(engine, 4000, 100.0f);
    return Script::SaveXML().saveMem(engine);
}

void countBytes(benchmark::State& state, const std::string& text)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text.size()));
}

// What loading stands beside: its document alone.
void parseScript(benchmark::State& state)
{
    const std::string text = bigScript();
    for (auto _ : state)
    {
        Xml::XmlParser document;
        document.parse(text);
    }
    countBytes(state, text);
}
BENCHMARK(parseScript)->Unit(benchmark::kMillisecond);

void loadScript(benchmark::State& state)
{
    const std::string text = bigScript();
    for (auto _ : state)
    {
        Script::ScriptEngine engine;
        if (!Script::LoadXML().loadMem(text.data(), static_cast<long>(text.size()), engine))
            state.SkipWithError("refused");
    }
    countBytes(state, text);
}
BENCHMARK(loadScript)->Unit(benchmark::kMillisecond);

// What saving stands beside: the document written, when its tree is there already.
void writeScript(benchmark::State& state)
{
    Xml::XmlParser document;
    document.parse(bigScript());
    std::string text;
    for (auto _ : state) document.write(text, "\t");
    countBytes(state, text);
}
BENCHMARK(writeScript)->Unit(benchmark::kMillisecond);

void saveScript(benchmark::State& state)
{
    Script::ScriptEngine engine;
    fill(engine, 4000, 100.0f);
    std::string text;
    for (auto _ : state) text = Script::SaveXML().saveMem(engine);
    countBytes(state, text);
}
BENCHMARK(saveScript)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
