// The show "tiny": which effects it is played from, under which names its script knows them, and where its data lies.

#include "clear.h"
#include "flash.h"
#include "rings.h"
#include "sorrelplayer.h"

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
        base.addArchive("zip://../tiny.sdr");
        base.addScreenshotArchive("../screenshots/");
        base.load("");
        base.checkWindow();

        // The effects come after the runtime, and so go before it: the window outlives their textures.
        Clear clear;
        Flash flash;
        Rings rings;
        SorrelPlayer scene("scene.xml");

        base.addEffect("clear", &clear);
        base.addEffect("flash", &flash);
        base.addEffect("rings", &rings);
        base.addEffect("scene", &scene);

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
