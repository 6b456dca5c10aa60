#include "music.h"

#include "failure.h"
#include "score.h"

#include "fsound_decode.h"

#include <utility>

namespace Timeline
{

Music::Music(const unsigned char* data, std::size_t length, const std::string& path)
{
    FSound::Music music;
    const FMOD_ERRORS error = FSound::decodeMusic(data, length, music);
    if (error == FMOD_ERR_MEMORY) throw Failure(path + " is too long a piece of music");
    if (error != FMOD_ERR_NONE) throw Failure(path + " is no music");
    mRate = music.rate;
    mStereo = std::move(music.samples);
    mMono.resize(mStereo.size() / 2);
    for (std::size_t i = 0; i < mMono.size(); ++i)
        mMono[i] = static_cast<float>(mStereo[2 * i] + mStereo[2 * i + 1]) / 65536.0f;
}

Music Music::load(const std::string& path)
{
    const std::string bytes = readFile(path);
    return {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), path};
}

} // namespace Timeline
