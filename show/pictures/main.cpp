// Paints the show's pictures.
//
//     paint FOLDER           all of them, into an existing folder

#include "pictures.h"

#include <cstdio>
#include <exception>
#include <string>

namespace
{

struct Picture
{
    const char* filename;
    Paint::Canvas (*paint)();
    bool alpha;
};

const Picture pictures[] = {
    {"overlay.png", Paint::overlay, true},
    {"sandrift.png", Paint::logo, true},
    {"sandrift_ghost.png", Paint::logoGhost, true},
    {"scenese.png", Paint::banner, false},
    {"greets.png", Paint::greetings, true},
    {"font.png", Paint::glyphRow, true},
    {"ballbg.jpg", Paint::ballScenery, false},
    {"sun.png", Paint::sunSpark, true},
    {"env.png", Paint::environment, false},
    {"ice.png", Paint::iceSurface, false},
    {"snow.png", Paint::snowSurface, false},
    {"ridge.png", Paint::ridgeSurface, false},
    {"stone.png", Paint::stoneSurface, false},
    {"aisle.png", Paint::aisleSurface, false},
    {"floor.png", Paint::floorSurface, false},
    {"window.png", Paint::windowGlass, false},
    {"rose.png", Paint::roseWindow, false},
    {"flame.png", Paint::flameBody, false},
    {"sky.png", Paint::skyDome, false},
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2 || argv[1][0] == '-')
    {
        std::fprintf(stderr, "usage: paint FOLDER\n");
        return 2;
    }
    try
    {
        for (const Picture& picture : pictures)
        {
            const std::string filename = std::string(argv[1]) + "/" + picture.filename;
            const Paint::Canvas canvas = picture.paint();
            if (filename.compare(filename.size() - 4, 4, ".jpg") == 0)
                canvas.writeJpeg(filename, 92);
            else
                canvas.writePng(filename, picture.alpha);
        }
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "Error: %s\n", error.what());
        return 1;
    }
    return 0;
}
