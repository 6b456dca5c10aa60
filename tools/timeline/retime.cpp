// The commands shift and retime.

#include "commands.h"

#include "commandline.h"
#include "timemap.h"

#include <cmath>
#include <limits>

namespace Timeline
{

namespace
{

const char SHIFT_ABOUT[] = "Move everything from a time on.";
const char SHIFT_DETAILS[] = "Times are seconds of the show. Entries that start at or after --from move; entries that "
                             "span it are stretched, and "
                             "in them triggers and keys at or after it move along, a repeating trigger being cut in "
                             "two. With --to only what lies "
                             "between the two moves. A --by below 0 moves back; when that would put keys out of order "
                             "or leave an entry no length, "
                             "nothing is done unless --force is given.\n"
                             "Example, two seconds more at 64: timeline shift --from 64 --by 2 -i data/glacier.xml";

const char RETIME_ABOUT[] = "Scale all times from one tempo to another.";
const char RETIME_DETAILS[] =
    "All times become FROM / TO times as long, counted from --origin, which stays where it is. Speeds in the values of "
    "triggers and splines are not touched.\n"
    "Example: timeline retime --from 120 --to 124 -o new.xml data/glacier.xml";

void apply(const Source& source, const Target& target, const TimeMap& map, bool force)
{
    const Score score = source.load();
    Edits edits(score.document());
    const TimeChanges changes = mapTimes(score, edits, map, force);
    target.write(edits.apply(), source);
    target.tell(changes.text() + ".");
}

} // namespace

void addShift(CLI::App& app, int&)
{
    struct Options
    {
        Source source;
        Target target;
        double from = 0.0;
        double to = std::numeric_limits<double>::infinity();
        double by = 0.0;
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "shift", SHIFT_ABOUT, SHIFT_DETAILS);
    options->source.addTo(*command);
    options->target.addTo(*command);
    command->add_option("--from", options->from, "From this time on")->required()->type_name("T");
    command->add_option("--by", options->by, "By so many seconds")->required()->type_name("D");
    command->add_option("--to", options->to, "Up to, but not at, this time")->type_name("T2");
    command->add_flag("--force", options->force, "Also when keys lose their order");
    command->callback([options] {
        if (!std::isfinite(options->from) || !std::isfinite(options->by)) throw Failure("Times are finite numbers");
        if (!(options->to > options->from)) throw Failure("--to lies behind --from");
        apply(options->source, options->target, shiftMap(options->from, options->to, options->by), options->force);
    });
}

void addRetime(CLI::App& app, int&)
{
    struct Options
    {
        Source source;
        Target target;
        double from = 0.0;
        double to = 0.0;
        double origin = 0.0;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "retime", RETIME_ABOUT, RETIME_DETAILS);
    options->source.addTo(*command);
    options->target.addTo(*command);
    command->add_option("--from", options->from, "Beats a minute now")->required()->type_name("BPM");
    command->add_option("--to", options->to, "Beats a minute then")->required()->type_name("BPM");
    command->add_option("--origin", options->origin, "The time that stays, 0 at first")->type_name("T");
    command->callback([options] {
        if (options->from <= 0.0 || options->to <= 0.0) throw Failure("A tempo is a number above 0");
        apply(options->source, options->target, tempoMap(options->from, options->to, options->origin), false);
    });
}

} // namespace Timeline
