#include "commands.h"

#include "y3d_exception.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

namespace
{

struct Option
{
    std::string name;
    bool hasValue; // --name VALUE or --name=VALUE
};

struct Command
{
    std::string name;
    std::string usage; // behind the name
    const char* help;
    int numFiles; // ANY_FILES for one or more
    std::vector<Option> options;
    int (*run)(const Arguments&);
};

const int ANY_FILES = -1;

const Command COMMANDS[] = {
    {"info",
     "[--json] FILE",
     "Prints what is in a scene file: meshes with their sizes and boxes, materials with\n"
     "attributes and textures, images, and the trees of the scenes with their tracks.\n"
     "\n"
     "  --json   print it as one JSON object\n",
     1,
     {{"--json", false}},
     runInfo},
    {"check",
     "[--json] [--pictures FOLDER] FILE...",
     "Tells what the player would refuse (errors) or ignore (warnings) in scene files.\n"
     "The exit status is 0 when all is fine, 1 with warnings and 2 with errors. Findings\n"
     "behind the first thousand are only counted.\n"
     "\n"
     "  --json              print the findings as one JSON object, or a list of them for several files\n"
     "  --pictures FOLDER   look for the pictures there too, and read them as the player does\n",
     ANY_FILES,
     {{"--json", false}, {"--pictures", true}},
     runCheck},
    {"copy",
     "IN OUT",
     "Reads a scene file and writes it again, in the order of a writer. What the reader does\n"
     "not know and what the writer does not write (armatures) is left out and told. What changes\n"
     "besides: handles of curves that reach across each other in time are shortened and rotations\n"
     "brought to length 1, as the player does when it reads; chunks that are cut off or left over go.\n",
     2,
     {},
     runCopy},
    {"import",
     "[--scene N] [--animation NAME] [--fps N] [--scale N] [--texture-path PATH] IN OUT",
     "Makes a scene file out of a glTF 2.0 file (.gltf or .glb), with its pictures in a folder beside OUT\n"
     "and a scene description, OUT with .xml at its end. Prints what had to be left out, then what\n"
     "'y3d check' finds in OUT; the exit status is that of the check.\n"
     "\n"
     "  --scene N             number of the scene, instead of the one that the file shows first\n"
     "  --animation NAME      only this animation, by name or number, instead of all together\n"
     "  --fps N               samples a second, 30 at first, where a movement cannot be kept as curves\n"
     "  --scale N             makes everything larger or smaller\n"
     "  --texture-path PATH   folder of the pictures, relative to OUT; OUT without its ending at first\n",
     2,
     {{"--scene", true}, {"--animation", true}, {"--fps", true}, {"--scale", true}, {"--texture-path", true}},
     runImport},
    {"export",
     "[--pictures FOLDER] [--fps N] [--length SECONDS] IN OUT",
     "Makes a GLB file (glTF 2.0) out of a scene file, with the pictures in it. Prints what had to be left\n"
     "out or sampled.\n"
     "\n"
     "  --pictures FOLDER    where the pictures are, instead of the folder that is named like IN, or that of IN\n"
     "  --fps N              samples a second, 30 at first, where a curve has no form of its own there\n"
     "  --length SECONDS     how long movements last that have no end, instead of to the scene's last key\n",
     2,
     {{"--pictures", true}, {"--fps", true}, {"--length", true}},
     runExport},
    {"optimize",
     "[--cache N] IN OUT",
     "Reads a scene file and writes it again with all meshes prepared: equal vertices merged and\n"
     "unused ones dropped, triangles and vertices in an order that suits a vertex cache, and new\n"
     "bounding boxes. An order that was better before stays. Prints vertices, triangles and the vertices loaded for "
     "each triangle (the\n"
     "miss ratio), before and after. Meshes with data that would no longer fit (colours, a third\n"
     "texture channel, bone groups) or with faults are left as they are; the exit status is 1 then.\n"
     "\n"
     "  --cache N   entries of the vertex cache, 16 at first; 0 keeps the order\n",
     2,
     {{"--cache", true}},
     runOptimize},
    {"strips",
     "IN",
     "Prints into how many triangle strips each submesh goes, cut for a cache of 16 entries, with\n"
     "the triangles of the longest one and the indices when all are stitched together.\n",
     1,
     {},
     runStrips},
    {"view",
     "[OPTIONS] FILE",
     "Plays a scene file in a window, with the show's own renderer, or draws a picture of it. The\n"
     "file is loaded again when it changes. A scene without a camera or a light is shown from a free\n"
     "camera, lit from there; the title says so, and names what is under the mouse.\n"
     "\n"
     "  --camera NAME        look through this camera; 'free' for none\n"
     "  --time T             start at T seconds\n"
     "  --size WxH           pixels of the window, 1024x768 at first\n"
     "  --pictures FOLDER    where the pictures lie, when not beside the file or where FILE.xml says\n"
     "  --scene NAME         a scene other than the first of the file\n"
     "  --wireframe, --boxes draw edges; draw the meshes' boxes\n"
     "  --screenshot OUT.png write one picture and end\n"
     "  --turntable N        make that picture a sheet of N views from all round\n"
     "\n"
     "  Space                pause            Left, Right   a frame back or on; with Shift a second\n"
     "  Home, End            start and end    C             next camera\n"
     "  left drag            orbit            middle drag, Shift and left drag   pan\n"
     "  right drag           look round       wheel         nearer and further\n"
     "  W A S D, E Q         fly; up, down    F             see all of it\n"
     "  Z, B                 edges, boxes     R             load again\n"
     "  P                    write screenshot.png           Escape               leave\n",
     1,
     {{"--camera", true},
      {"--time", true},
      {"--size", true},
      {"--pictures", true},
      {"--scene", true},
      {"--wireframe", false},
      {"--boxes", false},
      {"--screenshot", true},
      {"--turntable", true}},
     runView},
};

std::string usage()
{
    std::string text = "Usage: y3d COMMAND [OPTIONS] FILE...\n\nCommands:\n";
    for (const Command& command : COMMANDS) text += "  y3d " + command.name + " " + command.usage + "\n";
    return text + "\nA FILE of - is the standard input, an OUT of - the standard output.\n"
                  "'y3d COMMAND --help' tells more about a command.\n";
}

int refuse(const std::string& trouble)
{
    std::fprintf(stderr, "y3d: %s\nTry 'y3d --help'.\n", trouble.c_str());
    return STATUS_ERRORS;
}

// Gives the parser the files and options of a command. What they say goes to `arguments`.
void describe(const Command& command, CLI::App* app, Arguments* arguments)
{
    app->set_help_flag("-h,--help");
    app->add_option("FILE", arguments->files);
    for (const Option& option : command.options)
    {
        const auto take = [arguments, name = option.name](const std::string& value) {
            arguments->options[name] = value;
        };
        if (option.hasValue)
            app->add_option_function<std::string>(option.name, take)
                ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
        else
            app->add_flag_callback(option.name, [take] { take(""); })->disable_flag_override();
    }
}

// What is wrong with a command line that the parser did not take.
std::string troubleOf(const Command& command, CLI::App* app, const CLI::ParseError& error)
{
    for (const std::string& word : app->remaining())
    {
        if (word.size() > 1 && word[0] == '-')
            return command.name + ": unknown option '" + word.substr(0, word.find('=')) + "'";
    }
    for (const Option& option : command.options)
    {
        if (std::string(error.what()).find(option.name.substr(2)) == std::string::npos) continue;
        return option.name + (option.hasValue ? " needs a value" : " takes no value");
    }
    return error.what();
}

int run(const Command& command, int count, char** words)
{
    CLI::App app;
    Arguments arguments;
    describe(command, &app, &arguments);
    try
    {
        app.parse(count, words); // the command stands where a program has its name
    }
    catch (const CLI::CallForHelp&)
    {
        std::printf("Usage: y3d %s %s\n\n%s", command.name.c_str(), command.usage.c_str(), command.help);
        return STATUS_FINE;
    }
    catch (const CLI::ParseError& error)
    {
        return refuse(troubleOf(command, &app, error));
    }
    const int numFiles = static_cast<int>(arguments.files.size());
    if (command.numFiles == ANY_FILES ? numFiles == 0 : numFiles != command.numFiles)
        return refuse("expected: y3d " + command.name + " " + command.usage);

    const int status = command.run(arguments);
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) throw y3d::Exception("The standard output took not all of it");
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        std::fputs(usage().c_str(), stderr);
        return STATUS_ERRORS;
    }
    const std::string word = argv[1];
    try
    {
        for (const Command& command : COMMANDS)
        {
            if (word == command.name) return run(command, argc - 1, argv + 1);
        }
        if (word == "--help" || word == "-h")
        {
            std::fputs(usage().c_str(), stdout);
            return STATUS_FINE;
        }
        return refuse("unknown command '" + word + "'");
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "y3d: %s\n", exception.what());
        return STATUS_ERRORS;
    }
}
