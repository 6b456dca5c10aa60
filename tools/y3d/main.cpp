#include "commands.h"

#include "y3d_exception.h"

#include <cstdio>
#include <cstring>
#include <exception>

namespace
{

struct Option
{
    const char* name;
    bool hasValue; // --name VALUE or --name=VALUE
};

struct Command
{
    const char* name;
    const char* usage; // behind the name
    const char* help;
    std::size_t numFiles;
    std::vector<Option> options;
    int (*run)(const Arguments&);
};

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
     "[--json] FILE",
     "Tells what the player would refuse (errors) or ignore (warnings) in a scene file.\n"
     "The exit status is 0 when all is fine, 1 with warnings and 2 with errors. Findings\n"
     "behind the first thousand are only counted.\n"
     "\n"
     "  --json   print the findings as one JSON object\n",
     1,
     {{"--json", false}},
     runCheck},
    {"copy",
     "IN OUT",
     "Reads a scene file and writes it again, in the order of a writer. What the reader does\n"
     "not know and what the writer does not write (armatures) is left out and told.\n",
     2,
     {},
     runCopy},
    {"optimize",
     "[--cache N] IN OUT",
     "Reads a scene file and writes it again with all meshes prepared: equal vertices merged and\n"
     "unused ones dropped, triangles and vertices in an order that suits a vertex cache, and new\n"
     "bounding boxes. Prints vertices, triangles and the vertices loaded for each triangle (the\n"
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
};

void printUsage(FILE* stream)
{
    std::fprintf(stream, "Usage: y3d COMMAND [OPTIONS] FILE...\n\nCommands:\n");
    for (const Command& command : COMMANDS) std::fprintf(stream, "  y3d %s %s\n", command.name, command.usage);
    std::fprintf(stream, "\nA FILE of - is the standard input, an OUT of - the standard output.\n"
                         "'y3d COMMAND --help' tells more about a command.\n");
}

int refuse(const std::string& trouble)
{
    std::fprintf(stderr, "y3d: %s\nTry 'y3d --help'.\n", trouble.c_str());
    return STATUS_ERRORS;
}

const Option* findOption(const Command& command, const std::string& name)
{
    for (const Option& option : command.options)
    {
        if (name == option.name) return &option;
    }
    return nullptr;
}

// Takes the command line apart. Returns an empty text, or what is wrong with it.
std::string parse(const Command& command, int count, char** words, Arguments* arguments)
{
    bool onlyFiles = false;
    for (int i = 0; i < count; ++i)
    {
        const std::string word = words[i];
        if (onlyFiles || word.size() < 2 || word[0] != '-')
        {
            arguments->files.push_back(word);
            continue;
        }
        if (word == "--")
        {
            onlyFiles = true;
            continue;
        }
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const Option* option = findOption(command, name);
        if (!option) return std::string(command.name) + ": unknown option '" + name + "'";
        if (!option->hasValue && equals != std::string::npos) return name + " takes no value";

        std::string value;
        if (equals != std::string::npos)
            value = word.substr(equals + 1);
        else if (option->hasValue)
        {
            if (i + 1 == count) return name + " needs a value";
            value = words[++i];
        }
        arguments->options[name] = value;
    }
    if (arguments->files.size() != command.numFiles)
        return std::string("expected: y3d ") + command.name + " " + command.usage;
    return "";
}

bool asksForHelp(int count, char** words)
{
    for (int i = 0; i < count && std::strcmp(words[i], "--") != 0; ++i)
    {
        if (std::strcmp(words[i], "--help") == 0 || std::strcmp(words[i], "-h") == 0) return true;
    }
    return false;
}

int run(const Command& command, int count, char** words)
{
    if (asksForHelp(count, words))
    {
        std::printf("Usage: y3d %s %s\n\n%s", command.name, command.usage, command.help);
        return STATUS_FINE;
    }
    Arguments arguments;
    const std::string trouble = parse(command, count, words, &arguments);
    if (!trouble.empty()) return refuse(trouble);

    const int status = command.run(arguments);
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) throw y3d::Exception("The standard output took not all of it");
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        printUsage(stderr);
        return STATUS_ERRORS;
    }
    try
    {
        for (const Command& command : COMMANDS)
        {
            if (std::strcmp(argv[1], command.name) == 0) return run(command, argc - 2, argv + 2);
        }
        if (asksForHelp(1, argv + 1))
        {
            printUsage(stdout);
            return STATUS_FINE;
        }
        return refuse(std::string("unknown command '") + argv[1] + "'");
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "y3d: %s\n", exception.what());
        return STATUS_ERRORS;
    }
}
