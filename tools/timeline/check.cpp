#include "commands.h"

#include "commandline.h"
#include "scriptcheck.h"
#include "showcheck.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>
#include <utility>

namespace Timeline
{

namespace
{

const char ABOUT[] = "Tell what is wrong with a script, or likely not meant.";
const char DETAILS[] =
    "Errors end or spoil the show; warnings are likely not meant. Without a FILE the whole show is checked: its "
    "configuration, its scripts, its scene descriptions, and the pictures that its effects read. A comment "
    "'timeline: allow CODE' silences a code for the tag behind it and what lies in that tag, ahead of the root for the "
    "whole file. The codes are told in docs/timeline.md. The exit status is 1 when something was found.";

struct Options
{
    std::vector<std::string> files;
    std::string show;
    std::string effects;
    bool json = false;
};

void append(std::vector<Finding>& all, std::vector<Finding> more)
{
    all.insert(all.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

std::vector<Finding> gather(const Options& options, const EffectTable& effects)
{
    std::vector<Finding> all;
    for (const std::string& file : options.files) append(all, checkScript(readFile(file), file, effects));
    if (!options.files.empty() && options.show.empty()) return all;

    try
    {
        Show show(showFolder(options.show));
        append(all, checkShow(show, effects));
        if (!options.files.empty()) return all;
        for (const std::string& script : show.scripts())
            if (!show.read(script).isNull())
                append(all, checkScript(show.readText(script), show.labelOf(script), effects));
    }
    catch (const SyntaxError& error)
    {
        Findings findings(error.file());
        findings.add(Severity::ERROR, error.line(), "syntax", error.text());
        append(all, findings.take());
    }
    return all;
}

const char* word(Severity severity)
{
    return severity == Severity::ERROR ? "error" : "warning";
}

void printText(const std::vector<Finding>& findings)
{
    for (const Finding& finding : findings)
        std::printf("%s:%d: %s: %s [%s]\n", finding.file.c_str(), finding.line, word(finding.severity),
                    finding.text.c_str(), finding.code.c_str());
}

void printAsJson(const std::vector<Finding>& findings)
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Finding& finding : findings)
    {
        nlohmann::ordered_json item = {{"file", jsonText(finding.file)},
                                       {"line", finding.line},
                                       {"severity", word(finding.severity)},
                                       {"code", finding.code},
                                       {"text", jsonText(finding.text)}};
        if (finding.hasTime) item["time"] = finding.time;
        list.push_back(std::move(item));
    }
    printJson(list);
}

} // namespace

void addCheck(CLI::App& app, int& status)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "check", ABOUT, DETAILS);
    command->add_option("FILE", options->files, "Scripts, - for the standard input; without one, the whole show")
        ->type_name("");
    addShow(*command, options->show);
    command
        ->add_option("--effects", options->effects,
                     "A table of effects in place of the show's effects.xml or the built-in one")
        ->type_name("TABLE");
    addJson(*command, options->json);
    command->callback([options, &status] {
        // Files that are named by themselves belong to no show.
        const bool hasShow = options->files.empty() || !options->show.empty();
        const std::vector<Finding> findings =
            gather(*options, !options->effects.empty() ? EffectTable(readFile(options->effects), options->effects)
                             : hasShow                 ? EffectTable::ofShow(showFolder(options->show))
                                                       : EffectTable::builtIn());
        if (options->json)
            printAsJson(findings);
        else
            printText(findings);
        if (!findings.empty()) status = STATUS_FINDINGS;
    });
}

} // namespace Timeline
