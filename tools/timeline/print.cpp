#include "commands.h"

#include "commandline.h"
#include "numbers.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <map>
#include <utility>

namespace Timeline
{

namespace
{

const char ABOUT[] = "Print the timeline as one reads it.";
const char DETAILS[] =
    "One line an entry in the order of the layers: its number, its time in the show, its name. Below it its triggers, "
    "with @ and the times in the show at which they fire, and its splines, with ~ and time:value for each key, after "
    "scale "
    "and offset. As a textconv of git it makes changes of a script readable: docs/timeline.md tells how.";

const int MANY_FIRINGS = 8; // of a trigger that are all told

std::string pad(const std::string& text, std::size_t width)
{
    return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

std::string firings(const Entry& entry, const Trigger& trigger)
{
    const int count = trigger.repeat;
    if (count <= 0) return "never";
    std::string text;
    for (int n = 0; n < std::min(count, MANY_FIRINGS); ++n)
        text += (n > 0 ? " " : "") + readable(entry.showStart() + trigger.due(n));
    if (count > MANY_FIRINGS)
        text += " ... " + readable(entry.showStart() + trigger.due(count - 1)) + " (" + std::to_string(count) +
                ", every " + readable(static_cast<double>(trigger.delay)) + ")";
    return text;
}

double valueOf(const Spline& spline, const Key& key)
{
    return static_cast<double>(key.value) * static_cast<double>(spline.valueScale) +
           static_cast<double>(spline.valueOffset);
}

void printEntry(const Entry& entry, std::size_t timeWidth, bool hasNumber)
{
    const std::string indent(2 * static_cast<std::size_t>(entry.node->depth - 1), ' ');
    const std::string time = readable(entry.showStart()) + "-" + readable(entry.showEnd());
    std::printf("%s%s%s %s%s\n", indent.c_str(), hasNumber ? (pad(entry.number, 4) + " ").c_str() : "",
                pad(time, timeWidth).c_str(), entry.name.c_str(), entry.enabled ? "" : " (off)");
    for (const Trigger& trigger : entry.triggers)
        std::printf("%s     @ %s%s%s at %s\n", indent.c_str(), trigger.name.c_str(), trigger.value.empty() ? "" : " ",
                    trigger.value.c_str(), firings(entry, trigger).c_str());
    for (const Spline& spline : entry.splines)
    {
        std::printf("%s     ~ %s %s", indent.c_str(), spline.name.c_str(),
                    spline.type.empty() ? "(no type)" : spline.type.c_str());
        for (const Key& key : spline.keys)
            std::printf(" %s:%s", readable(entry.showStart() + spline.local(key)).c_str(),
                        readable(valueOf(spline, key)).c_str());
        std::printf("\n");
    }
}

void printSummary(const Score& score)
{
    struct Use
    {
        int entries = 0;
        int off = 0;
        double seconds = 0.0;
    };
    std::map<std::string, Use> uses;
    std::size_t width = 6;
    int triggers = 0, splines = 0, keys = 0;
    const std::vector<const Entry*> all = score.all();
    for (const Entry* entry : all)
    {
        Use& use = uses[entry->name];
        ++use.entries;
        if (entry->enabled)
            use.seconds += std::max(0.0, static_cast<double>(entry->end) - static_cast<double>(entry->start));
        else
            ++use.off;
        triggers += static_cast<int>(entry->triggers.size());
        splines += static_cast<int>(entry->splines.size());
        for (const Spline& spline : entry->splines) keys += static_cast<int>(spline.keys.size());
        width = std::max(width, entry->name.size());
    }
    std::printf("%zu entries, %d triggers, %d splines with %d keys; the show ends at %s\n\n", all.size(), triggers,
                splines, keys, readable(score.end()).c_str());
    std::printf("%s  entries  seconds\n", pad("effect", width).c_str());
    for (const auto& use : uses)
        std::printf("%s  %7d  %7s%s\n", pad(use.first, width).c_str(), use.second.entries,
                    readable(use.second.seconds).c_str(),
                    use.second.off ? (" (" + std::to_string(use.second.off) + " off)").c_str() : "");
}

nlohmann::ordered_json describe(const Entry& entry)
{
    using Json = nlohmann::ordered_json;
    Json triggers = Json::array(), splines = Json::array(), children = Json::array();
    for (const Trigger& trigger : entry.triggers)
        triggers.push_back({{"name", jsonText(trigger.name)},
                            {"value", jsonText(trigger.value)},
                            {"time", entry.showStart() + trigger.due(0)},
                            {"repeat", trigger.repeat},
                            {"delay", trigger.delay},
                            {"line", trigger.node->line}});
    for (const Spline& spline : entry.splines)
    {
        Json keys = Json::array();
        for (const Key& key : spline.keys)
            keys.push_back({{"time", entry.showStart() + spline.local(key)}, {"value", valueOf(spline, key)}});
        splines.push_back({{"name", jsonText(spline.name)},
                           {"type", jsonText(spline.type)},
                           {"line", spline.node->line},
                           {"keys", std::move(keys)}});
    }
    for (const std::unique_ptr<Entry>& child : entry.children) children.push_back(describe(*child));
    return {{"number", entry.number},          {"name", jsonText(entry.name)},  {"enabled", entry.enabled},
            {"start", entry.showStart()},      {"end", entry.showEnd()},        {"line", entry.node->line},
            {"triggers", std::move(triggers)}, {"splines", std::move(splines)}, {"entries", std::move(children)}};
}

} // namespace

void addPrint(CLI::App& app, int&)
{
    struct Options
    {
        Source source;
        bool summary = false;
        bool noNumbers = false;
        bool json = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "print", ABOUT, DETAILS);
    options->source.addTo(*command);
    command->add_flag("--summary", options->summary, "Only how much there is, and of what");
    command->add_flag("--no-numbers", options->noNumbers, "Without the numbers of entries, which a new entry changes");
    addJson(*command, options->json);
    command->callback([options] {
        const Score score = options->source.load();
        if (options->json)
        {
            nlohmann::ordered_json entries = nlohmann::ordered_json::array();
            for (const std::unique_ptr<Entry>& entry : score.entries()) entries.push_back(describe(*entry));
            printJson(
                nlohmann::ordered_json{{"file", jsonText(score.path())}, {"end", score.end()}, {"entries", entries}});
            return;
        }
        if (options->summary) return printSummary(score);
        const std::vector<const Entry*> all = score.all();
        std::size_t width = 0;
        for (const Entry* entry : all)
            width = std::max(width, (readable(entry->showStart()) + "-" + readable(entry->showEnd())).size());
        for (const Entry* entry : all) printEntry(*entry, width, !options->noNumbers);
        std::printf("end  %s\n", readable(score.end()).c_str());
    });
}

} // namespace Timeline
