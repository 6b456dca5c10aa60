// A frame of each effect at 800 by 600. The source is linked twice: effects_bench draws in a window, so it needs a
// display; in effects_idle_bench a GL that does nothing stands in, and what is left is the program's own share.

#include "bench_stage.h"

#include "blood.h"
#include "boolean.h"
#include "circle.h"
#include "clear.h"
#include "crashscene.h"
#include "flash.h"
#include "greetings.h"
#include "hypno.h"
#include "loading.h"
#include "overlay.h"
#include "pixels.h"
#include "radialblur.h"
#include "render2texture.h"
#include "sandrift.h"
#include "scenese.h"
#include "static.h"
#include "stencil.h"
#include "stencilop.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace
{

template <typename Class> std::unique_ptr<Tidewheel::Effect3D> make()
{
    return std::make_unique<Class>();
}

struct Row
{
    const char* name;
    std::unique_ptr<Tidewheel::Effect3D> (*make)();
    void (*prepare)(Tidewheel::Effect3D& effect); // triggers and splines for a full picture, or null
};

const Row rows[] = {
    {"blood", make<Blood>, nullptr},
    {"blur", make<RadialBlur>, nullptr},
    {"boolean", make<Boolean>, nullptr},
    {"circle", make<Circle>, nullptr},
    {"clear", make<Clear>, nullptr},
    {"crash", make<CrashScene>, [](Tidewheel::Effect3D& crash) { crash.executeTrigger(0, "speed", "0.01"); }},
    {"flash", make<Flash>, nullptr},
    {"greetings", make<Greetings>, nullptr},
    {"hypno", make<Hypno>, [](Tidewheel::Effect3D& hypno) { hypno.updateSpline(0, "alpha", 5); }},
    {"loading", make<Loading>, nullptr},
    {"overlay", make<Overlay>, [](Tidewheel::Effect3D& overlay) { overlay.updateSpline(0, "alpha", 50); }},
    {"pixels", make<Pixels>, nullptr},
    {"render2texture", make<Render2Texture>, nullptr},
    {"sandrift", make<Sandrift>, [](Tidewheel::Effect3D& sandrift) { sandrift.updateSpline(0, "alpha", 10); }},
    {"scenese", make<Scenese>, [](Tidewheel::Effect3D& scenese) { scenese.updateSpline(0, "alpha", 10); }},
    {"static", make<Static>, nullptr},
    {"stencil", make<Stencil>, nullptr},
    {"stencilop1", make<StencilOp>, nullptr},
};

// Frames of a twentieth of a second that pass once through an entry of ten seconds, and again.
void frames(benchmark::State& state, const Row& row)
{
    BenchStage& stage = BenchStage::get();
    const std::unique_ptr<Tidewheel::Effect3D> effect = row.make();
    stage.setup(*effect);
    if (row.prepare) row.prepare(*effect);
    int frame = 0;
    for (auto _ : state)
    {
        const float time = 0.05f * static_cast<float>(++frame % 200);
        stage.beginFrame();
        effect->update(time, 0.05f, time / 10);
        stage.endFrame();
    }
}

} // namespace

int main(int argc, char** argv)
{
    for (const Row& row : rows)
        benchmark::RegisterBenchmark(row.name, [&row](benchmark::State& state) { frames(state, row); })
            ->Unit(benchmark::kMicrosecond)
            ->UseRealTime();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    BenchStage::close();
    return 0;
}
