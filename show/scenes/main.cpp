// Makes the show's 3D scenes.
//
//     scenes FOLDER MODELS   avgrund and katedral, each as a Y3D file and its description, into an existing folder;
//                            what was modelled elsewhere comes from the folder MODELS
#include "scenes.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>

namespace
{

void writeScene(const std::string& folder, const std::string& name, const std::string& models,
                void (*build)(Scenes::Builder&, const std::string&))
{
    Scenes::Builder builder;
    build(builder, models);
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
    if (argc != 3 || argv[1][0] == '-')
    {
        std::fprintf(stderr, "usage: scenes FOLDER MODELS\n");
        return 2;
    }
    try
    {
        writeScene(argv[1], "avgrund", argv[2], Scenes::buildAvgrund);
        writeScene(argv[1], "katedral", argv[2], Scenes::buildKatedral);
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "Error: %s\n", error.what());
        return 1;
    }
    return 0;
}
