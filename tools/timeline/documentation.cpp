// The commands completion and man: what the command line tells about itself, for the shell and for man.

#include "commands.h"

#include "commandline.h"

#include <cstdio>
#include <string>
#include <vector>

namespace Timeline
{

namespace
{

std::vector<CLI::Option*> optionsOf(CLI::App& command, bool positional)
{
    return command.get_options([=](const CLI::Option* option) { return option->get_positional() == positional; });
}

// The names of the options of a command: "--json --show ...".
std::string optionWords(CLI::App& command)
{
    std::string words;
    for (const CLI::Option* option : optionsOf(command, false))
    {
        for (const std::string& name : option->get_lnames()) words += (words.empty() ? "--" : " --") + name;
        for (const std::string& name : option->get_snames()) words += " -" + name;
    }
    return words;
}

std::string completion(CLI::App& app)
{
    std::string names, cases;
    for (CLI::App* command : app.get_subcommands({}))
    {
        names += (names.empty() ? "" : " ") + command->get_name();
        cases += "        " + command->get_name() + ") words=\"" + optionWords(*command) + "\" ;;\n";
    }
    return "# Completion of timeline for bash: commands, options, files. Source it, or put it into\n"
           "# ~/.local/share/bash-completion/completions/timeline.\n"
           "_timeline()\n"
           "{\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} words=\"\"\n"
           "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
           "        COMPREPLY=($(compgen -W \"" +
           names +
           " --help\" -- \"$word\"))\n"
           "        return\n"
           "    fi\n"
           "    case ${COMP_WORDS[1]} in\n" +
           cases +
           "    esac\n"
           "    case $word in\n"
           "        -*) COMPREPLY=($(compgen -W \"$words\" -- \"$word\")) ;;\n"
           "        *) COMPREPLY=($(compgen -f -- \"$word\")) ;;\n"
           "    esac\n"
           "}\n"
           "complete -o filenames -F _timeline timeline\n";
}

// Text for troff: dashes as they are typed, and nothing that begins a line as a request.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text)
    {
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
        {
            if ((c == '.' || c == '\'') && (result.empty() || result.back() == '\n')) result += "\\&";
            result += c;
        }
        if (c == '\n') result += ".br\n";
    }
    return result;
}

std::string optionText(const CLI::Option* option, bool positional)
{
    std::string names;
    for (const std::string& name : option->get_snames()) names += (names.empty() ? "\\-" : ", \\-") + escaped(name);
    for (const std::string& name : option->get_lnames())
        names += (names.empty() ? "\\-\\-" : ", \\-\\-") + escaped(name);
    std::string text = ".TP\n\\fB" + (positional ? escaped(option->get_name(true)) : names) + "\\fR";
    if (!positional && option->get_type_size() > 0) text += " \\fI" + escaped(option->get_type_name()) + "\\fR";
    return text + "\n" + escaped(option->get_description()) + "\n";
}

std::string manual(CLI::App& app)
{
    std::string text = ".TH TIMELINE 1\n.SH NAME\ntimeline \\- " + escaped(app.get_description()) +
                       "\n.SH SYNOPSIS\n\\fBtimeline\\fR \\fICOMMAND\\fR [\\fIOPTIONS\\fR] [\\fIARGUMENTS\\fR]\n"
                       ".SH DESCRIPTION\n" +
                       escaped(app.get_footer()) + "\n.SH COMMANDS\n";
    for (CLI::App* command : app.get_subcommands({}))
    {
        text += ".SS " + escaped(command->get_name()) + "\n" + escaped(command->get_description()) + "\n";
        for (const bool positional : {true, false})
            for (const CLI::Option* option : optionsOf(*command, positional)) text += optionText(option, positional);
        if (!command->get_footer().empty()) text += ".PP\n" + escaped(command->get_footer()) + "\n";
    }
    return text;
}

void print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

} // namespace

void addDocumentation(CLI::App& app, int&)
{
    addCommand(app, "completion", "Print the completion for bash.", "Example: source <(timeline completion)")
        ->callback([&app] { print(completion(app)); });
    addCommand(app, "man", "Print the manual page.", "Example: timeline man | man -l -")->callback([&app] {
        print(manual(app));
    });
}

} // namespace Timeline
