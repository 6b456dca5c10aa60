#include "commands.h"

#include "commandline.h"
#include "edits.h"
#include "numbers.h"
#include "rhythm.h"
#include "show.h"

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

namespace Timeline
{

namespace
{

const char ABOUT[] = "Find the beat of the music.";
const char DETAILS[] =
    "Prints the tempo, the offset (the time of the first beat), where the bars of four beats begin and how loud the "
    "sections are. The tempo is that of the grid on which the onsets of the whole piece lie best, so it is right where "
    "the counting of a short stretch is not; with --bpm only the offset is searched. -o writes the beats for 'timeline "
    "snap --beats'. --click writes the music with a click on every beat, a higher one on the first of a bar: hear it, "
    "before you trust it. --triggers prints trigger tags instead, one for every N-th beat (4 is a bar, 0.5 an eighth) "
    "from --from up to --to; their times count from the start of their entry, which is --from, or --start.\n"
    "Example: timeline beats --triggers falloff --every 2 --from 24 --to 32";

struct Options
{
    std::string music;
    std::string show;
    double bpm = 0.0;
    std::string output;
    std::string click;
    std::vector<std::string> trigger; // name, value
    double every = 1.0;
    double from = 0.0;
    double to = -1.0;
    double start = 0.0;
    bool hasStart = false;
    bool json = false;
};

// Its path, and what is in it.
Music loadMusic(const Options& options, std::string& path)
{
    path = options.music;
    if (!path.empty()) return Music::load(path);
    Show show(showFolder(options.show));
    if (show.music().empty()) throw Failure(show.labelOf(CONFIGURATION_FILE) + " names no music; name MUSIC");
    path = show.labelOf(show.music());
    const std::string bytes = show.readText(show.music());
    return {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), path};
}

double rounded(double seconds)
{
    return std::round(seconds * 1e4) / 1e4;
}

nlohmann::ordered_json describe(const Rhythm& rhythm, const std::string& path)
{
    using Json = nlohmann::ordered_json;
    Json beats = Json::array(), bars = Json::array(), onsets = Json::array(), sections = Json::array();
    for (const double beat : rhythm.beats) beats.push_back(rounded(beat));
    for (const double bar : rhythm.bars()) bars.push_back(rounded(bar));
    for (const Onset& onset : rhythm.onsets)
        onsets.push_back({{"time", rounded(onset.time)}, {"strength", rounded(onset.strength)}});
    for (const Section& section : rhythm.sections)
        sections.push_back({{"from", rounded(section.from)},
                            {"to", rounded(section.to)},
                            {"decibels", std::round(section.level * 10.0) / 10.0}});
    return {
        {"file", jsonText(path)},           {"seconds", rounded(rhythm.seconds)}, {"bpm", rounded(rhythm.bpm)},
        {"offset", rounded(rhythm.offset)}, {"fit", rounded(rhythm.fit)},         {"beats", std::move(beats)},
        {"bars", std::move(bars)},          {"onsets", std::move(onsets)},        {"sections", std::move(sections)}};
}

void printReport(const Rhythm& rhythm, const std::string& path)
{
    std::printf("%s: %s seconds, %zu onsets\n", path.c_str(), readable(rhythm.seconds).c_str(), rhythm.onsets.size());
    std::printf("tempo   %s bpm", readable(rhythm.bpm).c_str());
    if (rhythm.guess > 0.0) std::printf(" (counted beat by beat: %.1f)", rhythm.guess);
    std::printf("\noffset  %s; %.0f %% of the onsets' strength is on sixteenths\n", readable(rhythm.offset).c_str(),
                100.0 * rhythm.fit);
    const std::vector<double> bars = rhythm.bars();
    std::printf("bars    %zu, from %s on, of %s seconds\n", bars.size(), readable(bars.empty() ? 0.0 : bars[0]).c_str(),
                readable(BEATS_PER_BAR * 60.0 / rhythm.bpm).c_str());
    std::printf("\nsections by loudness\n");
    for (const Section& section : rhythm.sections)
    {
        const double bar = 60.0 / rhythm.bpm * BEATS_PER_BAR;
        const int blocks = std::clamp(static_cast<int>((section.level + 42.0) / 1.5), 1, 28);
        std::printf("%9s  %5.1f bars  %5.1f dB  %s\n", readable(std::round(section.from * 100.0) / 100.0).c_str(),
                    (section.to - section.from) / bar, section.level,
                    std::string(static_cast<std::size_t>(blocks), '#').c_str());
    }
}

void printTriggers(const Options& options, const Rhythm& rhythm)
{
    const double beat = 60.0 / rhythm.bpm;
    const double first = rhythm.beats[static_cast<std::size_t>(rhythm.firstBar)];
    const double to = options.to >= 0.0 ? options.to : rhythm.seconds;
    const double start = options.hasStart ? options.start : options.from;
    const double step = beat * options.every;
    const double hair = 0.01; // a beat that lies just ahead of --from is meant too
    const std::string value = options.trigger.size() > 1 ? options.trigger[1] : "";
    const std::string tag = "\" " + writeAttribute("name", options.trigger[0]) + " " + writeAttribute("value", value);
    for (double n = std::ceil((options.from - hair - first) / step);; ++n)
    {
        const double time = first + n * step;
        if (time >= to - hair) break;
        std::printf("<trigger start=\"%s%s/>\n", shortest(std::max(0.0, rounded(time - start))).c_str(), tag.c_str());
    }
}

void writeClick(const std::string& path, const Music& music, const Rhythm& rhythm)
{
    const double seconds = 0.03, low = 1000.0, high = 2000.0; // of a click, and its two pitches
    const double pi = 3.14159265358979323846;
    std::vector<short> samples(music.stereo().size());
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<short>(music.stereo()[i] / 2);
    const std::size_t length = static_cast<std::size_t>(seconds * music.rate());
    for (std::size_t beat = 0; beat < rhythm.beats.size(); ++beat)
    {
        const bool isBar = (beat + BEATS_PER_BAR - static_cast<std::size_t>(rhythm.firstBar)) % BEATS_PER_BAR == 0;
        const std::size_t begin =
            static_cast<std::size_t>(std::max(0.0, std::round(rhythm.beats[beat] * music.rate())));
        for (std::size_t i = 0; i < length && 2 * (begin + i) + 1 < samples.size(); ++i)
        {
            const double time = static_cast<double>(i) / music.rate();
            const double wave = 14000.0 * (1.0 - time / seconds) * std::sin(2.0 * pi * (isBar ? high : low) * time);
            for (const std::size_t side : {std::size_t(0), std::size_t(1)})
            {
                short& sample = samples[2 * (begin + i) + side];
                sample = static_cast<short>(std::clamp(sample + wave, -32768.0, 32767.0));
            }
        }
    }
    SF_INFO info{};
    info.samplerate = music.rate();
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) throw Failure(path + ": " + sf_strerror(nullptr));
    const sf_count_t frames = static_cast<sf_count_t>(samples.size() / 2);
    const bool isWritten = sf_writef_short(file, samples.data(), frames) == frames;
    if (sf_close(file) != 0 || !isWritten) throw Failure(path + " cannot be written");
}

