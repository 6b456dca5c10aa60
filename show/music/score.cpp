#include "score.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <string>

// "Glacier heart". D minor. It begins in wind and bells, gathers a bass and then drums, falls silent around a heart
// that beats under a choir, and climbs once more. The fire breaks off in its middle, where the heart is heard again,
// comes back in half time, and ends a tone higher; the last dominant leads home, and the heart is left alone.

namespace Music
{

const std::vector<Section> SECTIONS = {
    {"surface", 0}, {"descent", 8}, {"crevasse", 24}, {"heart", 40}, {"ascent", 52}, {"fire", 60},
    {"break", 68},  {"return", 72}, {"summit", 76},   {"names", 84}, {"cold", 96},
};

const std::vector<Dynamic> DYNAMICS = {
    {0.0, -4.0},  {7.0, -2.0},   {8.0, -2.0},   {15.9, -1.5},  // surface, descent
    {16.0, -1.0}, {23.9, -0.5},  {24.0, -1.0},  {31.9, -1.0},  // crevasse
    {32.0, -0.3}, {39.9, -0.3},  {40.0, -3.0},  {51.9, -1.5},  // heart
    {52.0, -3.5}, {59.72, 1.5},  {59.76, -7.0}, {59.98, -7.0}, // ascent, and a held breath
    {60.0, 0.5},  {67.9, 0.5},   {68.0, -1.0},  {70.0, -3.0},  // fire, break
    {71.72, 0.0}, {71.76, -9.0}, {71.98, -9.0}, {72.0, 1.0},   // and again a breath
    {75.9, 1.0},  {76.0, 1.3},   {83.9, 1.3},   {84.0, 0.0},   // return, summit
    {91.9, -0.5}, {92.0, -0.5},  {96.0, -2.0},  {104.0, -2.0}, // names, cold
};

namespace
{

const int STEPS = 16; // of a bar

// "A4", "Bb2", "F#3" to hertz; A4 is 440.
double pitch(const std::string& name)
{
    static const int SEMITONES[] = {9, 11, 0, 2, 4, 5, 7}; // a to g
    int semitone = SEMITONES[name[0] - 'A'];
    std::size_t place = 1;
    if (name[place] == 'b')
        semitone--, place++;
    else if (name[place] == '#')
        semitone++, place++;
    const int octave = std::atoi(name.c_str() + place);
    return 440.0 * std::pow(2.0, (semitone - 9) / 12.0 + octave - 4);
}

struct Chord
{
    const char* name;
    const char* bass;
    const char* tones[5]; // low to high, for pads and arpeggios
};

const Chord CHORDS[] = {
    {"Dm", "D2", {"D3", "A3", "C4", "E4", "F4"}},    {"Bb", "Bb1", {"Bb2", "F3", "A3", "D4", "F4"}},
    {"F", "F2", {"F3", "A3", "C4", "G4", "A4"}},     {"C", "C2", {"C3", "G3", "D4", "E4", "G4"}},
    {"Gm", "G1", {"G2", "D3", "Bb3", "F4", "A4"}},   {"Asus", "A1", {"A2", "E3", "G3", "D4", "E4"}},
    {"A7", "A1", {"A2", "E3", "G3", "C#4", "E4"}},   {"Am", "A1", {"A2", "E3", "G3", "C4", "E4"}},
    {"B7", "B1", {"B2", "F#3", "A3", "D#4", "F#4"}}, {"Em", "E2", {"E3", "B3", "D4", "F#4", "G4"}},
    {"C7", "C2", {"C3", "G3", "B3", "E4", "G4"}},    {"G", "G1", {"G2", "D3", "B3", "D4", "A4"}},
    {"D", "D2", {"D3", "A3", "D4", "F#4", "A4"}},
};

// The chord of each bar of a section, by name; shorter ones repeat.
const char* const COLD_CHORDS = "Dm Dm Bb Bb Gm Gm Asus Asus";
const char* const MAIN_CHORDS = "Dm Bb F C";
const char* const CREVASSE_CHORDS = "Dm Gm Am Asus Bb F C Am Dm Bb F C Gm F C A7";
const char* const HEART_CHORDS = "Gm Dm Bb Asus Gm Dm Bb A7";
const char* const FIRE_CHORDS = "Dm Bb F C Dm Bb Gm A7";
const char* const BREAK_CHORDS = "Dm Bb F C";
const char* const RETURN_CHORDS = "Dm Bb Gm B7";           // B7 turns to E minor
const char* const SUMMIT_CHORDS = "Em C7 G D Em C7 Am A7"; // A7 turns home

std::vector<Chord> progression(const char* names)
{
    std::vector<Chord> chords;
    std::istringstream words(names);
    for (std::string word; words >> word;)
    {
        const Chord* chord = std::find_if(std::begin(CHORDS), std::end(CHORDS),
                                          [&](const Chord& candidate) { return word == candidate.name; });
        assert(chord != std::end(CHORDS) && "the chord is in the table");
        chords.push_back(*chord);
    }
    return chords;
}

// What one voice strikes in a bar: a mark for each of its steps, 'X' accented, 'x' full, 'o' soft, 'g' hardly heard,
// '.' none.
struct Line
{
    const char* steps;
    Voice voice;
    float level;
};

using Groove = std::vector<Line>;

float accent(char mark)
{
    return mark == 'X' ? 1.15f : mark == 'x' ? 1.0f : mark == 'o' ? 0.5f : 0.25f;
}

// How much of its level a note has on each step of a bar: the first and third beat carry, what lies between floats.
float meter(double step)
{
    static const float WEIGHTS[STEPS] = {1.0f,  0.72f, 0.84f, 0.76f, 0.92f, 0.7f,  0.86f, 0.78f,
                                         0.97f, 0.72f, 0.84f, 0.76f, 0.92f, 0.74f, 0.88f, 0.82f};
    return WEIGHTS[int(step) % STEPS];
}

// The bass's 16 steps of a bar: '1' the root, '8' its octave, '5' its fifth, '-' holds on, '.' rests.
struct BassLine
{
    const char* steps;
    const char* turn = nullptr; // those of every fourth bar, where they differ
};

// A tune has one text for each bar.
using Tune = std::vector<const char*>;

// A line of melody: notes with lengths in steps, "-" being a rest, behind each other from the bar's start.
struct Phrase
{
    int bar;
    const char* text; // "A4:6 D5:6 -:4"
    float level;
};

// Writes the notes of a section: what a hand at each kind of instrument is told.
class Composer
{
public:
    explicit Composer(std::vector<Note>& notes) : mNotes(notes) {}

