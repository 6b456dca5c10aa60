#include "commands.h"

#include "commandline.h"
#include "edits.h"
#include "effecttable.h"
#include "numbers.h"
#include "showrenderer.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <utility>

namespace Timeline
{

namespace
{

const char ABOUT[] = "Tell what is seen at a time, and why not.";
const char DETAILS[] =
    "Renders the frame at T, then once more without each of the entries that run: which change how many pixels, which "
    "lie fully under others, and how many milliseconds of the frame each takes. What is switched off is named too. The "
    "show starts at T, as after a seek; --exact plays it from its beginning, so that what effects keep from before is "
    "as in the show, and takes accordingly long. --profile tells, instead, the milliseconds of each entry over the "
    "show, "
    "second by second. Times are those of this machine, and of what else runs on it: the frame is measured twice, and "
    "what is less than the difference says nothing.\n"
    "Example: timeline why 57";

const double BEHIND = 0.0005; // seconds behind T: single precision must not fall short of a start at T
const int TIMED_FRAMES = 10;
const int EXACT_FPS = 30;
const int MIN_PIXELS = 16;

struct Options
{
    double time = 0.0;
    Source source;
    bool exact = false;
    bool profile = false;
    double from = 0.0;
    double to = -1.0;
    int rate = 2;
    std::vector<int> size = {0, 0};
    std::string program;
    bool cpu = false;
    bool json = false;
};

struct Shown
{
    const Entry* entry;
    long changed = 0;     // pixels
    bool covered = false; // changes nothing, but would if nothing lay over it
    double milliseconds = 0.0;
};

bool isOn(const Entry& entry)
{
    return entry.enabled && (!entry.parent || isOn(*entry.parent));
}

bool runsAt(const Entry& entry, double time)
{
    return entry.showStart() <= time && time < entry.showEnd() && (!entry.parent || runsAt(*entry.parent, time));
}

// The script with some entries switched off.
std::string without(const Score& score, const std::vector<const Entry*>& entries)
{
    Edits edits(score.document());
    for (const Entry* entry : entries) edits.setAttribute(*entry->node, "state", "off");
    return edits.apply();
}

long countChanged(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b)
{
    long changed = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); i += 4)
        if (a[i] != b[i] || a[i + 1] != b[i + 1] || a[i + 2] != b[i + 2]) ++changed;
    return changed;
}

// The fastest of the frames behind the first, which makes up for all that was missed.
double fastest(const std::vector<ShowRenderer::Frame>& frames)
{
    double best = frames.back().milliseconds;
    for (std::size_t i = 1; i < frames.size(); ++i) best = std::min(best, frames[i].milliseconds);
    return best;
}

// Frames from T on.
class Stage
{
public:
    Stage(const Options& options, const Show& show)
        : mRenderer(show, options.program, options.size[0], options.size[1]), mTime(options.time)
    {
        mRenderer.countProcessorTime(options.cpu);
        mRange.count = TIMED_FRAMES;
        mRange.start = mTime + BEHIND - 1.0 / mRange.fps;
        if (!options.exact) return;
        mRange.fps = EXACT_FPS;
        const int steps = std::max(1, static_cast<int>(mTime * EXACT_FPS));
        mRange.skipped = steps - 1;
        mRange.start = mTime + BEHIND - static_cast<double>(steps) / EXACT_FPS;
    }

    std::vector<ShowRenderer::Frame> render(const std::string& script)
    {
        std::vector<ShowRenderer::Frame> frames = mRenderer.render(script, mRange);
        if (frames.empty()) throw Failure("The show has no frame at " + readable(mTime));
        return frames;
    }

    long pixels() const { return static_cast<long>(mRenderer.width()) * mRenderer.height(); }

private:
    ShowRenderer mRenderer;
    ShowRenderer::Range mRange;
    double mTime;
};

// An entry that changes nothing is tried once more with all off that is drawn behind it.
bool isCovered(Stage& stage, const Score& score, const std::vector<const Entry*>& active, std::size_t index)
{
    std::vector<const Entry*> above(active.begin() + static_cast<std::ptrdiff_t>(index) + 1, active.end());
    if (above.empty()) return false;
    const auto with = stage.render(without(score, above));
    above.push_back(active[index]);
    return countChanged(with.front().pixels, stage.render(without(score, above)).front().pixels) > 0;
}

std::string verdict(const Shown& shown, long pixels)
{
    if (shown.changed > 0)
    {
        char text[64];
        const double share = 100.0 * static_cast<double>(shown.changed) / static_cast<double>(pixels);
        std::snprintf(text, sizeof(text), "%5.1f %%  %7ld pixels", share, shown.changed);
        return text;
    }
    return shown.covered ? "not seen: lies fully under others" : "not seen: changes nothing here";
}

