// Pixels of frames in which the effects really draw.

#include "effect_window.h"

#include "blood.h"
#include "boolean.h"
#include "circle.h"
#include "crashscene.h"
#include "flash.h"
#include "greetings.h"
#include "overlay.h"
#include "pixels.h"
#include "radialblur.h"
#include "render2texture.h"
#include "stencil.h"
#include "stencilop.h"

using Pictures = EffectWindow;

TEST_F(Pictures, overlayStandsUprightAndLetsThrough)
{
    const unsigned int quarters[2][2] = {{0xffff0000, 0xff00ff00}, {0xff0000ff, 0x00ffffff}};
    addPicture("overlay.png", 64, 64, [&](int x, int y) { return quarters[y / 32][x / 32]; });
    Overlay overlay;
    setup(overlay);
    overlay.updateSpline(0, "alpha", 50);
    frame([&] {
        fill(0, 0, 800, 600, 0x404040);
        overlay.update(0, 0, 0);
    });
    EXPECT_TRUE(isColor(20, 20, 0xa02020)); // the outermost half texel mixes with the border
    EXPECT_TRUE(isColor(780, 20, 0x20a020));
    EXPECT_TRUE(isColor(20, 580, 0x2020a0));
    EXPECT_TRUE(isColor(780, 580, 0x404040)); // transparent there
}

TEST_F(Pictures, aMaskCutsWhatComesAfterIt)
{
    const struct
    {
        const char* mode;
        int inside, outside;
    } cases[] = {{"include", 0xffffff, 0x0000ff}, {"exclude", 0x0000ff, 0xffffff}, {"normal", 0xffffff, 0xffffff}};
    Stencil stencil;
    Circle circle;
    StencilOp operation;
    Flash flash;
    setup(circle);
    for (const char* component : {"r", "g", "b"}) flash.executeTrigger(0, component, "1");
    for (const auto& entry : cases)
    {
        SCOPED_TRACE(entry.mode);
        operation.executeTrigger(0, "mode", entry.mode);
        frame([&] {
            fill(0, 0, 800, 600, 0x0000ff);
            stencil.update(0, 0, 0);
            circle.update(0, 0, 0.75f); // a radius of 0.25 at the distance 1: 181 pixels
            operation.update(0, 0, 0);
            flash.update(0, 0, 0);
        });
        EXPECT_TRUE(isColor(400, 300, entry.inside));
        EXPECT_TRUE(isColor(400, 300 - 172, entry.inside));
        EXPECT_TRUE(isColor(400 + 190, 300, entry.outside));
        EXPECT_TRUE(isColor(5, 5, entry.outside));
    }
}

TEST_F(Pictures, bloodBeginsAtTheTop)
{
    Blood blood;
    frame([&] { blood.update(0, 0, 0); });
    EXPECT_TRUE(isColor(400, 5, 0x000000, 0));
    frame([&] { blood.update(0, 0, 0.4f); });
    EXPECT_TRUE(isColor(400, 5, 0xffffff, 0));
    EXPECT_TRUE(isColor(400, 595, 0x000000, 0));
    frame([&] { blood.update(0, 0, 1); });
    EXPECT_TRUE(isColor(400, 595, 0xffffff, 0));
}

TEST_F(Pictures, blurEnlargesTheFrameBeforeAboutTheMiddle)
{
    RadialBlur blur;
    setup(blur);
    blur.executeTrigger(0, "step", "1");
    frame([&] {
        fill(440, 290, 20, 20, 0xffffff);
        blur.update(0, 0, 0);
    });
    EXPECT_TRUE(isColor(450, 300, 0x191919, 3)); // a tenth: there was no frame before
    frame([&] { blur.update(0, 0, 0); });
    EXPECT_TRUE(isColor(500, 300, 0x171717, 3)); // twice as far, nine tenths of it
    EXPECT_TRUE(isColor(515, 285, 0x171717, 3)); // and twice as large
    EXPECT_TRUE(isColor(450, 300, 0x000000, 1));
}

