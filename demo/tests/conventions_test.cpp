// What holds for every effect: it makes only calls that OpenGL takes, leaves the state for the next effect of the frame
// as its description says, and frees what its setup made.

#include "ball.h"
#include "blood.h"
#include "boolean.h"
#include "circle.h"
#include "clear.h"
#include "crashscene.h"
#include "cubes.h"
#include "effect_helpers.h"
#include "effect_testing.h"
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

struct Case
{
    const char* name;
    std::unique_ptr<Tidewheel::Effect3D> (*make)();
    // Texture, blend, depth, lighting, cull, stencil, fog, light 0, colour material: left on, off, or . as they were.
    const char* left;
};

const Case cases[] = {
    {"Clear", make<Clear>, "........."},
    {"Flash", make<Flash>, "-+---...."},
    {"Overlay", make<Overlay>, "++---...."},
    {"Stencil", make<Stencil>, "...--+..."},
    {"StencilOp", make<StencilOp>, "........."},
    {"Circle", make<Circle>, ".----...."},
    {"Static", make<Static>, "--++....."},
    {"Blood", make<Blood>, "-+---...."},
    {"Render2Texture", make<Render2Texture>, "........."},
    {"RadialBlur", make<RadialBlur>, "--++....."},
    {"CrashScene", make<CrashScene>, "--++-...."},
    {"Boolean", make<Boolean>, "..+-+-.++"},
    {"Pixels", make<Pixels>, "++--...++"},
    {"Greetings", make<Greetings>, "-+++....."},
    {"Hypno", make<Hypno>, "-+++..-.."},
    {"Loading", make<Loading>, "-+++....."},
    {"Sandrift", make<Sandrift>, "++---...."},
    {"Scenese", make<Scenese>, "++---...."},
    {"Ball", make<Ball>, "++--+...."},
    {"PreBall", make<PreBall>, "-+--....."},
    {"ParticlesScene", make<ParticlesScene>, "+-++....."},
    {"Fire", make<Fire>, ".----...."},
    {"Sun", make<Sun>, "++--....."},
    {"Cubes", make<Cubes>, "-++-+...."},
    {"Infinity", make<Infinity>, "-++-+...."},
    {"LinesScene", make<LinesScene>, "++++....."},
    {"Lighting", make<Lighting>, "-+---...."},
    {"TwisterScene", make<TwisterScene>, "+-+++...+"},
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

TEST(Effects, drawLegallyAndFreeWhatTheirSetupMade)
{
    Stage stage;
    const int textures = gl.textures;
    const size_t lists = gl.lists.size();
    for (const Case& entry : cases)
    {
        SCOPED_TRACE(entry.name);
        {
            const std::unique_ptr<Tidewheel::Effect3D> effect = entry.make();
            stage.setup(*effect);
            for (float position : {0.0f, 0.5f, 1.0f, -0.5f}) stage.draw(*effect, 8 * position, position, 0.02f);
        }
        EXPECT_EQ(gl.textures, textures);
        EXPECT_EQ(gl.lists.size(), lists);
        entry.make(); // one that loading never reached
        EXPECT_EQ(gl.textures, textures);
    }
}

TEST(Effects, ignoreTriggersAndSplinesThatTheyDoNotKnow)
{
    Stage stage;
    for (const Case& entry : cases)
    {
        SCOPED_TRACE(entry.name);
        const std::unique_ptr<Tidewheel::Effect3D> effect = entry.make();
        stage.setup(*effect);
        std::srand(1);
        effect->update(0.25f, 0, 0.25f);
        const std::vector<std::string> calls = gl.calls;

        for (const char* name : {"", "Color", "R", "mode ", "falloff1", "Alpha", "JUMP", "max", "percent"})
        {
            if (std::string(entry.name) != "Cubes") effect->executeTrigger(0.1f, name, "1"); // they split on any name
            effect->updateSpline(0.1f, name, 77);
        }
        gl.beginFrame();
        std::srand(1);
        effect->update(0.25f, 0, 0.25f);
        EXPECT_EQ(gl.calls, calls);
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

TEST(SoftSpot, fallsFromTheMiddleAndRisesAgainInTheCorners)
{
    for (int size : {32, 64})
    {
        const std::vector<unsigned char> spot = makeSoftSpot(size);
        ASSERT_EQ(spot.size(), size_t(size * size));
        const int half = size / 2;
        EXPECT_EQ(spot[half * size + half], 255);
        EXPECT_EQ(spot[half * size + half + half / 2], 109); // (256 / 4 + 92 / 2) * 255 / 256
        EXPECT_EQ(spot[half * size], 0);
        EXPECT_EQ(spot[half], 0);
        EXPECT_EQ(spot[0], 5); // w is 1 - sqrt 2
    }
}
