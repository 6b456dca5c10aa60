// Music files: samples or an error, and never a byte read beyond the block.

#include <cstddef>
#include <cstdint>

#include "fsound_decode.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FSound::Music music;
    FSound::decodeMusic(data, size, music);
    return 0;
}
