// Paints the show's pictures.
//
//     paint FOLDER           all of them, into an existing folder

#include "pictures.h"

#include "picture_files.h"

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

const Picture PICTURES[] = {
    {PictureFiles::OVERLAY, Paint::overlay, true},          {PictureFiles::LOGO, Paint::logo, true},
    {PictureFiles::LOGO_GHOST, Paint::logoGhost, true},     {PictureFiles::BANNER, Paint::banner, false},
    {PictureFiles::GREETINGS, Paint::greetings, true},      {PictureFiles::FONT, Paint::glyphRow, true},
    {PictureFiles::LANDSCAPE, Paint::ballScenery, false},   {PictureFiles::SUN, Paint::sunSpark, true},
    {PictureFiles::ENVIRONMENT, Paint::environment, false}, {PictureFiles::ICE, Paint::iceSurface, false},
    {PictureFiles::SNOW, Paint::snowSurface, false},        {PictureFiles::RIDGE, Paint::ridgeSurface, false},
    {PictureFiles::STONE, Paint::stoneSurface, false},      {PictureFiles::AISLE, Paint::aisleSurface, false},
    {PictureFiles::CHOIR, Paint::choirSurface, false},      {PictureFiles::FLOOR, Paint::floorSurface, false},
    {PictureFiles::WINDOW, Paint::windowGlass, false},      {PictureFiles::ROSE, Paint::roseWindow, false},
    {PictureFiles::FLAME, Paint::flameBody, false},         {PictureFiles::SKY, Paint::skyDome, false},
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
        for (const Picture& picture : PICTURES)
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
