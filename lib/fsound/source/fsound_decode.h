#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fsound.h"

namespace FSound
{
// A whole piece of music.
struct Music
{
    std::vector<std::int16_t> samples; // left, right, left, right
    int rate = 0;                      // samples of each side in a second
};

// The longest music that is decoded, in samples of each side: 1 GB.
const std::size_t MAX_MUSIC_LENGTH = std::size_t(1) << 28;

// Decodes a music file of `length` bytes in memory. One channel sounds on both sides; of more than two, the first two
// are taken. Gives FMOD_ERR_NONE, or why there is no music: FMOD_ERR_FILE_FORMAT for a file that is none,
// FMOD_ERR_FILE_BAD for one without a single sample, FMOD_ERR_MEMORY.
FMOD_ERRORS decodeMusic(const unsigned char* data, std::size_t length, Music& music);
} // namespace FSound
