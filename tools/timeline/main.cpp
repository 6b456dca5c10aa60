// bin/timeline: looks at scripts of shows, judges them, compares and edits them.

#include "commandline.h"
#include "commands.h"
#include "failure.h"
#include "numbers.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace
{

using Add = void (*)(CLI::App& app, int& status);

const Add COMMANDS[] = {
    Timeline::addCheck,         Timeline::addPrint,   Timeline::addDiff,   Timeline::addShift,
    Timeline::addRetime,        Timeline::addSnap,    Timeline::addCopy,   Timeline::addMove,
    Timeline::addDelete,        Timeline::addRename,  Timeline::addEnable, Timeline::addDisable,
    Timeline::addMerge,         Timeline::addExtract, Timeline::addSet,    Timeline::addFormat,
    Timeline::addMergeComments, Timeline::addBeats,   Timeline::addSheet,  Timeline::addWhy,
    Timeline::addDocumentation, Timeline::addFacts,
};

// The words behind the program's name, the last one first. A negative number gets a blank ahead, so that it is not
// taken for an option; reading a number skips it.
std::vector<std::string> argumentsOf(int count, char** words)
{
    std::vector<std::string> arguments;
    for (int i = count - 1; i > 0; --i)
    {
        const std::string word = words[i];
        arguments.push_back(word[0] == '-' && Timeline::isNumber(word) ? " " + word : word);
    }
    return arguments;
}

bool isCommand(const CLI::App& app, const std::string& word)
{
    const std::vector<const CLI::App*> commands = app.get_subcommands({});
    return std::any_of(commands.begin(), commands.end(),
                       [&word](const CLI::App* command) { return command->check_name(word); });
}

} // namespace

int main(int count, char** words)
{
    int status = Timeline::STATUS_FINE;
    CLI::App app("Looks at the script of a show, judges it, compares and edits it.", "timeline");
    app.require_subcommand(1);
    app.formatter(Timeline::helpFormatter());
    app.footer("'timeline COMMAND --help' tells more about a command. The exit status is 0 when all is fine or equal, "
               "1 with findings or differences, and 2 when something cannot be done.");
    for (const Add add : COMMANDS) add(app, status);
    for (CLI::App* command : app.get_subcommands({})) command->group("Commands");
    try
    {
        if (count > 1 && words[1][0] != '-' && !isCommand(app, words[1]))
            throw Timeline::Failure("There is no command '" + std::string(words[1]) + "'; see 'timeline --help'");
        app.parse(argumentsOf(count, words));
        return status;
    }
    catch (const CLI::ParseError& error)
    {
        if (error.get_exit_code() == 0) return app.exit(error); // help
        std::fprintf(stderr, "timeline: %s\nTry 'timeline --help'.\n", error.what());
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "timeline: %s\n", error.what());
    }
    return Timeline::STATUS_FAILED;
}
