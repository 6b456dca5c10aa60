#include "commands.h"

#include "commandline.h"
#include "difference.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace Timeline
{

namespace
{

const char ABOUT[] = "Compare two scripts by what they mean.";
const char DETAILS[] =
    "Tells which entries were added, removed, changed or moved to another layer, with times in the show. Comments, the "
    "writing of numbers and the order of attributes make no difference. The exit status is 1 when there is one.";

} // namespace

void addDiff(CLI::App& app, int& status)
{
    struct Options
    {
        std::string before;
        std::string after;
        bool json = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "diff", ABOUT, DETAILS);
    command->add_option("A", options->before, "The script before")->required()->type_name("");
    command->add_option("B", options->after, "The script after")->required()->type_name("");
    addJson(*command, options->json);
    command->callback([options, &status] {
        const std::vector<Difference> found = differences(Score::load(options->before), Score::load(options->after));
        if (!found.empty()) status = STATUS_FINDINGS;
        nlohmann::ordered_json list = nlohmann::ordered_json::array();
        for (const Difference& difference : found)
        {
            if (options->json)
                list.push_back({{"kind", difference.kind},
                                {"entry", jsonText(difference.entry)},
                                {"time", difference.time},
                                {"text", jsonText(difference.text)}});
            else
                std::printf("%s\n", difference.text.c_str());
        }
        if (options->json) printJson(list);
    });
}

} // namespace Timeline
