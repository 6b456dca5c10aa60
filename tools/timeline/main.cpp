// bin/timeline: looks at scripts of shows, judges them, compares and edits them.

#include "commandline.h"
#include "commands.h"

#include <cstdio>
#include <exception>

namespace
{

using Add = void (*)(CLI::App& app, int& status);

const Add COMMANDS[] = {
    Timeline::addCheck,
    Timeline::addPrint,
};

} // namespace

int main(int count, char** words)
{
    int status = Timeline::STATUS_FINE;
    CLI::App app("Looks at the script of a show, judges it, compares and edits it.", "timeline");
    app.require_subcommand(1);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.get_formatter()->label("Subcommands", "Commands");
    app.get_formatter()->label("Positionals", "Arguments");
    app.footer(Timeline::wrapped(
        "'timeline COMMAND --help' tells more about a command. The exit status is 0 when all is fine or equal, "
        "1 with findings or differences, and 2 when something cannot be done."));
    for (const Add add : COMMANDS) add(app, status);
    try
    {
        app.parse(count, words);
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
