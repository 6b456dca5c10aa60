#pragma once

#include "dsp.h"

namespace Music
{

// Each instrument adds one note to a track. `start` and `length` in seconds, `hertz` the pitch, `level` linear, 1 for a
// full note. What would lie behind the track's end is cut.

void pad(Track& track, double start, double length, double hertz, float level, double brightness);
void bass(Track& track, double start, double length, double hertz, float level, double brightness);
void pluck(Track& track, double start, double length, double hertz, float level, float pan);
void lead(Track& track, double start, double length, double hertz, float level);
void bell(Track& track, double start, double hertz, float level, float pan);
void choir(Track& track, double start, double length, double hertz, float level);

void kick(Track& track, double start, float level);
void snare(Track& track, double start, float level);
void clap(Track& track, double start, float level);
void hat(Track& track, double start, float level, bool open);
void tom(Track& track, double start, double hertz, float level, float pan);
void heart(Track& track, double start, float level);                       // two soft thumps
void impact(Track& track, double start, float level);                      // a deep hit with a long tail
void riser(Track& track, double start, double length, float level);        // noise that opens towards its end
void wind(Track& track, double start, double length, float level);         // swells in, wanders, swells out
void crackle(Track& track, double start, double length, float level);      // ice that works

} // namespace Music
