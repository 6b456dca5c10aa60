#pragma once

// SDL's clock and the sound library, replaced when the program is linked: time stands still until a test moves it, and
// the music is a position that goes on with that time, however long the piece would be.
namespace StandIn
{

extern unsigned int gTicks; // milliseconds; SDL_GetTicks gives it, and SDL_Delay moves it
extern bool gPlaying;       // the stream runs
extern bool gMuted;

} // namespace StandIn
