#include "fsound_stream.h"

#include <algorithm>
#include <climits>
#include <utility>

FSOUND_STREAM::FSOUND_STREAM(FSound::Music&& music) : mMusic(std::move(music)) {}

void FSOUND_STREAM::play()
{
    if (mPlaying) return;
    mPlaying = true;
    mStart = Clock::now();
}

// What plays after the next start is what the position says, not what the device has asked for in advance.
void FSOUND_STREAM::stop()
{
    const int position = getTime();
    mPlaying = false;
    setTime(position);
}

void FSOUND_STREAM::setTime(int ms)
{
    mStartMs = std::max(ms, 0);
    mStart = Clock::now();
    // Rounded up, so that the sample's own time, cut to milliseconds, is the one that was asked for.
    const unsigned long long rate = static_cast<unsigned>(mMusic.rate);
    const unsigned long long cursor = (static_cast<unsigned>(mStartMs) * rate + 999) / 1000;
    mCursor = std::min<std::size_t>(cursor, getLength());
}

int FSOUND_STREAM::getTime() const
{
    if (!mPlaying) return mStartMs;
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - mStart).count();
    return static_cast<int>(std::min<long long>(mStartMs + passed, INT_MAX));
}

void FSOUND_STREAM::render(std::int16_t* target, std::size_t frames, bool mute)
{
    std::size_t count = 0;
    if (mPlaying)
    {
        count = std::min(frames, getLength() - mCursor);
        if (!mute) std::copy_n(mMusic.samples.data() + 2 * mCursor, 2 * count, target);
        mCursor += count;
    }
    std::fill(target + (mute ? 0 : 2 * count), target + 2 * frames, std::int16_t(0));
}
