// Music files: samples or an error, and never a byte read beyond the block.

#include <cstddef>
#include <cstdint>

#include "fsound_decode.h"

// libsndfile forgets what its Vorbis decoder holds when the head of such a file is damaged. Nobody else can free it.
// The name is that of the library: a machine without a symbolizer knows no other.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libvorbis\n";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FSound::Music music;
    FSound::decodeMusic(data, size, music);
    return 0;
}
