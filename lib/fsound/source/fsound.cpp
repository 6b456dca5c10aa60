#include "fsound.h"

#include <SDL.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "fsound_stream.h"

#include <dlfcn.h>

namespace
{
// The samples that SDL asks for at a time, 23 ms at 44100 Hz.
const int BUFFER_LENGTH = 1024;

// All of the library's state. It is never destroyed: the sound thread may outlive the destructors of a program that
// ends without FSOUND_Close.
struct Sound
{
    bool initialized = false;
    int error = FMOD_ERR_NONE;
    std::vector<FSOUND_STREAM*> streams; // owned; all that are open
    FSOUND_STREAM* onDevice = nullptr;   // one of them, what the device plays; under the audio lock
    bool mute = false;                   // under the audio lock
    bool silent = false;                 // there is no device
};

Sound& getSound()
{
    static Sound* sound = new Sound;
    return *sound;
}

// Keeps the sound thread out while it lives. Harmless when there is no device, or no SDL any more.
struct AudioLock
{
    AudioLock() { SDL_LockAudio(); }
    AudioLock(const AudioLock&) = delete;
    AudioLock& operator=(const AudioLock&) = delete;
    ~AudioLock() { SDL_UnlockAudio(); }
};

bool succeed()
{
    getSound().error = FMOD_ERR_NONE;
    return true;
}

bool fail(FMOD_ERRORS error)
{
    getSound().error = error;
    return false;
}

// Whether the stream is one that is open, with the error if it is not.
bool check(FSOUND_STREAM* stream)
{
    Sound& sound = getSound();
    if (!sound.initialized) return fail(FMOD_ERR_UNINITIALIZED);
    if (std::find(sound.streams.begin(), sound.streams.end(), stream) == sound.streams.end())
        return fail(FMOD_ERR_INVALID_PARAM);
    return succeed();
}

void fillAudio(void*, Uint8* bytes, int length)
{
    Sound& sound = getSound();
    std::int16_t* target = reinterpret_cast<std::int16_t*>(bytes);
    const std::size_t frames = static_cast<std::size_t>(length) / (2 * sizeof(std::int16_t));
    if (sound.onDevice)
        sound.onDevice->render(target, frames, sound.mute);
    else
        std::fill(target, target + 2 * frames, std::int16_t(0));
}

using AlsaHandler = void (*)(const char* file, int line, const char* function, int error, const char* format, ...);

void sayNothing(const char*, int, const char*, int, const char*, ...) {}

// Where there is no sound device, ALSA writes many lines of its own ahead of the one that tells the user so. It is not
// linked, but comes with SDL; where it did not, there is nothing to quiet.
void quietAlsa()
{
    void* alsa = dlopen("libasound.so.2", RTLD_LAZY | RTLD_NOLOAD);
    if (!alsa) return;
    if (void* setHandler = dlsym(alsa, "snd_lib_error_set_handler"))
        reinterpret_cast<int (*)(AlsaHandler)>(setHandler)(sayNothing);
    dlclose(alsa);
}

void goSilent()
{
    static bool told = false;
    if (!told) std::fprintf(stderr, "No sound device (%s), playing in silence\n", SDL_GetError());
    told = true;
    getSound().silent = true;
}

// Opens the device at the rate of the stream. The callback does not run before SDL_PauseAudio.
void openDevice(int rate)
{
    if (SDL_GetAudioStatus() != SDL_AUDIO_STOPPED) SDL_CloseAudio();
    SDL_AudioSpec wanted = {};
    wanted.freq = rate;
    wanted.format = AUDIO_S16SYS;
    wanted.channels = 2;
    wanted.samples = BUFFER_LENGTH;
    wanted.callback = fillAudio;
    // Without an obtained format SDL converts to whatever the device takes.
    if (SDL_OpenAudio(&wanted, nullptr) != 0) goSilent();
}

// Gives the device to the stream. Whatever had it stops.
void takeDevice(FSOUND_STREAM* stream)
{
    Sound& sound = getSound();
    const FSOUND_STREAM* before = sound.onDevice;
    if (before != stream)
    {
        AudioLock lock;
        if (before) sound.onDevice->stop();
        sound.onDevice = stream;
    }
    const bool opened =
        before && before->mMusic.rate == stream->mMusic.rate && SDL_GetAudioStatus() != SDL_AUDIO_STOPPED;
    if (!opened && !sound.silent) openDevice(stream->mMusic.rate);
}
} // namespace

