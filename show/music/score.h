#pragma once

#include "dsp.h"

#include <vector>

namespace Music
{

// The tempo grid of the whole show: 120 beats a minute, so that a beat is half a second, a bar of four beats two
// seconds, and a sixteenth an eighth of a second. The show's script counts on it.
const double secondsPerBeat = 0.5;
const double secondsPerBar = 4.0 * secondsPerBeat;
const double secondsPerStep = secondsPerBeat / 4.0;
const int bars = 104;

// A part of the piece, for those who look at the grid.
struct Section
{
    const char* name;
    int firstBar;
};

extern const std::vector<Section> sections;

// What the score is played on: one track for each way of mixing.
struct Orchestra
{
    Track drums;  // dry
    Track bass;   // ducks under the kick
    Track pads;   // ducks under the kick, mostly hall
    Track voices; // pluck, lead, bells: echo and hall
    Track air;    // wind, ice, impacts: hall
    std::vector<double> kicks; // when the kick sounds, in seconds
};

// Plays the whole piece into the tracks.
void perform(Orchestra& orchestra);

} // namespace Music