    // How late every second sixteenth comes from now on, as a share of a sixteenth: 0 straight.
    void swing(double share) { mSwing = share; }

    // Adds one note; `bar` and `steps` give its start.
    void strike(Voice voice, int bar, double steps, float level, double hertz = 0.0, double length = 0.0,
                float pan = 0.0f, double brightness = 0.0)
    {
        const double late = std::fmod(steps, 2.0) == 1.0 ? mSwing : 0.0;
        const double start = bar * SECONDS_PER_BAR + (steps + late) * SECONDS_PER_STEP;
        mNotes.push_back({voice, start, length, hertz, level, pan, brightness});
    }

    // A sound of that many bars without a pitch.
    void texture(Voice voice, int bar, int length, float level)
    {
        strike(voice, bar, 0.0, level, 0.0, length * SECONDS_PER_BAR);
    }

    // Chords held for a bar each, from bar `first` up to, not including, `last`; the filter moves between two cutoffs.
    void pads(int first, int last, const char* chords, float level, double from, double to)
    {
        const std::vector<Chord> changes = progression(chords);
        for (int bar = first; bar < last; bar++)
        {
            const double brightness = from * std::pow(to / from, double(bar - first) / (last - first));
            for (const char* tone : changes[std::size_t(bar - first) % changes.size()].tones)
                strike(Voice::Pad, bar, 0.0, level, pitch(tone), SECONDS_PER_BAR, 0.0f, brightness);
        }
    }

    void choirs(int first, int last, const char* chords, float level)
    {
        const std::vector<Chord> changes = progression(chords);
        for (int bar = first; bar < last; bar++)
            for (int tone = 1; tone < 5; tone++)
                strike(Voice::Choir, bar, 0.0, level,
                       pitch(changes[std::size_t(bar - first) % changes.size()].tones[tone]), SECONDS_PER_BAR * 0.98);
    }

