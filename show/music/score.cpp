#include "score.h"

#include "instruments.h"

#include <cstdlib>
#include <sstream>
#include <string>

// "Glacier heart". D minor. It begins in wind and bells, gathers a bass and then drums, falls silent around a heart
// that beats under a choir, climbs once more, and leaves the heart alone at the end.

namespace Music
{

const std::vector<Section> sections = {
    {"surface", 0}, {"descent", 8},  {"crevasse", 24}, {"heart", 40},
    {"ascent", 52}, {"fire", 60},    {"names", 84},    {"cold", 96},
};

namespace
{

// "A4", "Bb2", "F#3" to hertz; A4 is 440.
double pitch(const std::string& name)
{
    static const int semitones[] = {9, 11, 0, 2, 4, 5, 7}; // a to g
    int semitone = semitones[name[0] - 'A'];
    std::size_t place = 1;
    if (name[place] == 'b') semitone--, place++;
    else if (name[place] == '#') semitone++, place++;
    const int octave = std::atoi(name.c_str() + place);
    return 440.0 * std::pow(2.0, (semitone - 9) / 12.0 + octave - 4);
}

double barTime(int bar, double steps = 0.0)
{
    return bar * secondsPerBar + steps * secondsPerStep;
}

struct Chord
{
    std::string bass;
    std::vector<std::string> tones; // low to high, for pads and arpeggios
};

const Chord dm = {"D2", {"D3", "A3", "C4", "E4", "F4"}};
const Chord bb = {"Bb1", {"Bb2", "F3", "A3", "D4", "F4"}};
const Chord fa = {"F2", {"F3", "A3", "C4", "G4", "A4"}};
const Chord ce = {"C2", {"C3", "G3", "D4", "E4", "G4"}};
const Chord gm = {"G1", {"G2", "D3", "Bb3", "F4", "A4"}};
const Chord as = {"A1", {"A2", "E3", "G3", "D4", "E4"}};
const Chord am = {"A1", {"A2", "E3", "G3", "C#4", "E4"}};

// The chord of each bar of a section; shorter lists repeat.
const std::vector<Chord> coldChords = {dm, dm, bb, bb, gm, gm, as, as};
const std::vector<Chord> mainChords = {dm, bb, fa, ce};
const std::vector<Chord> heartChords = {gm, dm, bb, as, gm, dm, bb, am};
const std::vector<Chord> fireChords = {dm, bb, fa, ce, dm, bb, gm, am};

const Chord& chordAt(const std::vector<Chord>& chords, int bar)
{
    return chords[std::size_t(bar) % chords.size()];
}

// Calls hit(time, accent) for each mark of a bar's 16 steps: 'x' full, 'o' soft, 'X' accented, '.' none.
template <typename Hit>
void pattern(int bar, const char* steps, Hit hit)
{
    for (int step = 0; step < 16; step++)
        if (steps[step] != '.')
            hit(barTime(bar, step), steps[step] == 'X' ? 1.15f : steps[step] == 'x' ? 1.0f : 0.5f);
}

// Plays "A4:6 D5:6 -:4": notes with lengths in steps, "-" being a rest; behind each other from the bar's start.
template <typename Note>
void melody(int bar, const char* text, Note note)
{
    std::istringstream words(text);
    double step = 0.0;
    for (std::string word; words >> word;)
    {
        const std::size_t colon = word.find(':');
        const double length = std::atof(word.c_str() + colon + 1);
        if (word[0] != '-') note(barTime(bar, step), length * secondsPerStep, pitch(word.substr(0, colon)));
        step += length;
    }
}

// ---------------------------------------------------------------------------------------------------------------------

class Players
{
public:
    explicit Players(Orchestra& orchestra) : mOrchestra(orchestra) {}

    void pads(int first, int last, const std::vector<Chord>& chords, float level, double from, double to)
    {
        for (int bar = first; bar < last; bar++)
        {
            const double brightness = from * std::pow(to / from, double(bar - first) / (last - first));
            for (const std::string& tone : chordAt(chords, bar - first).tones)
                pad(mOrchestra.pads, barTime(bar), secondsPerBar, pitch(tone), level, brightness);
        }
    }

