#include "commands.h"

#include "commandline.h"
#include "edits.h"
#include "grid.h"
#include "numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace Timeline
{

namespace
{

const char ABOUT[] = "Put times on the grid of the music.";
const char DETAILS[] =
    "The grid is that of --bpm and --offset, or the beats of a FILE that 'timeline beats -o' has written; --grid 1/4 "
    "is a "
    "beat, 1/16 a quarter of it, 1/1 a bar of four. Every start, end and trigger, with --what also keys, goes to its "
    "nearest point if that is not further than --within seconds, without it a quarter of the distance between points. "
    "What "
    "moves is printed with the way it goes, and what lies further away and stays. What lies in an entry moves with its "
    "start. Of a repeating trigger the first firing is put on the grid.\n"
    "Example: timeline snap --bpm 120 --grid 1/8 -i data/glacier.xml";

struct Options
{
    Source source;
    Target target;
    std::optional<double> bpm;
    double offset = 0.0;
    std::string beats;
    std::string grid = "1/4";
    double within = -1.0;
    std::vector<std::string> what = {"starts", "ends", "triggers"};
    double from = -std::numeric_limits<double>::infinity();
    double to = std::numeric_limits<double>::infinity();
};

class Snapper
{
public:
    Snapper(const Options& options, const Grid& grid, Edits& edits) : mOptions(options), mGrid(grid), mEdits(edits) {}

    void snap(const Entry& entry, double originBefore, double originAfter)
    {
        const Node& node = *entry.node;
        const double start = originBefore + readDouble(node.value("start"));
        const double end = originBefore + readDouble(node.value("end"));
        double newStart = originAfter + readDouble(node.value("start"));
        double newEnd = originAfter + readDouble(node.value("end"));
        if (wants("starts")) newStart = place(entry.label() + ": start", start, newStart);
        if (wants("ends")) newEnd = place(entry.label() + ": end", end, newEnd);
        if (end > start && !(newEnd > newStart))
        {
            say(entry.label() + ": its ends would meet; it stays");
            newStart = originAfter + readDouble(node.value("start"));
            newEnd = originAfter + readDouble(node.value("end"));
        }
        mEdits.setNumber(node, "start", static_cast<float>(newStart - originAfter));
        mEdits.setNumber(node, "end", static_cast<float>(newEnd - originAfter));

        if (wants("triggers"))
            for (const Trigger& trigger : entry.triggers)
            {
                const double local = readDouble(trigger.node->value("start"));
                const double placed =
                    place(entry.label() + ": trigger '" + trigger.name + "'", newStart + local, newStart + local);
                mEdits.setNumber(*trigger.node, "start", static_cast<float>(placed - newStart));
            }
        if (wants("keys"))
            for (const Spline& spline : entry.splines) snapKeys(entry, spline, newStart);
        for (const std::unique_ptr<Entry>& child : entry.children) snap(*child, start, newStart);
    }

private:
    bool wants(const char* what) const { return std::count(mOptions.what.begin(), mOptions.what.end(), what) > 0; }

    void say(const std::string& line) const { mOptions.target.tell(line); }

    // Where something goes that is at `now` and was at `before` in the unchanged show.
    double place(const std::string& what, double before, double now) const
    {
        if (!(before >= mOptions.from && before < mOptions.to)) return now;
        const double point = mGrid.nearest(now);
        const double away = std::fabs(point - now);
        const double within = mOptions.within >= 0.0 ? mOptions.within : mGrid.step(now) / 4;
        if (static_cast<float>(point) == static_cast<float>(now)) return now;
        if (away > within)
        {
            say(what + " at " + readable(now) + " stays: the grid is " + readable(away) + " away");
            return now;
        }
        say(what + " " + readable(now) + " to " + readable(point) + " (" + (point > now ? "+" : "") +
            shortest(point - now) + ")");
        return point;
    }

    void snapKeys(const Entry& entry, const Spline& spline, double start)
    {
        if (spline.timeScale == 0.0f) return;
        const double scale = static_cast<double>(spline.timeScale);
        const double offset = static_cast<double>(spline.timeOffset);
        for (std::size_t i = 0; i < spline.keys.size(); ++i)
        {
            const Key& key = spline.keys[i];
            const double now = start + readDouble(key.node->value("time")) * scale + offset;
            const std::string what = entry.label() + ": key of '" + spline.name + "'";
            const float time = static_cast<float>((place(what, now, now) - start - offset) / scale);
            const float before = i > 0 ? mLastKey : -std::numeric_limits<float>::infinity();
            const float behind =
                i + 1 < spline.keys.size() ? spline.keys[i + 1].time : std::numeric_limits<float>::infinity();
            const bool fits = time == key.time || (time > before && time < behind);
            if (!fits) say(what + " at " + readable(now) + " stays: it would meet its neighbour");
            mLastKey = fits ? time : key.time;
            mEdits.setNumber(*key.node, "time", mLastKey);
        }
    }

    const Options& mOptions;
    const Grid& mGrid;
    Edits& mEdits;
    float mLastKey = 0.0f; // of the spline in work
};

void run(const Options& options)
{
    if (options.beats.empty() != options.bpm.has_value()) throw Failure("The grid comes from --bpm or from --beats");
    const Grid grid = options.beats.empty() ? Grid(*options.bpm, options.offset, options.grid)
                                            : Grid(readBeats(options.beats), options.grid);
    const Score score = options.source.load();
    Edits edits(score.document());
    Snapper snapper(options, grid, edits);
    for (const std::unique_ptr<Entry>& entry : score.entries()) snapper.snap(*entry, 0.0, 0.0);
    options.target.write(edits.apply(), options.source);
}

} // namespace

void addSnap(CLI::App& app, int&)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "snap", ABOUT, DETAILS);
    options->source.addTo(*command);
    options->target.addTo(*command);
    command->add_option("--bpm", options->bpm, "Beats a minute")->type_name("B");
    command->add_option("--offset", options->offset, "The time of a beat, 0 at first")->type_name("S");
    command->add_option("--beats", options->beats, "Beats as 'timeline beats -o' writes them")->type_name("BEATS");
    command->add_option("--grid", options->grid, "The note of the grid, 1/4 at first")->type_name("NOTE");
    command->add_option("--within", options->within, "What lies further away stays")->type_name("SECONDS");
    command->add_option("--what", options->what, "starts, ends, triggers, keys; the first three at first")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("LIST")
        ->check(CLI::IsMember({"starts", "ends", "triggers", "keys"}));
    command->add_option("--from", options->from, "Only from this time on")->type_name("T");
    command->add_option("--to", options->to, "Only up to this time")->type_name("T2");
    command->callback([options] { run(*options); });
}

} // namespace Timeline