    // The roots of the chords to a rhythm.
    void basses(int first, int last, const char* chords, const BassLine& line, float level, double from, double to)
    {
        const std::vector<Chord> changes = progression(chords);
        for (int bar = first; bar < last; bar++)
        {
            const char* const steps = bar % 4 == 3 && line.turn ? line.turn : line.steps;
            const double root = pitch(changes[std::size_t(bar - first) % changes.size()].bass);
            const double brightness = from + (to - from) * (bar - first) / (last - first);
            for (int step = 0; step < STEPS; step++)
            {
                if (steps[step] == '.' || steps[step] == '-') continue;
                int length = 1;
                while (step + length < STEPS && steps[step + length] == '-') length++;
                const double hertz = steps[step] == '8' ? root * 2.0 : steps[step] == '5' ? root * 1.5 : root;
                strike(Voice::Bass, bar, step, level * (0.4f + 0.6f * meter(step)), hertz,
                       length * SECONDS_PER_STEP * 0.95, 0.0f, brightness);
            }
        }
    }

    // Sixteenths up and down the chord, over two octaves; the order changes every other bar. Each `every` step sounds.
    // They move from side to side, and swell over four bars.
    void arpeggio(int first, int last, const char* chords, float from, float to, int every, double brightness)
    {
        static const int ORDERS[2][STEPS] = {{0, 1, 2, 3, 4, 6, 4, 3, 2, 1, 2, 3, 4, 7, 6, 4},
                                             {4, 3, 2, 1, 0, 2, 3, 4, 6, 4, 3, 2, 7, 6, 4, 3}};
        static const float SWELL[4] = {0.88f, 0.95f, 1.05f, 1.12f};
        const std::vector<Chord> changes = progression(chords);
        for (int bar = first; bar < last; bar++)
        {
            const Chord& chord = changes[std::size_t(bar - first) % changes.size()];
            const float level = (from + (to - from) * float(bar - first) / float(last - first)) * SWELL[bar % 4];
            for (int step = 0; step < STEPS; step += every)
            {
                const int index = ORDERS[bar & 1][step];
                const double hertz = pitch(chord.tones[index % 5]) * (index >= 5 ? 4.0 : 2.0);
                strike(Voice::Pluck, bar, step, level * meter(step), hertz, SECONDS_PER_STEP * 0.8,
                       float(std::sin(step * 1.9 + bar)) * 0.9f, brightness);
            }
        }
    }

    // The same groove in each bar; every fourth, counted from the piece's beginning, turns around in another.
    void drums(int first, int last, const Groove& groove, const Groove& turn)
    {
        for (int bar = first; bar < last; bar++)
            for (const Line& line : bar % 4 == 3 ? turn : groove)
                for (int step = 0; step < STEPS; step++)
                    if (line.steps[step] != '.') strike(line.voice, bar, step, line.level * accent(line.steps[step]));
    }

    void drums(int first, int last, const Groove& groove) { drums(first, last, groove, groove); }

    // Toms that run down the last two beats of a bar.
    void fill(int bar)
    {
        static const double HERTZ[] = {196.0, 165.0, 147.0, 123.0, 110.0, 98.0, 87.0, 82.0};
        for (int i = 0; i < 8; i++)
            strike(Voice::Tom, bar, 8 + i, 0.7f + 0.05f * float(i), HERTZ[i], 0.0, 0.7f - 0.2f * float(i));
    }

    void heartbeat(int bar, int step, float level)
    {
        strike(Voice::Heart, bar, step, 0.9f * level);
        strike(Voice::Heart, bar, step + 2, 0.6f * level);
    }

    void sing(Voice voice, int bar, const Tune& tune, float level, double octave = 1.0)
    {
        for (const char* line : tune)
        {
            melody(line, [&](double step, double length, double hertz) {
                strike(voice, bar, step, level * (0.5f + 0.5f * meter(step)), hertz * octave, length);
            });
            bar++;
        }
    }

    void theme(int bar, const Tune& tune, float level) { sing(Voice::Lead, bar, tune, level); }

    // The theme and, softer, its octave.
    void highTheme(int bar, const Tune& tune, float level)
    {
        sing(Voice::Lead, bar, tune, level);
        sing(Voice::Lead, bar, tune, level * 0.35f, 2.0);
    }

