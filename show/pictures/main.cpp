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

const Picture PICTURES[] = {
#define PICTURE(name, painter, alpha) {name, Paint::painter, alpha},
#include "list.inc"
#undef PICTURE
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
