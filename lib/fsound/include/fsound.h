#pragma once

// The sound library: plays music from memory, seeks to the millisecond, mutes. A stream is decoded whole when it is
// opened, into 16-bit stereo samples of its own, so that a seek is exact in every format (WAV, FLAC, Ogg Vorbis, Opus,
// MP3 and what else libsndfile reads) and no decoder runs while music plays. Output is SDL's audio, at the rate of the
// stream. Without a sound device everything works the same in silence, and one line on standard error says so.
//
// A position is the time since the last start or seek, never a count of buffers, so it runs evenly. It runs on behind
// the end of the music, where there is silence. All calls come from one thread.

struct FSOUND_STREAM;

// What FSOUND_GetError gives.
enum FMOD_ERRORS
{
    FMOD_ERR_NONE,
    FMOD_ERR_BUSY,             // cannot be called after FSOUND_Init
    FMOD_ERR_UNINITIALIZED,    // FSOUND_Init was not called
    FMOD_ERR_INIT,             // output device does not start
    FMOD_ERR_ALLOCATED,        // output device in use
    FMOD_ERR_PLAY,             // playing failed
    FMOD_ERR_OUTPUT_FORMAT,    // no 16-bit stereo output
    FMOD_ERR_COOPERATIVELEVEL, // cooperative level of the hardware
    FMOD_ERR_CREATEBUFFER,     // hardware sound buffer
    FMOD_ERR_FILE_NOTFOUND,
    FMOD_ERR_FILE_FORMAT, // not music
    FMOD_ERR_FILE_BAD,    // loading failed
    FMOD_ERR_MEMORY,
    FMOD_ERR_VERSION, // version of the file format
    FMOD_ERR_INVALID_PARAM,
    FMOD_ERR_NO_EAX,
    FMOD_ERR_CHANNEL_ALLOC,
    FMOD_ERR_RECORD,
    FMOD_ERR_MEDIAPLAYER // codec not installed
};

// Channels.
const int FSOUND_FREE = -1; // whichever is free
const int FSOUND_ALL = -3;

// Flags of FSOUND_Init.
const unsigned FSOUND_INIT_GLOBALFOCUS = 0x2; // sound goes on when the window has lost the focus; it always does

// Mode of FSOUND_Stream_Open.
const unsigned FSOUND_LOADMEMORY = 0x8000;    // the name is a block of memory
const unsigned FSOUND_MPEGACCURATE = 0x20000; // exact seeks in MP3; they always are

// The version of the interface, 3.75.
float FSOUND_GetVersion();

// Starts the library. The rate (4000 to 384000) and the number of channels (1 to 1024) are checked but not used, since
// the output runs at the rate of the stream. True on success, also when there is no sound device; a second call
// changes nothing.
bool FSOUND_Init(int mixrate, int maxsoftwarechannels, unsigned flags);

// Silences and releases all streams and shuts the library down.
void FSOUND_Close();

// The outcome of the last call that can fail, one of FMOD_ERRORS.
int FSOUND_GetError();

// What the code means, in words; "Unknown error" for a number that is none of the codes.
const char* FMOD_ErrorString(int code);

// Opens the music in data[offset] to data[offset + length - 1]. The mode must hold FSOUND_LOADMEMORY. The memory is
// no longer needed afterwards. Null on failure: FMOD_ERR_UNINITIALIZED, FMOD_ERR_INVALID_PARAM, FMOD_ERR_FILE_FORMAT,
// or FMOD_ERR_MEMORY for music of more than 2^28 samples (100 minutes at 44100 Hz).
FSOUND_STREAM* FSOUND_Stream_Open(const char* data, unsigned mode, int offset, int length);

// Starts the stream where it stands, on the one channel there is; whatever played before stops. Returns the channel,
// 0, or -1 on failure.
int FSOUND_Stream_Play(int channel, FSOUND_STREAM* stream);

// Stops the stream; its position stays.
bool FSOUND_Stream_Stop(FSOUND_STREAM* stream);

// Moves the stream, playing or not, to a position in milliseconds; a negative one means 0, and one behind
// the end of the music is kept.
bool FSOUND_Stream_SetTime(FSOUND_STREAM* stream, int ms);

// The position in milliseconds, 0 on failure.
int FSOUND_Stream_GetTime(FSOUND_STREAM* stream);

// Silences and releases the stream.
bool FSOUND_Stream_Close(FSOUND_STREAM* stream);

// Makes a channel, or all with FSOUND_ALL, silent or loud. The music goes on in silence.
bool FSOUND_SetMute(int channel, bool mute);
