// The commands copy, move, delete, rename, enable and disable.

#include "commands.h"

#include "commandline.h"
#include "edits.h"
#include "numbers.h"
#include "selection.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace Timeline
{

namespace
{

const double NOT_SET = std::numeric_limits<double>::quiet_NaN();

// What all these commands are given.
struct Options
{
    Source source;
    Target target;
    std::vector<std::string> entries;
    double to = NOT_SET;
    double by = NOT_SET;
    std::string before;
    std::string behind;
    std::string name;
};

void addSelection(CLI::App& command, Options& options)
{
    command.add_option("ENTRY", options.entries, ENTRY_HELP)->required()->type_name("");
    command.add_option("-f,--file", options.source.file, "The script; without it, that of the show")->type_name("FILE");
    addShow(command, options.source.show);
    options.target.addTo(command);
}

void addTimes(CLI::App& command, Options& options)
{
    CLI::Option* const to =
        command.add_option("--to", options.to, "To this time of the show; of several, the earliest start");
    to->type_name("T");
    command.add_option("--by", options.by, "By so many seconds")->type_name("D")->excludes(to);
}

void addLayers(CLI::App& command, Options& options)
{
    CLI::Option* const before = command.add_option("--before", options.before, "To the layer below this entry");
    before->type_name("OTHER");
    command.add_option("--after", options.behind, "To the layer above this entry")
        ->type_name("OTHER")
        ->excludes(before);
}

// Loads the script, lets `edit` loose on the chosen entries, and writes it.
void run(const Options& options,
         const std::function<void(const Score&, const std::vector<const Entry*>&, Edits&)>& edit)
{
    const Score score = options.source.load();
    Edits edits(score.document());
    edit(score, select(score, options.entries), edits);
    options.target.write(edits.apply(), options.source);
}

// The seconds by which the entries are to go.
double distanceOf(const Options& options, const std::vector<const Entry*>& entries)
{
    if (!std::isnan(options.by)) return options.by;
    if (std::isnan(options.to)) return 0.0;
    double first = std::numeric_limits<double>::infinity();
    for (const Entry* entry : entries) first = std::min(first, entry->showStart());
    return options.to - first;
}

void moveBy(Edits& edits, const Entry& entry, double by)
{
    for (const char* attribute : {"start", "end"})
        edits.setNumber(*entry.node, attribute, static_cast<float>(readDouble(entry.node->value(attribute)) + by));
}

// The entry as text, moved in time.
std::string textOf(const Score& score, const Entry& entry, double by)
{
    Edits moved(score.document());
    moveBy(moved, entry, by);
    return moved.applyTo(entry.node->span());
}

void requireOneList(const Entry& entry, const Entry& other)
{
    if (entry.parent != other.parent)
        throw Failure(entry.label() + " and " + other.label() + " do not lie in the same entry, so their times differ");
}

// Puts texts on lines of their own at the layer that the options name.
void insertLayers(const Options& options, const Score& score, const std::vector<const Entry*>& entries, double by,
                  Edits& edits)
{
    const bool isBefore = !options.before.empty();
    const Entry& other = selectOne(score, isBefore ? options.before : options.behind);
    for (const Entry* entry : entries)
    {
        requireOneList(*entry, other);
        if (isBefore)
            edits.insertBefore(*other.node, textOf(score, *entry, by));
        else
            edits.insertBehind(*other.node, textOf(score, *entry, by));
    }
}

bool hasLayer(const Options& options)
{
    return !options.before.empty() || !options.behind.empty();
}

bool hasTime(const Options& options)
{
    return !std::isnan(options.to) || !std::isnan(options.by);
}

} // namespace

void addCopy(CLI::App& app, int&)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command =
        addCommand(app, "copy", "Copy entries to another time or layer.",
                   "A copy stands behind its original, one layer up, unless --before or --after name "
                   "another place.\nExample: timeline copy cubes@56 --to 88.4 -i");
    addSelection(*command, *options);
    addTimes(*command, *options);
    addLayers(*command, *options);
    command->callback([options] {
        if (!hasTime(*options) && !hasLayer(*options)) throw Failure("Where to? Say --to, --by, --before or --after");
        run(*options, [&](const Score& score, const std::vector<const Entry*>& entries, Edits& edits) {
            const double by = distanceOf(*options, entries);
            if (hasLayer(*options)) return insertLayers(*options, score, entries, by, edits);
            for (const Entry* entry : entries) edits.insertBehind(*entry->node, textOf(score, *entry, by));
        });
    });
}

void addMove(CLI::App& app, int&)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command =
        addCommand(app, "move", "Move entries in time or to another layer.",
                   "What lies in an entry moves along.\nExample: timeline move flash@16 --by 0.5 -i");
    addSelection(*command, *options);
    addTimes(*command, *options);
    addLayers(*command, *options);
    command->callback([options] {
        if (!hasTime(*options) && !hasLayer(*options)) throw Failure("Where to? Say --to, --by, --before or --after");
        run(*options, [&](const Score& score, const std::vector<const Entry*>& entries, Edits& edits) {
            const double by = distanceOf(*options, entries);
            for (const Entry* entry : entries)
            {
                if (hasLayer(*options))
                    edits.remove(*entry->node);
                else
                    moveBy(edits, *entry, by);
            }
            if (hasLayer(*options)) insertLayers(*options, score, entries, by, edits);
        });
    });
}

void addDelete(CLI::App& app, int&)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command =
        addCommand(app, "delete", "Delete entries.", "Example: timeline delete flash@18 flash@32 -i");
    addSelection(*command, *options);
    command->callback([options] {
        run(*options, [](const Score&, const std::vector<const Entry*>& entries, Edits& edits) {
            for (const Entry* entry : entries) edits.remove(*entry->node);
        });
    });
}

void addRename(CLI::App& app, int&)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "rename", "Let entries run another effect.",
                                         "Example: timeline rename greetings@168 --to greetings2 -i");
    addSelection(*command, *options);
    command->add_option("--to", options->name, "The name of the other effect")->required()->type_name("NAME");
    command->callback([options] {
        run(*options, [&](const Score&, const std::vector<const Entry*>& entries, Edits& edits) {
            for (const Entry* entry : entries) edits.setAttribute(*entry->node, "name", options->name);
        });
    });
}

void addEnable(CLI::App& app, int&)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "enable", "Switch entries on.", "Example: timeline enable sun -i");
    addSelection(*command, *options);
    command->callback([options] {
        run(*options, [](const Score&, const std::vector<const Entry*>& entries, Edits& edits) {
            for (const Entry* entry : entries)
                if (!entry->enabled) edits.removeAttribute(*entry->node, "state");
        });
    });
}

void addDisable(CLI::App& app, int&)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "disable", "Switch entries off.", "Example: timeline disable sun@92 -i");
    addSelection(*command, *options);
    command->callback([options] {
        run(*options, [](const Score&, const std::vector<const Entry*>& entries, Edits& edits) {
            for (const Entry* entry : entries) edits.setAttribute(*entry->node, "state", "off");
        });
    });
}

} // namespace Timeline
