#include "tw_standins.h"

#include "fsound.h"

#include <SDL.h>

#include <algorithm>
#include <climits>

struct FSOUND_STREAM
{
    int position; // milliseconds, at `since`
    Uint32 since;
};

namespace StandIn
{

unsigned int gTicks = 1000;
bool gPlaying = false;
bool gMuted = false;

} // namespace StandIn

using namespace StandIn;

Uint32 SDL_GetTicks()
{
    return gTicks;
}

void SDL_Delay(Uint32 milliseconds)
{
    gTicks += milliseconds;
}

float FSOUND_GetVersion()
{
    return 3.73f;
}

bool FSOUND_Init(int, int, unsigned)
{
    return true;
}

void FSOUND_Close() {}

int FSOUND_GetError()
{
    return FMOD_ERR_NONE;
}

FSOUND_STREAM* FSOUND_Stream_Open(const char*, unsigned, int, int)
{
    gPlaying = false;
    return new FSOUND_STREAM{0, gTicks};
}

int FSOUND_Stream_Play(int, FSOUND_STREAM* stream)
{
    stream->since = gTicks;
    gPlaying = true;
    return 0;
}

bool FSOUND_Stream_Stop(FSOUND_STREAM* stream)
{
    stream->position = FSOUND_Stream_GetTime(stream);
    gPlaying = false;
    return true;
}

bool FSOUND_Stream_SetTime(FSOUND_STREAM* stream, int ms)
{
    *stream = {std::max(ms, 0), gTicks};
    return true;
}

int FSOUND_Stream_GetTime(FSOUND_STREAM* stream)
{
    const long long passed = gPlaying ? gTicks - stream->since : 0;
    return static_cast<int>(std::min<long long>(stream->position + passed, INT_MAX));
}

bool FSOUND_Stream_Close(FSOUND_STREAM* stream)
{
    delete stream;
    return true;
}

bool FSOUND_SetMute(int, bool mute)
{
    gMuted = mute;
    return true;
}
