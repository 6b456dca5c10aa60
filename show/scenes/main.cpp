// Makes the show's 3D scenes.
//
//     scenes FOLDER MODELS SCRIPT   avgrund and katedral, each as a Y3D file and its description, into an existing
//                                   folder; what was modelled elsewhere comes from the folder MODELS, and the script
//                                   tells over which notes a scene is seen
#include "scenes.h"

#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace
{

void writeScene(const std::string& folder, const std::string& name, const std::function<void(Scenes::Builder&)>& build)
{
    Scenes::Builder builder;
    build(builder);
    builder.write(folder + "/" + name + ".y3d");

    const std::string filename = folder + "/" + name + ".xml";
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(filename.c_str(), "wb"), std::fclose);
    if (!file || std::fprintf(file.get(),
                              "<sorrel>\n\t<scene filename=\"%s.y3d\" texturepath=\"\" name=\"scene\"/>\n</sorrel>\n",
                              name.c_str()) < 0)
        throw std::runtime_error(filename + ": cannot be written");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4 || argv[1][0] == '-')
    {
        std::fprintf(stderr, "usage: scenes FOLDER MODELS SCRIPT\n");
        return 2;
    }
    try
    {
        const Scenes::Showing crevasse(argv[3], "sorrel"), hall(argv[3], "podium");
        writeScene(argv[1], "avgrund", [&](Scenes::Builder& b) { Scenes::buildAvgrund(b, argv[2], crevasse); });
        writeScene(argv[1], "katedral", [&](Scenes::Builder& b) { Scenes::buildKatedral(b, hall); });
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "Error: %s\n", error.what());
        return 1;
    }
    return 0;
}