void explain(const Options& options)
{
    const Score score = options.source.load();
    if (!(options.time >= 0.0 && options.time < score.end()))
        throw Failure("The show runs from 0 to " + readable(score.end()) + "; there is nothing at " +
                      readable(options.time));
    std::vector<const Entry*> active, off;
    for (const Entry* entry : score.all())
    {
        if (!runsAt(*entry, options.time)) continue;
        (isOn(*entry) ? active : off).push_back(entry);
    }
    Stage stage(options, Show(showFolder(options.source.show)));
    const std::vector<ShowRenderer::Frame> whole = stage.render(score.document().text());
    const auto again = stage.render(score.document().text());
    const double all = std::min(fastest(whole), fastest(again));
    const double noise = std::fabs(fastest(whole) - fastest(again));
    const long chance = countChanged(whole.front().pixels, again.front().pixels);
    std::vector<Shown> results;
    for (std::size_t i = 0; i < active.size(); ++i)
    {
        const auto frames = stage.render(without(score, {active[i]}));
        Shown shown{active[i], countChanged(whole.front().pixels, frames.front().pixels), false, all - fastest(frames)};
        if (shown.changed == 0) shown.covered = isCovered(stage, score, active, i);
        results.push_back(shown);
    }

    if (options.json)
    {
        nlohmann::ordered_json entries = nlohmann::ordered_json::array();
        for (const Shown& shown : results)
            entries.push_back({{"number", shown.entry->number},
                               {"name", jsonText(shown.entry->name)},
                               {"line", shown.entry->node->line},
                               {"pixels", shown.changed},
                               {"covered", shown.covered},
                               {"milliseconds", std::round(shown.milliseconds * 100.0) / 100.0}});
        printJson(nlohmann::ordered_json{{"time", options.time},
                                         {"pixels", stage.pixels()},
                                         {"milliseconds", std::round(all * 100.0) / 100.0},
                                         {"noise", std::round(noise * 100.0) / 100.0},
                                         {"chance", chance},
                                         {"entries", std::move(entries)}});
        return;
    }
    std::printf("at %s: %zu entries run, %.1f ms a frame, measured to %.1f\n", readable(options.time).c_str(),
                active.size(), all, noise);
    if (chance > 0) std::printf("the same frame drawn twice differs in %ld pixels\n", chance);
    std::size_t width = 0;
    for (const Entry* entry : active) width = std::max(width, entry->number.size() + entry->label().size() + 1);
    for (const Shown& shown : results)
    {
        const std::string name = shown.entry->number + " " + shown.entry->label();
        std::printf("%-*s  %-34s %7.1f ms\n", static_cast<int>(width), name.c_str(),
                    verdict(shown, stage.pixels()).c_str(), shown.milliseconds);
    }
    for (const Entry* entry : off)
        std::printf("%s %s  switched off%s\n", entry->number.c_str(), entry->label().c_str(),
                    entry->enabled ? ", with what it lies in" : "");
    const EffectTable effects = EffectTable::ofShow(showFolder(options.source.show));
    for (const Entry* entry : active)
    {
        const EffectClass* effect = effects.find(entry->name);
        if (!effect)
            std::printf("%s: no effect has this name\n", entry->label().c_str());
        else if (effect->seek == "other" && !options.exact)
            std::printf("%s: lives on what was before; --exact shows it as in the show\n", entry->label().c_str());
        else if (effect->seek == "flicker")
            std::printf("%s: is drawn by chance, which others without it have otherwise\n", entry->label().c_str());
    }
}

// Milliseconds by second of the show.
using Costs = std::map<int, double>;

// The frames at whole steps from `first` to before `last`, each with the time of its drawing; `first` counts from 0.
std::map<int, double> measure(ShowRenderer& renderer, const std::string& script, int first, int last, int rate)
{
    ShowRenderer::Range range;
    range.fps = rate;
    // One frame ahead takes what there is to catch up.
    range.start = static_cast<double>(first - 2) / rate + BEHIND;
    range.count = last - first + 1;
    std::map<int, double> times;
    const std::vector<ShowRenderer::Frame> frames = renderer.render(script, range);
    for (std::size_t i = 1; i < frames.size(); ++i) times[first + static_cast<int>(i) - 1] = frames[i].milliseconds;
    return times;
}