    void bells(const std::vector<Phrase>& phrases)
    {
        for (const Phrase& phrase : phrases)
        {
            int count = phrase.bar;
            melody(phrase.text, [&](double step, double, double hertz) {
                strike(Voice::Bell, phrase.bar, step, phrase.level, hertz, 0.0, float(count++ % 3 - 1) * 0.55f);
            });
        }
    }

private:
    // Calls note(step, seconds, hertz) for each note of a line.
    template <typename Sing> static void melody(const char* text, Sing note)
    {
        std::istringstream words(text);
        double step = 0.0;
        for (std::string word; words >> word;)
        {
            const std::size_t colon = word.find(':');
            const double length = std::atof(word.c_str() + colon + 1);
            if (word[0] != '-') note(step, length * SECONDS_PER_STEP, pitch(word.substr(0, colon)));
            step += length;
        }
    }

    std::vector<Note>& mNotes;
    double mSwing = 0.0;
};

const BassLine FIRE_BASS = {"1.811.811.811.85", "1.811.811.8.5.81"};

const Tune CREVASSE_THEME = {
    "A4:6 D5:6 E5:4", "F5:8 E5:4 D5:4", "C5:6 A4:6 G4:4", "E5:12 -:4",
    "A4:6 D5:6 E5:4", "F5:6 G5:6 A5:4", "G5:8 F5:4 E5:4", "E5:4 F5:2 E5:2 D5:4 C5:4",
};

// Its second time ends on the dominant's third.
const Tune CREVASSE_RETURN = {
    "A4:6 D5:6 E5:4", "F5:8 E5:4 D5:4", "C5:6 A4:6 G4:4", "E5:12 C5:2 D5:2",
    "A4:6 D5:6 E5:4", "F5:6 G5:6 A5:4", "G5:8 F5:4 E5:4", "E5:4 F5:2 E5:2 D5:4 C#5:4",
};

const Tune FIRE_THEME = {
    "D5:3 E5:3 F5:2 A5:8", "A5:3 G5:3 F5:2 D5:8",  "C5:3 F5:3 G5:2 A5:8",  "G5:6 E5:6 C5:4",
    "D5:3 E5:3 F5:2 C6:8", "Bb5:3 A5:3 F5:2 D5:8", "D5:3 G5:3 A5:2 Bb5:8", "A5:6 G5:2 E5:4 C#5:4",
};

// The fire's theme, slowly.
const Tune BREAK_TUNE = {"D5:6 E5:6 F5:4", "A5:10 F5:6", "C5:6 F5:6 G5:4", "G5:6 E5:4 -:6"};

const Tune RETURN_THEME = {
    "D5:3 E5:3 F5:2 C6:8",
    "Bb5:3 A5:3 F5:2 D5:8",
    "D5:3 G5:3 A5:2 Bb5:8",
    "A5:6 B5:2 F#5:4 D#5:4",
};

// The theme of the crevasse a tone up, but for its end, which goes home to D minor.
const Tune SUMMIT_THEME = {
    "B4:6 E5:6 F#5:4", "G5:8 F#5:4 E5:4", "D5:6 B4:6 A4:4",  "F#5:12 D5:2 E5:2",
    "B4:6 E5:6 F#5:4", "G5:6 A5:6 B5:4",  "A5:8 G5:4 F#5:4", "E5:4 G5:2 F#5:2 E5:4 C#5:4",
};

// Moves where the theme rests.
const Tune SUMMIT_COUNTER = {
    "G4:8 B4:4 G4:4", "E4:8 G4:4 C5:4", "B4:4 D5:8 F#4:4", "A4:4 D5:4 F#5:4 A5:4",
    "G5:8 E5:4 B4:4", "C5:8 E5:8",      "C5:4 E5:8 C5:4",  "A4:4 C#5:4 E5:4 G4:4",
};

// The grooves: a column for each sixteenth, a line for each voice.
const Groove DESCENT_SLOW = {
    {"X.........x.....", Voice::Kick, 0.9f},
    {"..g...g...g...g.", Voice::Shaker, 0.9f},
};
const Groove DESCENT_TICK = {
    {"X.........x.....", Voice::Kick, 0.9f},
    {"..o...o...o..go.", Voice::Hat, 0.8f},
    {"g.ogg.ogg.ogg.og", Voice::Shaker, 1.0f},
};
const Groove DESCENT_FULL = {
    {"X.....x...x.....", Voice::Kick, 0.9f},   {"....x.......x...", Voice::Clap, 0.75f},
    {".......g.g.....g", Voice::Snare, 0.6f},  {"o.o.x.ogo.o.x.oo", Voice::Hat, 0.65f},
    {"ogxgogxgogxgogxo", Voice::Shaker, 1.0f},
};
const Groove CREVASSE = {
    {"X.....x...x.....", Voice::Kick, 1.0f},
    {"....X..g.g..X...", Voice::Snare, 1.0f},
    {"xgogxgogxgogxgog", Voice::Hat, 0.75f},
    {"..............x.", Voice::OpenHat, 0.75f},
};
const Groove CREVASSE_TURN = {
    {"X..x......x..x..", Voice::Kick, 1.0f},
    {"....X..g....X.ox", Voice::Snare, 1.0f},
    {"xgogxgogxgogxoxo", Voice::Hat, 0.75f},
    {"..............x.", Voice::OpenHat, 0.75f},
};
const Groove CREVASSE_OPEN = {
    {"..x...x...x.....", Voice::OpenHat, 0.6f},
    {"g.o.g.o.g.o.g.o.", Voice::Shaker, 0.9f},
};
const Groove ASCENT = {
    {"X...x...x...x...", Voice::Kick, 0.9f},
};
const Groove ASCENT_HATS = {
    {"..x...x...x...x.", Voice::Hat, 0.8f},
    {"gogogogogogogogo", Voice::Shaker, 0.7f},
};
const Groove ASCENT_SNARE = {
    {"....x.......x...", Voice::Snare, 0.7f},
};
const Groove ASCENT_ROLL = {
    {"x.x.x.x.x.x.x.x.", Voice::Kick, 0.9f},
    {"o.o.o.o.x.x.x.x.", Voice::Snare, 0.6f},
};
const Groove ASCENT_STOP = {
    {"xxxxxxxxxxxx....", Voice::Kick, 0.9f},
    {"ooooooooxxxx....", Voice::Snare, 0.65f},
};
const Groove FIRE = {
    {"X...X...X...X...", Voice::Kick, 1.0f},    {"....X..g....X..g", Voice::Snare, 0.9f},
    {"....x.......x...", Voice::Clap, 0.6f},    {"xgogxgogxgogxgog", Voice::Hat, 0.75f},
    {"..x...x...x...x.", Voice::OpenHat, 0.6f},
};
const Groove FIRE_TURN = {
    {"X...X...X...X.x.", Voice::Kick, 1.0f},    {"....X..g.g..X.ox", Voice::Snare, 0.9f},
    {"....x.......x...", Voice::Clap, 0.6f},    {"xgogxgogxgogxoxo", Voice::Hat, 0.75f},
    {"..x...x...x...x.", Voice::OpenHat, 0.6f},
};
const Groove FIRE_SHAKER = {
    {"gogogogogogogogo", Voice::Shaker, 1.0f},
};
const Groove HALF_TIME = {
    {"X.........x.....", Voice::Kick, 1.0f},   {"........X.......", Voice::Snare, 1.0f},
    {"........x.......", Voice::Clap, 0.7f},   {"x...o...x...o...", Voice::Hat, 0.7f},
    {"g.o.g.o.g.o.g.o.", Voice::Shaker, 0.9f},
};
const Groove HALF_TIME_STOP = {
    {"X.....x.x.x.....", Voice::Kick, 1.0f},
    {"....g.gooooX....", Voice::Snare, 1.0f},
    {"x...o...x.......", Voice::Hat, 0.7f},
};
const Groove NAMES = {
    {"X.....x...x.....", Voice::Kick, 0.9f},
    {"....x..g....x...", Voice::Snare, 0.75f},
    {"o.xgo.x.o.xgo.x.", Voice::Hat, 0.6f},
    {"ogxgogxgogxgogxg", Voice::Shaker, 1.0f},
};
const Groove NAMES_THIN = {
    {"X.........x.....", Voice::Kick, 0.9f},
    {"..o...o...o..go.", Voice::Hat, 0.6f},
    {"g.o.g.o.g.o.g.o.", Voice::Shaker, 0.9f},
};

const double SWUNG = 0.14; // a little less than 20 ms

void surface(Composer& c) // bars 0 to 7
{
    c.texture(Voice::Wind, 0, 12, 1.0f);
    c.texture(Voice::Crackle, 1, 9, 0.5f);
    c.pads(0, 8, COLD_CHORDS, 0.8f, 380.0, 900.0);
    c.bells({{0, "-:8 D6:8", 0.5f},
             {1, "A5:12 -:4", 0.45f},
             {2, "F6:6 D6:10", 0.5f},
             {3, "-:8 C6:8", 0.45f},
             {4, "Bb5:8 D6:8", 0.55f},
             {5, "F6:6 A6:10", 0.5f},
             {6, "E6:6 D6:6 A5:4", 0.55f},
             {7, "G5:4 A5:4 D6:4 E6:4", 0.6f}});
    for (int bar = 4; bar < 8; bar++) c.heartbeat(bar, 0, 0.35f + 0.1f * float(bar - 4));
    c.texture(Voice::Riser, 6, 2, 0.5f);
}

void descent(Composer& c) // bars 8 to 23
{
    c.swing(SWUNG);
    c.strike(Voice::Impact, 8, 0, 0.9f);
    c.pads(8, 24, MAIN_CHORDS, 0.75f, 900.0, 2400.0);
    c.basses(8, 16, MAIN_CHORDS, {"1---------1-1---", "1---------1-5-8-"}, 0.75f, 250.0, 700.0);
    c.basses(16, 24, MAIN_CHORDS, {"1--1--1-1--1--81", "1--1--8-1--1-581"}, 0.75f, 500.0, 1400.0);
    c.arpeggio(12, 24, MAIN_CHORDS, 0.25f, 0.75f, 1, 6500.0);
    c.bells({{8, "D6:6 A5:6 F5:4", 0.5f},
             {10, "C6:6 A5:6 G5:4", 0.5f},
             {12, "D6:6 A5:6 F6:4", 0.5f},
             {14, "C6:6 G6:6 E6:4", 0.5f}});
    c.drums(8, 12, DESCENT_SLOW);
    c.drums(12, 16, DESCENT_TICK);
    c.drums(16, 24, DESCENT_FULL);
    c.strike(Voice::Impact, 16, 0, 0.6f);
    c.fill(23);
    c.texture(Voice::Riser, 22, 2, 0.8f);
    c.swing(0.0);
}

void crevasse(Composer& c) // bars 24 to 39
{
    c.strike(Voice::Impact, 24, 0, 1.0f);
    c.pads(24, 40, CREVASSE_CHORDS, 0.8f, 1500.0, 2600.0);
    c.basses(24, 40, CREVASSE_CHORDS, {"1-.1-.1.1-.1-.81", "1-.1-.8.1-.5-.81"}, 0.95f, 900.0, 1800.0);
    c.arpeggio(24, 40, CREVASSE_CHORDS, 0.5f, 0.6f, 1, 4800.0);
    c.theme(24, CREVASSE_THEME, 0.85f);
    c.highTheme(32, CREVASSE_RETURN, 0.85f);
    c.drums(24, 40, CREVASSE, CREVASSE_TURN);
    c.drums(32, 40, CREVASSE_OPEN);
    c.strike(Voice::Impact, 32, 0, 0.7f);
    c.fill(31);
    c.fill(39);
}

void heartOfIce(Composer& c) // bars 40 to 51
{
    c.strike(Voice::Impact, 40, 0, 1.1f);
    c.texture(Voice::Wind, 40, 12, 0.6f);
    c.texture(Voice::Crackle, 41, 10, 0.6f);
    c.pads(40, 52, HEART_CHORDS, 0.7f, 600.0, 1100.0);
    c.choirs(42, 52, "Bb Asus Gm Dm Bb A7 Gm Dm Bb A7", 0.75f);
    for (int bar = 40; bar < 52; bar++) c.heartbeat(bar, 0, 0.95f);
    for (int bar = 46; bar < 52; bar++) c.heartbeat(bar, 8, 0.7f);
    c.bells({{40, "D6:16", 0.6f},
             {41, "F6:8 E6:8", 0.5f},
             {42, "D6:6 Bb5:6 F5:4", 0.55f},
             {43, "E6:8 A5:8", 0.5f},
             {44, "G6:6 F6:6 D6:4", 0.55f},
             {45, "A5:6 D6:6 F6:4", 0.55f},
             {46, "D6:4 F6:4 A6:4 F6:4", 0.55f},
             {47, "E6:6 C#6:6 A5:4", 0.55f}});
    c.arpeggio(48, 52, "Gm Dm Bb A7", 0.15f, 0.5f, 2, 4200.0);
    c.basses(44, 52, HEART_CHORDS, {"1---------------"}, 0.7f, 200.0, 400.0);
}

void ascent(Composer& c) // bars 52 to 59
{
    c.strike(Voice::Impact, 52, 0, 0.8f);
    c.pads(52, 60, FIRE_CHORDS, 0.75f, 700.0, 3200.0);
    c.basses(52, 60, FIRE_CHORDS, {"1.1.1.1.1.1.1.1.", "1.1.8.1.1.1.8.8."}, 0.85f, 250.0, 2400.0);
    c.arpeggio(52, 60, FIRE_CHORDS, 0.3f, 0.8f, 1, 4200.0);
    c.drums(52, 58, ASCENT);
    c.drums(54, 60, ASCENT_HATS);
    c.drums(56, 58, ASCENT_SNARE);
    c.drums(58, 59, ASCENT_ROLL);
    c.drums(59, 60, ASCENT_STOP);
    c.texture(Voice::Riser, 56, 4, 1.1f);
}

void fire(Composer& c) // bars 60 to 67
{
    c.strike(Voice::Impact, 60, 0, 1.2f);
    c.pads(60, 68, FIRE_CHORDS, 0.85f, 2600.0, 3200.0);
    c.basses(60, 68, FIRE_CHORDS, FIRE_BASS, 1.0f, 1700.0, 2300.0);
    c.arpeggio(60, 68, FIRE_CHORDS, 0.55f, 0.6f, 1, 4200.0);
    c.theme(60, FIRE_THEME, 0.9f);
    c.drums(60, 68, FIRE, FIRE_TURN);
    c.fill(67);
    c.texture(Voice::Riser, 66, 2, 0.7f);
}

// Bars 68 to 71: the drums stop, and the heart is heard under the choir; then they come back at half their pace.
void breakOff(Composer& c)
{
    c.strike(Voice::Impact, 68, 0, 1.2f);
    c.pads(68, 72, BREAK_CHORDS, 0.8f, 900.0, 3000.0);
    c.choirs(68, 72, BREAK_CHORDS, 0.65f);
    c.basses(68, 70, BREAK_CHORDS, {"1---------------"}, 0.8f, 300.0, 500.0);
    c.basses(70, 72, "F C", {"1-------8-1-----", "1-----1-1-8-...."}, 1.0f, 900.0, 2000.0);
    c.sing(Voice::Counter, 68, BREAK_TUNE, 0.55f);
    c.arpeggio(70, 72, "F C", 0.3f, 0.6f, 2, 5000.0);
    for (int bar = 68; bar < 70; bar++)
        for (int step : {0, 8}) c.heartbeat(bar, step, 1.1f);
    c.drums(70, 71, HALF_TIME);
    c.drums(71, 72, HALF_TIME_STOP);
    c.texture(Voice::Riser, 70, 2, 1.0f);
}

void comeBack(Composer& c) // bars 72 to 75
{
    c.strike(Voice::Impact, 72, 0, 1.2f);
    c.pads(72, 76, RETURN_CHORDS, 0.85f, 3000.0, 3400.0);
    c.choirs(72, 76, RETURN_CHORDS, 0.55f);
    c.basses(72, 76, RETURN_CHORDS, FIRE_BASS, 1.0f, 2000.0, 2600.0);
    c.arpeggio(72, 76, RETURN_CHORDS, 0.6f, 0.65f, 1, 5000.0);
    c.highTheme(72, RETURN_THEME, 0.9f);
    c.drums(72, 76, FIRE, FIRE_TURN);
    c.drums(72, 76, FIRE_SHAKER);
    c.fill(75);
    c.texture(Voice::Riser, 74, 2, 0.7f);
}

void summit(Composer& c) // bars 76 to 83
{
    c.strike(Voice::Impact, 76, 0, 1.1f);
    c.pads(76, 84, SUMMIT_CHORDS, 0.85f, 3200.0, 3800.0);
    c.choirs(76, 84, SUMMIT_CHORDS, 0.6f);
    c.basses(76, 84, SUMMIT_CHORDS, FIRE_BASS, 1.0f, 2300.0, 2800.0);
    c.arpeggio(76, 84, SUMMIT_CHORDS, 0.6f, 0.7f, 1, 5500.0);
    c.highTheme(76, SUMMIT_THEME, 0.9f);
    c.sing(Voice::Counter, 76, SUMMIT_COUNTER, 0.45f);
    c.drums(76, 84, FIRE, FIRE_TURN);
    c.drums(76, 84, FIRE_SHAKER);
    c.fill(79);
    c.fill(83);
}

void names(Composer& c) // bars 84 to 95
{
    c.swing(SWUNG);
    c.strike(Voice::Impact, 84, 0, 1.1f);
    c.pads(84, 96, MAIN_CHORDS, 0.8f, 2800.0, 1300.0);
    c.basses(84, 96, MAIN_CHORDS, {"1-----1-1---1-8-", "1-----8-1---5-8-"}, 0.85f, 1100.0, 350.0);
    c.arpeggio(84, 96, MAIN_CHORDS, 0.6f, 0.25f, 2, 7000.0);
    c.drums(84, 92, NAMES);
    c.drums(92, 96, NAMES_THIN);
    c.bells({{84, "D6:6 A5:6 F5:4", 0.5f},
             {86, "C6:6 A5:6 G5:4", 0.5f},
             {88, "D6:6 F6:6 A6:4", 0.5f},
             {90, "G6:6 E6:6 C6:4", 0.5f},
             {92, "F6:6 D6:6 A5:4", 0.5f},
             {94, "C6:8 A5:8", 0.5f}});
    c.swing(0.0);
}

void cold(Composer& c) // bars 96 to 103
{
    c.strike(Voice::Impact, 96, 0, 0.8f);
    c.texture(Voice::Wind, 94, 10, 1.0f);
    c.texture(Voice::Crackle, 97, 5, 0.4f);
    c.pads(96, 102, "Dm Dm Bb Gm Dm Dm", 0.75f, 900.0, 350.0);
    for (int bar = 96; bar < 102; bar++) c.heartbeat(bar, 0, 0.9f - 0.11f * float(bar - 96));
    c.bells({{96, "D6:8 A5:8", 0.5f}, {98, "F6:8 D6:8", 0.45f}, {99, "-:8 A5:8", 0.4f}, {100, "D5:16", 0.5f}});
}

std::vector<Note> compose()
{
    std::vector<Note> notes;
    Composer composer(notes);
    surface(composer);
    descent(composer);
    crevasse(composer);
    heartOfIce(composer);
    ascent(composer);
    fire(composer);
    breakOff(composer);
    comeBack(composer);
    summit(composer);
    names(composer);
    cold(composer);
    std::stable_sort(notes.begin(), notes.end(), [](const Note& a, const Note& b) { return a.start < b.start; });
    return notes;
}

} // namespace

const char* nameOf(Voice voice)
{
    static const char* const VOICE_NAMES[] = {"pad",   "choir",  "bass",  "pluck",  "lead",   "counter",  "bell",
                                              "kick",  "snare",  "clap",  "shaker", "hat",    "open hat", "tom",
                                              "heart", "impact", "riser", "wind",   "crackle"};
    return VOICE_NAMES[std::size_t(voice)];
}

const std::vector<Note>& notes()
{
    static const std::vector<Note> NOTES = compose();
    return NOTES;
}

std::vector<Note> notes(Voice voice, double from, double to)
{
    std::vector<Note> found;
    std::copy_if(notes().begin(), notes().end(), std::back_inserter(found),
                 [&](const Note& note) { return note.voice == voice && note.start >= from && note.start < to; });
    return found;
}

} // namespace Music