void run(const Options& options)
{
    std::string path;
    const Music music = loadMusic(options, path);
    const Rhythm rhythm = findRhythm(music, options.bpm);
    if (!options.output.empty()) writeFile(options.output, describe(rhythm, path).dump() + "\n");
    if (!options.click.empty()) writeClick(options.click, music, rhythm);
    if (options.output == "-") return;
    if (!options.trigger.empty())
        printTriggers(options, rhythm);
    else if (options.json)
        printJson(describe(rhythm, path));
    else
        printReport(rhythm, path);
}

} // namespace

void addBeats(CLI::App& app, int&)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "beats", ABOUT, DETAILS);
    command->add_option("MUSIC", options->music, "The music; without it, that of the show")->type_name("");
    addShow(*command, options->show);
    command->add_option("--bpm", options->bpm, "The tempo, where it is known")
        ->type_name("B")
        ->check(CLI::Range(1.0, 1000.0));
    command->add_option("-o,--output", options->output, "Where the beats go, as JSON")->type_name("OUT");
    command->add_option("--click", options->click, "Write the music with a click on every beat")->type_name("OUT.wav");
    CLI::Option* const triggers =
        command->add_option("--triggers", options->trigger, "Print trigger tags of this name and value")
            ->expected(1, 2)
            ->type_name("NAME [VALUE]");
    command->add_option("--every", options->every, "Beats from one trigger to the next, 1 at first")
        ->needs(triggers)
        ->type_name("N")
        ->check(CLI::Range(0.01, 1e6));
    command->add_option("--from", options->from, "The time of the first trigger, 0 at first")
        ->needs(triggers)
        ->type_name("T");
    command->add_option("--to", options->to, "Triggers before this time; without it, to the end")
        ->needs(triggers)
        ->type_name("T2");
    CLI::Option* const start =
        command->add_option("--start", options->start, "The start of their entry, --from at first")
            ->needs(triggers)
            ->type_name("T");
    addJson(*command, options->json);
    command->callback([options, start] {
        options->hasStart = start->count() > 0;
        run(*options);
    });
}

} // namespace Timeline
