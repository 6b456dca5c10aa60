#pragma once

#include "dsp.h"

#include <vector>

namespace Music
{

// What the score is played on: one track for each way of mixing.
struct Orchestra
{
    Track drums;               // dry
    Track bass;                // ducks under the kick
    Track pads;                // ducks under the kick, mostly hall
    Track voices;              // pluck, lead, bells: echo and hall
    Track air;                 // wind, ice, impacts: hall
    std::vector<double> kicks; // when the kick sounds, in seconds
};

// Plays the whole piece into the tracks.
void perform(Orchestra& orchestra);

} // namespace Music
