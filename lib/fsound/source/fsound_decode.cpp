#include "fsound_decode.h"

#include <sndfile.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

namespace FSound
{
namespace
{
// The file in memory, as libsndfile reads it.
struct Memory
{
    const unsigned char* data;
    sf_count_t length;
    sf_count_t position;
};

sf_count_t getLength(void* user)
{
    return static_cast<Memory*>(user)->length;
}

sf_count_t seek(sf_count_t offset, int whence, void* user)
{
    Memory& memory = *static_cast<Memory*>(user);
    const sf_count_t base = whence == SEEK_CUR ? memory.position : whence == SEEK_END ? memory.length : 0;
    // Inside the file, whatever a damaged one asks for; without adding, which could overflow.
    if (offset < -base)
        memory.position = 0;
    else if (offset > memory.length - base)
        memory.position = memory.length;
    else
        memory.position = base + offset;
    return memory.position;
}

sf_count_t read(void* target, sf_count_t count, void* user)
{
    Memory& memory = *static_cast<Memory*>(user);
    const sf_count_t given = std::max<sf_count_t>(0, std::min(count, memory.length - memory.position));
    std::memcpy(target, memory.data + memory.position, static_cast<std::size_t>(given));
    memory.position += given;
    return given;
}

sf_count_t write(const void*, sf_count_t, void*)
{
    return 0;
}

sf_count_t tell(void* user)
{
    return static_cast<Memory*>(user)->position;
}

struct SoundCloser
{
    void operator()(SNDFILE* file) const { sf_close(file); }
};

// Added to a float within 16 bits it leaves the integer next to that in the low bits of the sum: at this size floats
// are whole numbers. So the conversion is one that the compiler can do for several samples at a time.
const float ROUNDER = 12582912.0f; // 1.5 * 2^23
const std::int32_t ROUNDER_BITS = 0x4b400000;

// To 16 bits, limited to their range; what is no number is silent. The scale is the one by which libsndfile turns
// 16-bit samples into floats, so those come out as they were.
std::int16_t toSample(float value)
{
    const float number = value == value ? value : 0.0f;
    const float rounded = std::min(std::max(number * 32768.0f, -32768.0f), 32767.0f) + ROUNDER;
    std::int32_t bits;
    std::memcpy(&bits, &rounded, sizeof bits);
    return static_cast<std::int16_t>(bits - ROUNDER_BITS);
}

// How many frames a byte of a file is believed to hold ahead of decoding; far more than music does.
const std::size_t EXPECTED_FRAMES_PER_BYTE = 16;

// Reads to the end. The number of frames that the file claims may be wrong by anything; it only says how much memory to
// take at first, so that the samples need not move while they grow.
FMOD_ERRORS readFrames(SNDFILE* file, std::size_t channels, sf_count_t claimed, std::size_t length, Music& music)
{
    if (claimed > 0)
        music.samples.reserve(
            2 * std::min({static_cast<std::size_t>(claimed), length * EXPECTED_FRAMES_PER_BYTE, MAX_MUSIC_LENGTH}));
    const std::size_t blockLength = 4096;
    std::vector<float> block(blockLength * channels);
    const std::size_t right = channels > 1 ? 1 : 0;
    for (;;)
    {
        // libsndfile's own conversion to 16 bits wraps round at full scale in some formats, so the clamp is ours.
        const sf_count_t count = sf_readf_float(file, block.data(), static_cast<sf_count_t>(blockLength));
        if (count <= 0) break;
        const std::size_t frames = static_cast<std::size_t>(count);
        const std::size_t start = music.samples.size();
        if (start / 2 + frames > MAX_MUSIC_LENGTH) return FMOD_ERR_MEMORY;
        music.samples.resize(start + 2 * frames);
        std::int16_t* target = music.samples.data() + start;
        if (channels == 2)
            std::transform(block.data(), block.data() + 2 * frames, target, toSample);
        else
            for (const float* source = block.data(); target != music.samples.data() + music.samples.size();
                 source += channels)
            {
                *target++ = toSample(source[0]);
                *target++ = toSample(source[right]);
            }
    }
    return music.samples.empty() ? FMOD_ERR_FILE_BAD : FMOD_ERR_NONE;
}
} // namespace

FMOD_ERRORS decodeMusic(const unsigned char* data, std::size_t length, Music& music)
{
    Memory memory = {data, static_cast<sf_count_t>(length), 0};
    SF_VIRTUAL_IO access = {getLength, seek, read, write, tell};
    SF_INFO info = {};
    const std::unique_ptr<SNDFILE, SoundCloser> file(sf_open_virtual(&access, SFM_READ, &info, &memory));
    if (!file || info.channels < 1 || info.samplerate < 1) return FMOD_ERR_FILE_FORMAT;
    music.rate = info.samplerate;
    try
    {
        return readFrames(file.get(), static_cast<std::size_t>(info.channels), info.frames, length, music);
    }
    catch (const std::bad_alloc&)
    {
        return FMOD_ERR_MEMORY;
    }
}
} // namespace FSound
