// A frame of each effect at 800 by 600. The source is linked twice: effects_bench draws in a window, so it needs a
// display; in effects_idle_bench a GL that does nothing stands in, and what is left is the program's own share.

#include "bench_stage.h"

#include "ball.h"
#include "blood.h"
#include "boolean.h"
#include "circle.h"
#include "clear.h"
#include "crashscene.h"
#include "cubes.h"
#include "fire.h"
#include "flash.h"
#include "greetings.h"
#include "hypno.h"
#include "infinity.h"
#include "lighting.h"
#include "linesscene.h"
#include "loading.h"
#include "overlay.h"
#include "particlesscene.h"
#include "pixels.h"
#include "preball.h"
#include "radialblur.h"
#include "render2texture.h"
#include "sandrift.h"
#include "scenese.h"
#include "static.h"
#include "stencil.h"
#include "stencilop.h"
#include "sun.h"
#include "twisterscene.h"

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

// All 4096 cubes of the deepest level.
void showCubes(Tidewheel::Effect3D& cubes)
{
    for (int level = 0; level < 4; ++level) cubes.executeTrigger(0, "split", "");
    cubes.updateSpline(0, "explode", 20);
    cubes.updateSpline(0, "alpha", 20);
}

// As many shells and lights as a script can ask for.
void showMostOfBall(Tidewheel::Effect3D& ball)
{
    for (const char* name : {"layers", "count"}) ball.executeTrigger(0, name, "9999999");
}

void showFire(Tidewheel::Effect3D& fire)
{
    fire.updateSpline(0, "intensity", 50);
    fire.updateSpline(0, "size", 10);
}

void showLighting(Tidewheel::Effect3D& lighting)
{
    lighting.updateSpline(0, "alpha", 10);
    lighting.updateSpline(0, "mod", 10);
}

const Row rows[] = {
    {"ball", make<Ball>, nullptr},
    {"ball, most", make<Ball>, showMostOfBall},
    {"blood", make<Blood>, nullptr},
    {"blur", make<RadialBlur>, nullptr},
    {"boolean", make<Boolean>, nullptr},
    {"circle", make<Circle>, nullptr},
    {"clear", make<Clear>, nullptr},
    {"crash", make<CrashScene>, [](Tidewheel::Effect3D& crash) { crash.executeTrigger(0, "speed", "0.01"); }},
    {"cubes", make<Cubes>, showCubes},
    {"fire", make<Fire>, showFire},
    {"flash", make<Flash>, nullptr},
    {"greetings", make<Greetings>, nullptr},
    {"hypno", make<Hypno>, [](Tidewheel::Effect3D& hypno) { hypno.updateSpline(0, "alpha", 5); }},
    {"infinity", make<Infinity>, nullptr},
    {"lighting", make<Lighting>, showLighting},
    {"lines", make<LinesScene>, nullptr},
    {"lines, most", make<LinesScene>, [](Tidewheel::Effect3D& lines) { lines.executeTrigger(0, "count", "9999999"); }},
    {"loading", make<Loading>, nullptr},
    {"overlay", make<Overlay>, [](Tidewheel::Effect3D& overlay) { overlay.updateSpline(0, "alpha", 50); }},
    {"particles", make<ParticlesScene>, nullptr},
    {"pixels", make<Pixels>, nullptr},
    {"preball", make<PreBall>, nullptr},
    {"render2texture", make<Render2Texture>, nullptr},
    {"sandrift", make<Sandrift>, [](Tidewheel::Effect3D& sandrift) { sandrift.updateSpline(0, "alpha", 10); }},
    {"scenese", make<Scenese>, [](Tidewheel::Effect3D& scenese) { scenese.updateSpline(0, "alpha", 10); }},
    {"static", make<Static>, nullptr},
    {"stencil", make<Stencil>, nullptr},
    {"stencilop1", make<StencilOp>, nullptr},
    {"sun", make<Sun>, [](Tidewheel::Effect3D& sun) { sun.updateSpline(0, "alpha", 10); }},
    {"twister", make<TwisterScene>, nullptr},
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
