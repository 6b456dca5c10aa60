#pragma once

#include "orchestra.h"

namespace Music
{

// Mixes the tracks: ducking under the kick, echo, hall, then the master: low cut, loudness, limiter, fade out.
// Samples of the result lie between -1 and 1.
Track mix(const Orchestra& orchestra);

// Integrated loudness in LUFS: K-weighted, in blocks of 400 ms, gated (ITU-R BS.1770-4).
double loudness(const Track& track);

} // namespace Music
