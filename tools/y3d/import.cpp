#include "check.h"
#include "commands.h"
#include "gltf/import.h"
#include "scenefile.h"
#include "text.h"
#include "y3d_exception.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace
{

namespace fs = std::filesystem;

void writeFile(const fs::path& path, const void* data, std::size_t size)
{
    std::ofstream stream(path, std::ios::binary);
    stream.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
    stream.close();
    if (!stream) throw y3d::Exception("%s: cannot be written", path.c_str());
}

// The dialect of the show's documents has no entities, so a name with such a letter cannot be in it; without a name the
// first scene is played, and there is one only.
void writeDescription(const fs::path& path, const fs::path& file, const std::string& texturePath,
                      const std::string& scene)
{
    const bool isPlain = scene.find_first_of("\"'<>&\n") == std::string::npos;
    const std::string text = "<sorrel>\n    <scene filename=\"" + file.filename().string() + "\" texturepath=\"" +
                             texturePath + "\" name=\"" + (isPlain ? scene : "") + "\"/>\n</sorrel>\n";
    writeFile(path, text.data(), text.size());
}

} // namespace

int runImport(const Arguments& arguments)
{
    const std::string& in = arguments.files[0];
    const fs::path out = arguments.files[1];
    refuseStreams(arguments, "import");
    gltf::ImportOptions options;
    options.scene = static_cast<int>(numberOf(arguments, "--scene", -1, 0, 1e6));
    options.fps = numberOf(arguments, "--fps", 30, 0.1, 1000);
    options.scale = numberOf(arguments, "--scale", 1, 1e-6, 1e6);
    if (arguments.has("--animation")) options.animation = arguments.options.at("--animation");
    const std::string texturePath =
        arguments.has("--texture-path") ? arguments.options.at("--texture-path") : out.stem().string();
    if (texturePath.find_first_of("\"'<>&\n") != std::string::npos)
        throw y3d::Exception("--texture-path %s cannot be written to a scene description", quoted(texturePath).c_str());

    y3d::Manager manager;
    gltf::Losses losses;
    gltf::Imported imported;
    try
    {
        imported = gltf::importScene(gltf::readModel(in), gltf::folderOf(in), options, manager, losses);
    }
    catch (const y3d::Exception& exception)
    {
        const std::string trouble = exception.what();
        const bool isNamed = trouble.compare(0, in.size(), in) == 0;
        throw y3d::Exception("%s", isNamed ? trouble.c_str() : (in + ": " + trouble).c_str());
    }
    writeSceneFile(manager, out); // first: its folder is not made, that of the pictures is
    const fs::path pictures = out.parent_path() / texturePath;
    std::error_code error;
    if (!imported.pictures.empty()) fs::create_directories(pictures, error);
    for (const gltf::Pictures::File& picture : imported.pictures)
    {
        writeFile(pictures / picture.name, picture.bytes.data(), picture.bytes.size());
    }
    writeDescription(fs::path(out).replace_extension(".xml"), out, texturePath, imported.sceneName);

    for (const std::string& line : losses.getLines()) std::printf("note: %s\n", line.c_str());
    return printReport(checkFile(SceneFile(out), pictures), out);
}
