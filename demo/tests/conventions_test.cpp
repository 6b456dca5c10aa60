// What holds for every effect: it makes the calls that demo/tests/calls tells, only such as OpenGL takes, leaves the
// state for the next effect of the frame as its description says, and frees what its setup made.
//
// After a wanted change of what an effect draws, the calls are written anew, and git diff shows what became of them:
//
//     RENEW_CALLS=1 build/release/demo/effects_tests --gtest_filter='Effects.makeTheCallsOfTheirLists'

#include "ball.h"
#include "blood.h"
#include "boolean.h"
#include "circle.h"
#include "clear.h"
#include "crashscene.h"
#include "cubes.h"
#include "effect_calls.h"
#include "effect_helpers.h"
#include "effect_testing.h"
#include "fire.h"
#include "flash.h"
#include "greetings.h"
#include "hypno.h"
#include "infinity.h"
#include "lighting.h"
#include "linesscene.h"
#include "fe_sorrel.h"
#include "loading.h"
#include "meta.h"
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

#include <memory>

using GLRecorder::gl;

namespace
{

const GLenum capabilities[] = {GL_TEXTURE_2D,   GL_BLEND, GL_DEPTH_TEST, GL_LIGHTING,      GL_CULL_FACE,
                               GL_STENCIL_TEST, GL_FOG,   GL_LIGHT0,     GL_COLOR_MATERIAL};

template <typename Class> std::unique_ptr<Tidewheel::Effect3D> make()
{
    return std::make_unique<Class>();
}

// In an engine whose one node is the one that the balls float at.
std::unique_ptr<Tidewheel::Effect3D> makeMeta()
{
    static Fennel::Sorrel::Engine engine;
    if (engine.mNodes.empty()) engine.mNodes.push_back(new Fennel::Sorrel::Node(nullptr));
    engine.mNodes[0]->mName = "metaball";
    auto meta = std::make_unique<Meta>();
    meta->mEngine = &engine;
    return meta;
}

struct Case
{
    const char* name;
    std::unique_ptr<Tidewheel::Effect3D> (*make)();
    // Texture, blend, depth, lighting, cull, stencil, fog, light 0, colour material: left on, off, or . as they were.
    const char* left;
    // What it is asked while its calls are listed: "trigger=value", "~spline=value", "@time delta position" for a
    // frame, and "reset" as at the start of an entry.
    const char* script;
};

const Case cases[] = {
    {"Clear", make<Clear>, ".........", "@0 0 0; color=001002255; @0 0 0"},
    {"Flash", make<Flash>, "-+---....", "r=1; g=0.5; b=0.25; reset; @3 0.02 0.75"},
    {"Overlay", make<Overlay>, "++---....", "~alpha=50; @0 0 0"},
    {"Stencil", make<Stencil>, "...--+...", "@0 0 0"},
    {"StencilOp", make<StencilOp>, ".........",
     "@0 0 0; mode=exclude; @0 0 0; mode=Include; @0 0 0; mode=normal; @0 0 0; mode=include; @0 0 0"},
    {"Circle", make<Circle>, ".----....", "@0 0 0.25"},
    {"Static", make<Static>, "--++.....",
     "@0 0 0; falloffspeed=0.5; falloff=now; size=2; @1 0.02 0; @2.5 0.02 0; @0.5 0 0"},
    {"Blood", make<Blood>, "-+---....", "@0 0 0; @0 0 0.5; @0 0 1"},
    {"Render2Texture", make<Render2Texture>, ".........", "@0 0 0"},
    {"RadialBlur", make<RadialBlur>, "--++.....",
     "@0 0 0; amount=0.5; step=3; lowstep=0.5; falloffspeed=0.5; falloff=; @1 0 0; @9 0 0"},
    {"CrashScene", make<CrashScene>, "--++-....",
     "speed=0.5; crash=; @0.5 0 0; crash=; @1 0 0; crash=; @1 0 0; crash=; @1 0 0; @3 0 0"},
    {"Boolean", make<Boolean>, "..+-+-.++", "@0.3 0 0"},
    {"Pixels", make<Pixels>, "++--...++", "@0 0 0"},
    {"Greetings", make<Greetings>, "-+++.....",
     "@0 0 0; text=paper mangle; size=0.01; r=0.25; g=0.5; b=0.75; ~alpha=5; ~posx=-4; ~posy=3; @0 0 0; text=nobody; "
     "@0 0 0"},
    {"Hypno", make<Hypno>, "-+++..-..", "@0 0 0; ~twist=5; ~spread=3; ~alpha=4; @2.5 0.02 0"},
    {"Loading", make<Loading>, "-+++.....", "@0 0 0; @0 0 0.5; @0 0 1"},
    {"Sandrift", make<Sandrift>, "++---....", "~alpha=5; @0 0 0; change=; @0 0 0; reset; @0 0 0"},
    {"Scenese", make<Scenese>, "++---....",
     "~alpha=5; ~offset=3; ~zoom=-10; @1 0 0.25; jump=; jumpspeed=2; @0.5 0 0.5; jumpheight=1; jump=; @9 0 1"},
    {"Ball", make<Ball>, "++--+....",
     "count=3; layers=2; @0 0 0; ~alphastep=40; ~step=10; ~size=16; speed=500; move=; @2.5 0.5 0.25; reset; @-1 -1 1"},
    {"PreBall", make<PreBall>, "-+--.....", "@0 0 0.25; @0 0 1"},
    {"ParticlesScene", make<ParticlesScene>, "+-++.....",
     "@0 0 0; enlarge=2; expand=1.5; @0.25 0.25 0; contract=; @3 0.02 0"},
    {"Fire", make<Fire>, ".----....", "@0 0 0; ~intensity=40; ~size=7.1; @1 1 0; @0 -1.5 0"},
    {"Sun", make<Sun>, "++--.....", "@0 0 0; ~alpha=20; ~width=10; ~base=5; ~cone=20; ~rotate=90; @0.9 5 0; @0 -5 0"},
    {"Cubes", make<Cubes>, "-++-+....",
     "@0 0 0; ~explode=12; ~alpha=10; ~zoom=1.5; ~bounce=2; @1 0 0; any=; @2 0 0; split=; @3 0 0; a=; b=; @1 0 0; c=; "
     "@1 0 0; reset; @1 0 0"},
    {"Infinity", make<Infinity>, "-++-+....", "@0 0 0; @1 0.1 0; @2 -0.2 0; @3 10 0"},
    {"LinesScene", make<LinesScene>, "++++.....", "@0 0 0; count=5; ~alpha=5; @0 0 0; count=-1; @0 0 0"},
    {"Lighting", make<Lighting>, "-+---....", "@0 0 0; ~alpha=10; ~mod=20; @0 0.25 0; @0 -0.5 0"},
    {"TwisterScene", make<TwisterScene>, "+-+++...+", "@1 0 0; ~speed=5; @8 0.02 0"},
    {"Meta", makeMeta, "+.+++..++", "@0 0 0; @0 0.5 0"},
};

} // namespace