float FSOUND_GetVersion()
{
    return 3.75f;
}

bool FSOUND_Init(int mixrate, int maxsoftwarechannels, unsigned)
{
    if (mixrate < 4000 || mixrate > 384000 || maxsoftwarechannels < 1 || maxsoftwarechannels > 1024)
        return fail(FMOD_ERR_INVALID_PARAM);
    Sound& sound = getSound();
    if (!sound.initialized)
    {
        sound.initialized = true;
        sound.silent = false;
        sound.mute = false;
        quietAlsa();
        if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) goSilent();
    }
    return succeed();
}

void FSOUND_Close()
{
    Sound& sound = getSound();
    if (!sound.initialized) return;
    while (!sound.streams.empty()) FSOUND_Stream_Close(sound.streams.back());
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
    sound.initialized = false;
}

int FSOUND_GetError()
{
    return getSound().error;
}

FSOUND_STREAM* FSOUND_Stream_Open(const char* data, unsigned mode, int offset, int length)
{
    Sound& sound = getSound();
    FMOD_ERRORS error = FMOD_ERR_NONE;
    std::unique_ptr<FSOUND_STREAM> stream;
    if (!sound.initialized)
        error = FMOD_ERR_UNINITIALIZED;
    else if (!data || !(mode & FSOUND_LOADMEMORY) || offset < 0 || length < 0)
        error = FMOD_ERR_INVALID_PARAM;
    else
    {
        try
        {
            FSound::Music music;
            const char* start = data + offset;
            error = FSound::decodeMusic(reinterpret_cast<const unsigned char*>(start), static_cast<std::size_t>(length),
                                        music);
            if (error == FMOD_ERR_NONE)
            {
                stream.reset(new FSOUND_STREAM(std::move(music)));
                sound.streams.push_back(stream.get());
            }
        }
        catch (const std::bad_alloc&)
        {
            error = FMOD_ERR_MEMORY;
        }
    }
    if (error != FMOD_ERR_NONE)
    {
        fail(error);
        return nullptr;
    }
    succeed();
    // Opening a device can take long, so it happens while the show loads and not when it starts.
    takeDevice(stream.get());
    return stream.release();
}

int FSOUND_Stream_Play(int channel, FSOUND_STREAM* stream)
{
    if (!check(stream)) return -1;
    if (channel != FSOUND_FREE && channel != 0)
    {
        fail(FMOD_ERR_INVALID_PARAM);
        return -1;
    }
    takeDevice(stream);
    {
        AudioLock lock;
        stream->play();
    }
    SDL_PauseAudio(0);
    return 0;
}

bool FSOUND_Stream_Stop(FSOUND_STREAM* stream)
{
    if (!check(stream)) return false;
    AudioLock lock;
    stream->stop();
    return true;
}

bool FSOUND_Stream_SetTime(FSOUND_STREAM* stream, int ms)
{
    if (!check(stream)) return false;
    AudioLock lock;
    stream->setTime(ms);
    return true;
}

int FSOUND_Stream_GetTime(FSOUND_STREAM* stream)
{
    return check(stream) ? stream->getTime() : 0;
}

bool FSOUND_Stream_Close(FSOUND_STREAM* stream)
{
    if (!check(stream)) return false;
    Sound& sound = getSound();
    if (sound.onDevice == stream)
    {
        // Ends the sound thread, so that nobody reads the samples any more.
        SDL_CloseAudio();
        sound.onDevice = nullptr;
    }
    sound.streams.erase(std::find(sound.streams.begin(), sound.streams.end(), stream));
    delete stream;
    return true;
}

bool FSOUND_SetMute(int channel, bool mute)
{
    Sound& sound = getSound();
    if (!sound.initialized) return fail(FMOD_ERR_UNINITIALIZED);
    if (channel != FSOUND_ALL && channel != 0) return fail(FMOD_ERR_INVALID_PARAM);
    AudioLock lock;
    sound.mute = mute;
    return succeed();
}