    void basses(int first, int last, const std::vector<Chord>& chords, const char* steps, float level, double from, double to)
    {
        for (int bar = first; bar < last; bar++)
        {
            const double root = pitch(chordAt(chords, bar - first).bass);
            const double brightness = from + (to - from) * (bar - first) / (last - first);
            for (int step = 0; step < 16; step++)
            {
                if (steps[step] == '.') continue;
                int length = 1;
                while (step + length < 16 && steps[step + length] == '-') length++;
                if (steps[step] == '-') continue;
                const double hertz = steps[step] == '8' ? root * 2.0 : steps[step] == '5' ? root * 1.5 : root;
                bass(mOrchestra.bass, barTime(bar, step), length * secondsPerStep * 0.95, hertz, level, brightness);
            }
        }
    }

    // Sixteenths up and down the chord, over two octaves; the order changes every other bar.
    void arpeggio(int first, int last, const std::vector<Chord>& chords, float from, float to, int everyStep)
    {
        static const int orders[2][16] = {{0, 1, 2, 3, 4, 6, 4, 3, 2, 1, 2, 3, 4, 7, 6, 4},
                                          {4, 3, 2, 1, 0, 2, 3, 4, 6, 4, 3, 2, 7, 6, 4, 3}};
        for (int bar = first; bar < last; bar++)
        {
            const std::vector<std::string>& tones = chordAt(chords, bar - first).tones;
            const float level = from + (to - from) * float(bar - first) / float(last - first);
            for (int step = 0; step < 16; step += everyStep)
            {
                const int index = orders[bar & 1][step];
                const double hertz = pitch(tones[std::size_t(index % 5)]) * (index >= 5 ? 4.0 : 2.0);
                pluck(mOrchestra.voices, barTime(bar, step), secondsPerStep * 0.8, hertz,
                      level * (step % 4 == 0 ? 1.0f : 0.72f), float(std::sin(step * 1.9 + bar)) * 0.6f);
            }
        }
    }

    void kicks(int bar, const char* steps, float level = 1.0f)
    {
        pattern(bar, steps, [&](double time, float accent) {
            kick(mOrchestra.drums, time, level * accent);
            mOrchestra.kicks.push_back(time);
        });
    }

    void snares(int bar, const char* steps, float level = 1.0f)
    {
        pattern(bar, steps, [&](double time, float accent) { snare(mOrchestra.drums, time, level * accent); });
    }

    void claps(int bar, const char* steps, float level = 1.0f)
    {
        pattern(bar, steps, [&](double time, float accent) { clap(mOrchestra.drums, time, level * accent); });
    }

    void hats(int bar, const char* closed, const char* open, float level = 1.0f)
    {
        pattern(bar, closed, [&](double time, float accent) { hat(mOrchestra.drums, time, level * accent, false); });
        pattern(bar, open, [&](double time, float accent) { hat(mOrchestra.drums, time, level * accent, true); });
    }

    // Eight bars of theme; `octave` doubles it above.
    void theme(int bar, const char* const (&lines)[8], float level, bool octave)
    {
        for (int i = 0; i < 8; i++)
            melody(bar + i, lines[i], [&](double time, double length, double hertz) {
                lead(mOrchestra.voices, time, length, hertz, level);
                if (octave) lead(mOrchestra.voices, time, length, hertz * 2.0, level * 0.35f);
            });
    }

    void bells(int bar, const char* text, float level)
    {
        int count = bar;
        melody(bar, text, [&](double time, double, double hertz) {
            bell(mOrchestra.voices, time, hertz, level, (count++ % 3 - 1) * 0.55f);
        });
    }

    void choirs(int first, int last, const std::vector<Chord>& chords, float level)
    {
        for (int bar = first; bar < last; bar++)
            for (std::size_t tone = 1; tone < 5; tone++)
                choir(mOrchestra.pads, barTime(bar), secondsPerBar * 0.98,
                      pitch(chordAt(chords, bar - first).tones[tone]), level);
    }

