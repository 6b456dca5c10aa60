#pragma once

#include "dsp.h"
#include "score.h"

namespace Music
{

// Each instrument adds one note to a track. What would lie behind the track's end is cut.

void pad(Track& track, const Note& note);
void bass(Track& track, const Note& note);
void pluck(Track& track, const Note& note);
void lead(Track& track, const Note& note);
void counter(Track& track, const Note& note);
void bell(Track& track, const Note& note);
void choir(Track& track, const Note& note);

void kick(Track& track, const Note& note);
void snare(Track& track, const Note& note);
void clap(Track& track, const Note& note);
void shaker(Track& track, const Note& note);
void hat(Track& track, const Note& note); // closed or open
void tom(Track& track, const Note& note);
void heart(Track& track, const Note& note);   // a soft thump
void impact(Track& track, const Note& note);  // a deep hit with a long tail
void riser(Track& track, const Note& note);   // noise that opens towards its end
void wind(Track& track, const Note& note);    // swells in, wanders, swells out
void crackle(Track& track, const Note& note); // ice that works

} // namespace Music
