// The show: which effects it is played from, under which names its script knows them, and where its data lies.

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
#include "meta.h"
#include "overlay.h"
#include "particlesscene.h"
#include "pixels.h"
#include "preball.h"
#include "radialblur.h"
#include "render2texture.h"
#include "sandrift.h"
#include "scenese.h"
#include "sorrelplayer.h"
#include "static.h"
#include "stencil.h"
#include "stencilop.h"
#include "sun.h"
#include "twisterscene.h"

#include "tw_base.h"

#include <cstdio>
#include <exception>

int main(int, char**)
{
    try
    {
        Tidewheel::Base base;
        base.addArchive("../");
        base.addArchive("../data/");
        base.addArchive("zip://../ourglacierheartcold.sdr");
        base.addScreenshotArchive("../screenshots/");
        base.load("");
        base.checkWindow();

        // The effects come after the runtime, and so go before it: the window outlives their textures.
        Clear clear;
        RadialBlur blur;
        Hypno hypno;
        TwisterScene twister;
        ParticlesScene particles;
        Static noise;
        LinesScene lines;
        Greetings greetings;
        Greetings greetings2;
        Render2Texture render2texture;
        CrashScene crash;
        Ball ball;
        SorrelPlayer sorrel("avgrund.xml");
        SorrelPlayer podium("katedral.xml");
        Meta meta;
        meta.mEngine = &podium.mEngine; // its balls float in that scene
        Pixels pixels;
        Stencil stencil;
        StencilOp stencilop1;
        StencilOp stencilop2;
        StencilOp stencilop3;
        Circle circle;
        Boolean boolean;
        Flash flash;
        Sun sun;
        Scenese scenese;
        Cubes cubes;
        Fire fire;
        Loading loading;
        Overlay overlay;
        Infinity infinity;
        Lighting lighting;
        PreBall preball;
        Blood blood;
        Sandrift sandrift;

        base.addEffect("clear", &clear);
        base.addEffect("blur", &blur);
        base.addEffect("hypno", &hypno);
        base.addEffect("twister", &twister);
        base.addEffect("particles", &particles);
        base.addEffect("static", &noise);
        base.addEffect("lines", &lines);
        base.addEffect("greetings", &greetings);
        base.addEffect("greetings2", &greetings2);
        base.addEffect("render2texture", &render2texture);
        base.addEffect("crash", &crash);
        base.addEffect("ball", &ball);
        base.addEffect("meta", &meta);
        base.addEffect("sorrel", &sorrel);
        base.addEffect("pixels", &pixels);
        base.addEffect("stencil", &stencil);
        base.addEffect("stencilop1", &stencilop1);
        base.addEffect("stencilop2", &stencilop2);
        base.addEffect("stencilop3", &stencilop3);
        base.addEffect("circle", &circle);
        base.addEffect("podium", &podium);
        base.addEffect("boolean", &boolean);
        base.addEffect("flash", &flash);
        base.addEffect("sun", &sun);
        base.addEffect("cubes", &cubes);
        base.addEffect("scenese", &scenese);
        base.addEffect("fire", &fire);
        base.addEffect("overlay", &overlay);
        base.addEffect("infinity", &infinity);
        base.addEffect("lighting", &lighting);
        base.addEffect("preball", &preball);
        base.addEffect("blood", &blood);
        base.addEffect("sandrift", &sandrift);
        base.mLoadingEffect = &loading;

        base.run();
        return 0;
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "Error: %s\n", exception.what());
        return 1;
    }
    catch (...)
    {
        std::fprintf(stderr, "Error: Unknown exception!\n");
        return 1;
    }
}