    // Toms that run down the last two beats of a bar.
    void fill(int bar, float level = 1.0f)
    {
        static const double hertz[] = {196.0, 165.0, 147.0, 123.0, 110.0, 98.0, 87.0, 82.0};
        for (int i = 0; i < 8; i++)
            tom(mOrchestra.drums, barTime(bar, 8 + i), hertz[i], level * (0.7f + 0.05f * float(i)), 0.7f - 0.2f * float(i));
    }

    Orchestra& mOrchestra;
};

const char* const crevasseTheme[8] = {
    "A4:6 D5:6 E5:4",      "F5:8 E5:4 D5:4",           "C5:6 A4:6 G4:4",     "E5:12 -:4",
    "A4:6 D5:6 E5:4",      "F5:6 G5:6 A5:4",           "G5:8 F5:4 E5:4",     "E5:4 F5:2 E5:2 D5:4 C5:4",
};

const char* const fireTheme[8] = {
    "D5:3 E5:3 F5:2 A5:8", "A5:3 G5:3 F5:2 D5:8",      "C5:3 F5:3 G5:2 A5:8", "G5:6 E5:6 C5:4",
    "D5:3 E5:3 F5:2 C6:8", "Bb5:3 A5:3 F5:2 D5:8",     "D5:3 G5:3 A5:2 Bb5:8", "A5:6 G5:2 E5:4 C#5:4",
};

void surface(Players& p) // bars 0 to 7
{
    wind(p.mOrchestra.air, 0.0, barTime(12), 1.0f);
    crackle(p.mOrchestra.air, barTime(1), barTime(9), 0.5f);
    p.pads(0, 8, coldChords, 0.8f, 380.0, 900.0);
    p.bells(0, "-:8 D6:8", 0.5f);
    p.bells(1, "A5:12 -:4", 0.45f);
    p.bells(2, "F6:6 D6:10", 0.5f);
    p.bells(3, "-:8 C6:8", 0.45f);
    p.bells(4, "Bb5:8 D6:8", 0.55f);
    p.bells(5, "F6:6 A6:10", 0.5f);
    p.bells(6, "E6:6 D6:6 A5:4", 0.55f);
    p.bells(7, "G5:4 A5:4 D6:4 E6:4", 0.6f);
    for (int bar = 4; bar < 8; bar++) heart(p.mOrchestra.drums, barTime(bar), 0.35f + 0.1f * float(bar - 4));
    riser(p.mOrchestra.air, barTime(6), barTime(2), 0.5f);
}

void descent(Players& p) // bars 8 to 23
{
    impact(p.mOrchestra.air, barTime(8), 0.9f);
    p.pads(8, 24, mainChords, 0.75f, 700.0, 1700.0);
    p.basses(8, 16, mainChords, "1---------1-1---", 0.75f, 250.0, 700.0);
    p.basses(16, 24, mainChords, "1--1--1-1--1--81", 0.75f, 500.0, 1400.0);
    p.arpeggio(12, 24, mainChords, 0.2f, 0.75f, 1);
    p.bells(8, "D6:6 A5:6 F5:4", 0.5f);
    p.bells(10, "C6:6 A5:6 G5:4", 0.5f);
    p.bells(12, "D6:6 A5:6 F6:4", 0.5f);
    p.bells(14, "C6:6 G6:6 E6:4", 0.5f);
    for (int bar = 8; bar < 24; bar++)
    {
        p.kicks(bar, bar < 16 ? "X.........x....." : "X.....x...x.....", 0.9f);
        if (bar >= 12) p.hats(bar, bar < 16 ? "..o...o...o...o." : "o.o.x.o.o.o.x.oo", "................", 0.8f);
        if (bar >= 16) p.claps(bar, "....x.......x...", 0.75f);
    }
    impact(p.mOrchestra.air, barTime(16), 0.6f);
    p.fill(23);
    riser(p.mOrchestra.air, barTime(22), barTime(2), 0.8f);
}

void crevasse(Players& p) // bars 24 to 39
{
    impact(p.mOrchestra.air, barTime(24), 1.0f);
    p.pads(24, 40, mainChords, 0.8f, 1500.0, 2400.0);
    p.basses(24, 40, mainChords, "1-.1-.1.1-.1-.81", 0.95f, 900.0, 1800.0);
    p.arpeggio(24, 40, mainChords, 0.5f, 0.6f, 1);
    p.theme(24, crevasseTheme, 0.85f, false);
    p.theme(32, crevasseTheme, 0.85f, true);
    for (int bar = 24; bar < 40; bar++)
    {
        const bool turn = bar % 4 == 3;
        p.kicks(bar, turn ? "X..x......x..x.." : "X.....x...x.....");
        p.snares(bar, turn ? "....X.......X.oo" : "....X..o....X...");
        p.hats(bar, "xoxoxoxoxoxoxoxo", bar >= 32 ? "..x...x...x...x." : "..............x.", 0.75f);
    }
    impact(p.mOrchestra.air, barTime(32), 0.7f);
    p.fill(31);
    p.fill(39);
}

void heartOfIce(Players& p) // bars 40 to 51
{
    impact(p.mOrchestra.air, barTime(40), 1.1f);
    wind(p.mOrchestra.air, barTime(40), barTime(12), 0.6f);
    crackle(p.mOrchestra.air, barTime(41), barTime(10), 0.6f);
    p.pads(40, 52, heartChords, 0.7f, 600.0, 1100.0);
    p.choirs(42, 52, {bb, as, gm, dm, bb, am, gm, dm, bb, am}, 0.75f);
    for (int bar = 40; bar < 52; bar++) heart(p.mOrchestra.drums, barTime(bar), 0.95f);
    for (int bar = 46; bar < 52; bar++) heart(p.mOrchestra.drums, barTime(bar, 8), 0.7f);
    p.bells(40, "D6:16", 0.6f);
    p.bells(41, "F6:8 E6:8", 0.5f);
    p.bells(42, "D6:6 Bb5:6 F5:4", 0.55f);
    p.bells(43, "E6:8 A5:8", 0.5f);
    p.bells(44, "G6:6 F6:6 D6:4", 0.55f);
    p.bells(45, "A5:6 D6:6 F6:4", 0.55f);
    p.bells(46, "D6:4 F6:4 A6:4 F6:4", 0.55f);
    p.bells(47, "E6:6 C#6:6 A5:4", 0.55f);
    p.arpeggio(48, 52, {gm, dm, bb, am}, 0.15f, 0.5f, 2);
    p.basses(44, 52, heartChords, "1---------------", 0.7f, 200.0, 400.0);
}

void ascent(Players& p) // bars 52 to 59
{
    impact(p.mOrchestra.air, barTime(52), 0.8f);
    p.pads(52, 60, fireChords, 0.75f, 700.0, 3200.0);
    p.basses(52, 60, fireChords, "1.1.1.1.1.1.1.1.", 0.85f, 250.0, 2400.0);
    p.arpeggio(52, 60, fireChords, 0.3f, 0.8f, 1);
    for (int bar = 52; bar < 60; bar++)
    {
        p.kicks(bar, bar < 58 ? "X...x...x...x..." : bar < 59 ? "x.x.x.x.x.x.x.x." : "xxxxxxxxxxxx....", 0.9f);
        if (bar >= 54) p.hats(bar, "..x...x...x...x.", "................", 0.8f);
        if (bar >= 56) p.snares(bar, bar < 58 ? "....x.......x..." : bar < 59 ? "x.x.x.x.x.x.x.x." : "xxxxxxxxxxxx....", bar < 58 ? 0.7f : 0.5f);
    }
    riser(p.mOrchestra.air, barTime(56), barTime(4), 1.1f);
}

void fire(Players& p) // bars 60 to 83
{
    impact(p.mOrchestra.air, barTime(60), 1.2f);
    p.pads(60, 84, fireChords, 0.85f, 2600.0, 3400.0);
    p.basses(60, 84, fireChords, "1.811.811.811.85", 1.0f, 1700.0, 2600.0);
    p.arpeggio(60, 84, fireChords, 0.55f, 0.65f, 1);
    p.theme(60, fireTheme, 0.9f, false);
    p.theme(68, fireTheme, 0.9f, true);
    p.theme(76, crevasseTheme, 0.9f, true);
    p.choirs(68, 84, fireChords, 0.55f);
    for (int bar = 60; bar < 84; bar++)
    {
        const bool turn = bar % 4 == 3;
        p.kicks(bar, turn ? "X...X...X...X.x." : "X...X...X...X...");
        p.snares(bar, turn ? "....X.......X.ox" : "....X.......X...", 0.9f);
        p.claps(bar, "....x.......x...", 0.6f);
        p.hats(bar, "xoooxoooxoooxooo", "..x...x...x...x.", 0.75f);
    }
    for (int bar = 67; bar < 84; bar += 8) p.fill(bar);
    impact(p.mOrchestra.air, barTime(68), 0.9f);
    impact(p.mOrchestra.air, barTime(76), 0.9f);
    riser(p.mOrchestra.air, barTime(66), barTime(2), 0.7f);
    riser(p.mOrchestra.air, barTime(74), barTime(2), 0.7f);
}

void names(Players& p) // bars 84 to 95
{
    impact(p.mOrchestra.air, barTime(84), 1.1f);
    p.pads(84, 96, mainChords, 0.8f, 2200.0, 900.0);
    p.basses(84, 96, mainChords, "1-----1-1---1-8-", 0.85f, 1100.0, 350.0);
    p.arpeggio(84, 96, mainChords, 0.6f, 0.15f, 2);
    for (int bar = 84; bar < 96; bar++)
    {
        p.kicks(bar, bar < 92 ? "X.....x...x....." : "X.........x.....", 0.9f);
        if (bar < 92) p.snares(bar, "....x.......x...", 0.75f);
        p.hats(bar, bar < 92 ? "o.x.o.x.o.x.o.x." : "..o...o...o...o.", "................", 0.7f);
    }
    p.bells(84, "D6:6 A5:6 F5:4", 0.5f);
    p.bells(86, "C6:6 A5:6 G5:4", 0.5f);
    p.bells(88, "D6:6 F6:6 A6:4", 0.5f);
    p.bells(90, "G6:6 E6:6 C6:4", 0.5f);
    p.bells(92, "F6:6 D6:6 A5:4", 0.5f);
    p.bells(94, "C6:8 A5:8", 0.5f);
}

void cold(Players& p) // bars 96 to 103
{
    impact(p.mOrchestra.air, barTime(96), 0.8f);
    wind(p.mOrchestra.air, barTime(94), barTime(10), 1.0f);
    crackle(p.mOrchestra.air, barTime(97), barTime(5), 0.4f);
    p.pads(96, 102, {dm, dm, bb, gm, dm, dm}, 0.75f, 900.0, 350.0);
    for (int bar = 96; bar < 102; bar++) heart(p.mOrchestra.drums, barTime(bar), 0.9f - 0.11f * float(bar - 96));
    p.bells(96, "D6:8 A5:8", 0.5f);
    p.bells(98, "F6:8 D6:8", 0.45f);
    p.bells(99, "-:8 A5:8", 0.4f);
    p.bells(100, "D5:16", 0.5f);
}

} // namespace

void perform(Orchestra& orchestra)
{
    const std::size_t length = std::size_t(bars * secondsPerBar * sampleRate);
    for (Track* track : {&orchestra.drums, &orchestra.bass, &orchestra.pads, &orchestra.voices, &orchestra.air})
        track->assign(length, Stereo());

    Players players(orchestra);
    surface(players);
    descent(players);
    crevasse(players);
    heartOfIce(players);
    ascent(players);
    fire(players);
    names(players);
    cold(players);
}

} // namespace Music