void profile(const Options& options)
{
    const Score score = options.source.load();
    const double to = std::min(options.to >= 0.0 ? options.to : score.end(), score.end());
    const double from = std::max(options.from, 0.0);
    if (!(from < to)) throw Failure("There is nothing from " + readable(from) + " to " + readable(to));
    const Show show(showFolder(options.source.show));
    ShowRenderer renderer(show, options.program, options.size[0], options.size[1]);
    renderer.countProcessorTime(options.cpu);
    const auto frameAt = [&](double time) {
        return static_cast<int>(std::ceil(std::clamp(time, from, to) * options.rate));
    };
    const std::map<int, double> whole =
        measure(renderer, score.document().text(), frameAt(from), frameAt(to), options.rate);

    struct Column
    {
        const Entry* entry;
        Costs costs;
    };
    std::vector<Column> columns;
    const std::vector<const Entry*> all = score.all();
    for (const Entry* entry : all)
    {
        const int first = frameAt(entry->showStart()), last = frameAt(entry->showEnd());
        if (!isOn(*entry) || first >= last) continue;
        std::fprintf(stderr, "without %s %s\n", entry->number.c_str(), entry->label().c_str());
        Column column{entry, {}};
        std::map<int, int> counts;
        for (const auto& time : measure(renderer, without(score, {entry}), first, last, options.rate))
        {
            const auto found = whole.find(time.first);
            if (found == whole.end()) continue;
            const int second = time.first / options.rate;
            column.costs[second] += found->second - time.second;
            ++counts[second];
        }
        for (auto& cost : column.costs) cost.second /= counts[cost.first];
        columns.push_back(std::move(column));
    }

    Costs totals;
    std::map<int, int> counts;
    for (const auto& time : whole)
    {
        totals[time.first / options.rate] += time.second;
        ++counts[time.first / options.rate];
    }
    for (auto& total : totals) total.second /= counts[total.first];
    const auto rounded = [](double value) { return std::round(value * 100.0) / 100.0; };
    if (options.json)
    {
        nlohmann::ordered_json entries = nlohmann::ordered_json::array(), seconds = nlohmann::ordered_json::object();
        for (const auto& total : totals) seconds[std::to_string(total.first)] = rounded(total.second);
        for (const Column& column : columns)
        {
            nlohmann::ordered_json costs = nlohmann::ordered_json::object();
            for (const auto& cost : column.costs) costs[std::to_string(cost.first)] = rounded(cost.second);
            entries.push_back({{"number", column.entry->number},
                               {"name", jsonText(column.entry->name)},
                               {"line", column.entry->node->line},
                               {"milliseconds", std::move(costs)}});
        }
        printJson(nlohmann::ordered_json{{"milliseconds", std::move(seconds)}, {"entries", std::move(entries)}});
        return;
    }
    std::printf("second  frame ms  of these\n");
    for (const auto& total : totals)
    {
        std::vector<std::pair<double, std::string>> parts;
        for (const Column& column : columns)
        {
            const auto found = column.costs.find(total.first);
            if (found != column.costs.end())
                parts.emplace_back(found->second, column.entry->number + " " + column.entry->name);
        }
        std::sort(parts.rbegin(), parts.rend());
        std::printf("%6d  %8.1f ", total.first, total.second);
        for (const auto& part : parts) std::printf(" %s %.1f ", part.second.c_str(), part.first);
        std::printf("\n");
    }
}

} // namespace

void addWhy(CLI::App& app, int&)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "why", ABOUT, DETAILS);
    CLI::Option* const time =
        command->add_option("T", options->time, "The time in the show, in seconds")->type_name("");
    command->add_option("-f,--file", options->source.file, "The script; without it, that of the show")
        ->type_name("FILE");
    addShow(*command, options->source.show);
    CLI::Option* const exact = command->add_flag("--exact", options->exact, "Play from the beginning up to T");
    CLI::Option* const whole = command->add_flag("--profile", options->profile, "Tell the milliseconds over the show");
    whole->excludes(exact)->excludes(time);
    command->add_option("--from", options->from, "Where the profile begins, 0 at first")->needs(whole)->type_name("T");
    command->add_option("--to", options->to, "Where it ends; without it, the end of the show")
        ->needs(whole)
        ->type_name("T2");
    command->add_option("--rate", options->rate, "Frames a second that are measured, 2 at first")
        ->needs(whole)
        ->type_name("N")
        ->check(CLI::Range(1, 100));
    command->add_option("--size", options->size, "Width and height of the frames; without it, those of the show")
        ->expected(2)
        ->type_name("W H")
        ->check(CLI::Range(MIN_PIXELS, 2048));
    command->add_flag("--cpu", options->cpu, "Count processor time on all cores instead of the clock's");
    command->add_option("--program", options->program, "The renderer, if it is not the show's own")->type_name("PATH");
    addJson(*command, options->json);
    command->callback([options, time] {
        if (options->profile) return profile(*options);
        if (time->count() == 0) throw Failure("What time? Name T, or --profile");
        explain(*options);
    });
}

} // namespace Timeline
