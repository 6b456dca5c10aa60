// check, diff and shift on a show of 1,000 entries; each is to answer in less than 200 ms.

#include "difference.h"
#include "edits.h"
#include "scriptcheck.h"
#include "timemap.h"

#include <benchmark/benchmark.h>

#include <limits>
#include <string>

namespace
{

using namespace Timeline;

// Of ten effects in turn, each with five triggers and two splines of eight keys; 1.2 MB.
std::string show()
{
    static const char* const names[] = {"sun",   "ball",   "flash", "clear", "cubes",
                                        "lines", "static", "blur",  "hypno", "fire"};
    std::string text = "<script>\n";
    for (int i = 0; i < 1000; ++i)
    {
        text += "\t<effect name=\"" + std::string(names[i % 10]) + "\" start=\"" + std::to_string(i) + "\" end=\"" +
                std::to_string(i + 12) + ".5\">\n";
        for (int k = 0; k < 5; ++k)
            text += "\t\t<trigger start=\"" + std::to_string(k) +
                    ".25\" name=\"size\" value=\"1\" repeat=\"4\" delay=\"0.5\"/>\n";
        for (const char* name : {"alpha", "base"})
        {
            text += "\t\t<spline name=\"" + std::string(name) + "\" type=\"linear\">\n";
            for (int k = 0; k < 8; ++k)
                text += "\t\t\t<key time=\"" + std::to_string(k) + "\" value=\"" + std::to_string(i % 7) + "\"/>\n";
            text += "\t\t</spline>\n";
        }
        text += "\t</effect>\n";
    }
    return text + "</script>\n";
}

std::string shift(const std::string& text)
{
    const Score score(text, "bench");
    Edits edits(score.document());
    mapTimes(score, edits, shiftMap(500.0, std::numeric_limits<double>::infinity(), 2.0), false);
    return edits.apply();
}

void check(benchmark::State& state)
{
    const std::string text = show();
    for (auto _ : state) benchmark::DoNotOptimize(checkScript(text, "bench", EffectTable::builtIn()));
}

void diff(benchmark::State& state)
{
    const std::string before = show(), after = shift(before);
    for (auto _ : state) benchmark::DoNotOptimize(differences(Score(before, "a"), Score(after, "b")));
}

void shiftHalf(benchmark::State& state)
{
    const std::string text = show();
    for (auto _ : state) benchmark::DoNotOptimize(shift(text));
}

} // namespace

BENCHMARK(check)->Unit(benchmark::kMillisecond);
BENCHMARK(diff)->Unit(benchmark::kMillisecond);
BENCHMARK(shiftHalf)->Name("shift")->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
