#include "commands.h"
#include "gltf/export.h"
#include "gltf/model.h"
#include "scenefile.h"
#include "y3d_exception.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace
{

namespace fs = std::filesystem;

// The folder that `y3d import` puts the pictures in, or that of the file.
std::string folderOfPictures(const fs::path& file)
{
    const fs::path own = fs::path(file).replace_extension("");
    return fs::is_directory(own) ? own.string() : gltf::folderOf(file);
}

} // namespace

int runExport(const Arguments& arguments)
{
    const std::string& in = arguments.files[0];
    const std::string& out = arguments.files[1];
    refuseStreams(arguments, "export");
    gltf::ExportOptions options;
    options.fps = numberOf(arguments, "--fps", options.fps, 0.1, 1000);
    options.length = numberOf(arguments, "--length", options.length, 0, 1e5);
    const SceneFile file(in);
    const std::string pictures =
        arguments.has("--pictures") ? arguments.options.at("--pictures") : folderOfPictures(in);

    gltf::Losses losses;
    std::vector<unsigned char> bytes;
    try
    {
        bytes = gltf::exportScenes(file.manager, pictures, options, losses);
    }
    catch (const y3d::Exception& exception)
    {
        throw y3d::Exception("%s: %s", in.c_str(), exception.what());
    }
    std::ofstream stream(out, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) throw y3d::Exception("%s: cannot be written", out.c_str());

    for (const std::string& line : losses.getLines()) std::printf("note: %s\n", line.c_str());
    return STATUS_FINE;
}
