#include "orchestra.h"

#include "instruments.h"
#include "score.h"

namespace Music
{

namespace
{

// Who plays a voice, and on which track.
struct Player
{
    Voice voice;
    Track Orchestra::*track;
    void (*play)(Track& track, const Note& note);
};

const Player PLAYERS[] = {
    {Voice::Pad, &Orchestra::pads, pad},        {Voice::Choir, &Orchestra::pads, choir},
    {Voice::Bass, &Orchestra::bass, bass},      {Voice::Pluck, &Orchestra::voices, pluck},
    {Voice::Lead, &Orchestra::voices, lead},    {Voice::Counter, &Orchestra::voices, counter},
    {Voice::Bell, &Orchestra::voices, bell},    {Voice::Kick, &Orchestra::drums, kick},
    {Voice::Snare, &Orchestra::drums, snare},   {Voice::Clap, &Orchestra::drums, clap},
    {Voice::Shaker, &Orchestra::drums, shaker}, {Voice::Hat, &Orchestra::drums, hat},
    {Voice::OpenHat, &Orchestra::drums, hat},   {Voice::Tom, &Orchestra::drums, tom},
    {Voice::Heart, &Orchestra::drums, heart},   {Voice::Impact, &Orchestra::air, impact},
    {Voice::Riser, &Orchestra::air, riser},     {Voice::Wind, &Orchestra::air, wind},
    {Voice::Crackle, &Orchestra::air, crackle},
};

} // namespace

void perform(Orchestra& orchestra)
{
    for (Track* track : {&orchestra.drums, &orchestra.bass, &orchestra.pads, &orchestra.voices, &orchestra.air})
        track->assign(std::size_t(SECONDS * sampleRate), Stereo());
    for (const Player& player : PLAYERS)
        for (const Note& note : notes(player.voice)) player.play(orchestra.*player.track, note);
    for (const Note& note : notes(Voice::Kick)) orchestra.kicks.push_back(note.start);
}

} // namespace Music
