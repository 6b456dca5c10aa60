// Music files: samples or an error, and never a byte read beyond the block.

#include <cstddef>
#include <cstdint>

#include "fsound_decode.h"

// libsndfile forgets what its Vorbis decoder holds when the head of such a file is damaged. Nobody else can free it.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:vorbis_info_init\nleak:vorbis_comment_init\n";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FSound::Music music;
    FSound::decodeMusic(data, size, music);
    return 0;
}