TEST(Effects, leaveTheStateForTheNextOfTheFrame)
{
    Stage stage;
    for (const Case& entry : cases)
        for (bool before : {false, true})
        {
            SCOPED_TRACE(entry.name);
            const std::unique_ptr<Tidewheel::Effect3D> effect = entry.make();
            stage.setup(*effect);
            for (GLenum capability : capabilities) gl.state.enabled[capability] = before;
            effect->update(0.25f, 0.02f, 0.25f);

            std::string left;
            for (GLenum capability : capabilities)
            {
                const char expected = entry.left[left.size()];
                const bool on = gl.on(capability);
                left += expected == '.' && on == before ? '.' : on ? '+' : '-';
            }
            EXPECT_EQ(left, entry.left);
        }
}

TEST(Effects, makeTheCallsOfTheirLists)
{
    for (const Case& entry : cases)
    {
        Stage stage;
        std::srand(38912);
        Infinity::mytime = 0;
        crashType = 0;
        const std::unique_ptr<Tidewheel::Effect3D> effect = entry.make();
        compareCalls(entry.name, listCalls(stage, *effect, entry.script));
    }
}

TEST(Effects, drawLegallyAndFreeWhatTheirSetupMade)
{
    Stage stage;
    const size_t textures = gl.textures.size();
    const size_t lists = gl.lists.size();
    for (const Case& entry : cases)
    {
        SCOPED_TRACE(entry.name);
        {
            const std::unique_ptr<Tidewheel::Effect3D> effect = entry.make();
            stage.setup(*effect);
            for (float position : {0.0f, 0.5f, 1.0f, -0.5f}) stage.draw(*effect, 8 * position, position, 0.02f);
        }
        EXPECT_EQ(gl.textures.size(), textures);
        EXPECT_EQ(gl.lists.size(), lists);
        entry.make(); // one that loading never reached
        EXPECT_EQ(gl.textures.size(), textures);
    }
}

// What a typing error must not do: draw for minutes, while no key is heard.
TEST(Effects, drawNoMoreThanAFrameCanTake)
{
    Stage stage;
    Ball ball;
    LinesScene lines;
    stage.setup(ball);
    stage.setup(lines);
    const std::pair<const char*, int> counts[] = {{"9", 9}, {"1000", 1000}, {"10001", 10000}, {"9999999999", 10000}};
    for (const auto& [text, count] : counts)
    {
        for (const char* name : {"count", "layers"}) trigger(ball, name, text);
        trigger(lines, "count", text);
        ASSERT_EQ(ball.mCount, count);
        ASSERT_EQ(ball.mLayers, std::min(count, 1000));
        stage.draw(lines, 0);
        ASSERT_EQ(gl.primitives.size(), size_t(count));
    }
}

TEST(TriggerNumbers, areReadFromTheStartOfTheText)
{
    EXPECT_EQ(readFloat("0.5 of it"), 0.5f);
    EXPECT_EQ(readFloat("none"), 0);
    EXPECT_EQ(readFloat(""), 0);
    EXPECT_EQ(readInteger("12.9"), 12);
    EXPECT_EQ(readInteger("0x10"), 0);
    EXPECT_EQ(readInteger("99999999999"), INT_MAX);
}