TEST_F(Pictures, crashPutsTheTakenPictureTogether)
{
    Render2Texture taken;
    CrashScene crash;
    setup(taken);
    setup(crash);
    crash.executeTrigger(0, "speed", "1");
    crash.executeTrigger(0, "crash", "");
    frame([&] {
        fillQuarters(800, 600);
        taken.update(0, 0, 0);
        fill(0, 0, 800, 600, 0xff00ff);
        crash.update(0.9999f, 0, 0);
    });
    EXPECT_TRUE(isColor(400 - 42 - 84, 300 - 32 - 63, 0xff0000)); // in the middle of tiles
    EXPECT_TRUE(isColor(400 + 42 + 84, 300 - 32 - 63, 0x00ff00));
    EXPECT_TRUE(isColor(400 - 42 - 84, 300 + 32 + 63, 0x0000ff));
    EXPECT_TRUE(isColor(400 + 42 + 84, 300 + 32 + 63, 0xffffff));
    frame([&] {
        fill(0, 0, 800, 600, 0xff00ff);
        crash.update(1, 0, 0); // over
    });
    EXPECT_TRUE(isColor(400 - 42, 300 - 32, 0xff00ff, 0));
}

TEST_F(Pictures, booleanFillsTheSharedPartAndDrawsBothCubesAsWires)
{
    Boolean boolean;
    frame([&] { boolean.update(0.3f, 0, 0); });
    int brown = 0, white = 0, outside = 0;
    for (int y = 0; y < 600; ++y)
        for (int x = 0; x < 800; ++x)
        {
            const unsigned char* pixel = at(x, y);
            if (pixel[0] == 0) continue;
            if (x >= 72 || y < 600 - 72) ++outside;
            if (pixel[0] == 255 && pixel[2] == 255) ++white;
            if (std::abs(pixel[0] - 2 * pixel[1]) <= 2 && std::abs(pixel[1] - 2 * pixel[2]) <= 2) ++brown;
        }
    EXPECT_GT(brown, 150);
    EXPECT_GT(white, 80);
    EXPECT_EQ(outside, 0);
}

TEST_F(Pictures, pixelsShowTheCornerUprightOnTheWholeScreen)
{
    Pixels pixels;
    setup(pixels);
    frame([&] {
        fill(0, 0, 800, 600, 0x808080);
        fillQuarters(72, 72);
        pixels.update(0, 0, 0);
    });
    EXPECT_TRUE(isColor(400 - 145, 300 - 145, 0xff0000, 30)); // the middle of dots
    EXPECT_TRUE(isColor(400 + 145, 300 - 145, 0x00ff00, 30));
    EXPECT_TRUE(isColor(400 - 145, 300 + 145, 0x0000ff, 30));
    EXPECT_TRUE(isColor(400 + 145, 300 + 145, 0xffffff, 30));
    EXPECT_TRUE(isColor(50, 300, 0x000000, 0)); // beside the square of dots
}

TEST_F(Pictures, greetingsShowNothingOfTheNeighbouringRows)
{
    addPicture("greets.png", 64, 512,
               [](int, int y) { return 0xff000000 | (y / 32 * 16) << 16 | (255 - y / 32 * 16); });
    Greetings greetings;
    setup(greetings);
    greetings.executeTrigger(0, "size", "0.2");
    for (int row : {0, 3, 15})
    {
        greetings.executeTrigger(0, "text", Greetings::greets[row]);
        frame([&] { greetings.update(0, 0, 0); });
        const int color = row * 16 << 16 | (255 - row * 16);
        for (int y : {181, 300, 419}) EXPECT_TRUE(isColor(400, y, color)) << row; // 0.2 at 1.2: 121 pixels
        EXPECT_TRUE(isColor(400, 175, 0x000000));
    }
}
