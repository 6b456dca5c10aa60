#include "commands.h"

#include "commandline.h"
#include "numbers.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>
#include <set>
#include <string>

namespace Timeline
{

namespace
{

const char ABOUT[] = "Print what a show is made of, for other programs.";
const char DETAILS[] =
    "One JSON value: the window's size, the names of the music and of the scripts, the show's end in seconds, the "
    "archives that the configuration adds, and the effects that the scripts name. With --save-music the music itself "
    "goes to a file, wherever it is packed.";

} // namespace

void addFacts(CLI::App& app, int&)
{
    struct Options
    {
        std::string show;
        std::string musicPath;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "facts", ABOUT, DETAILS);
    addShow(*command, options->show);
    command->add_option("--save-music", options->musicPath, "Write the music there, if there is some")
        ->type_name("FILE");
    command->callback([options] {
        Show show(showFolder(options->show));
        int width = 0, height = 0;
        nlohmann::ordered_json archives = nlohmann::ordered_json::array(), scripts = archives;
        const Node& root = show.configuration().root();
        if (root.name != "demo")
            throw Failure("the root tag of " + show.labelOf(CONFIGURATION_FILE) + " is not 'demo'");
        for (const std::unique_ptr<Node>& child : root.children)
        {
            if (child->isTag("archive")) archives.push_back(jsonText(child->value("file")));
            if (!child->isTag("window")) continue;
            width = readInt(child->value("width"));
            height = readInt(child->value("height"));
        }

        double end = 0.0;
        std::set<std::string> effects;
        for (const std::string& name : show.scripts())
        {
            const Score score(show.readText(name), show.labelOf(name));
            end = std::max(end, score.end());
            for (const Entry* entry : score.all()) effects.insert(jsonText(entry->name));
            scripts.push_back(jsonText(name));
        }
        if (!options->musicPath.empty() && !show.music().empty())
            writeFile(options->musicPath, show.readText(show.music()));
        printJson(nlohmann::ordered_json{{"width", width},
                                         {"height", height},
                                         {"music", jsonText(show.music())},
                                         {"scripts", scripts},
                                         {"end", end},
                                         {"archives", archives},
                                         {"effects", effects}});
    });
}

} // namespace Timeline
