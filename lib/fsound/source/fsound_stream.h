#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "fsound_decode.h"

// A piece of music with the place where it is. The sound thread calls `render` alone; whoever calls another operation
// while the stream is on the device holds the audio lock.
struct FSOUND_STREAM
{
    explicit FSOUND_STREAM(FSound::Music&& music);

    void play();
    void stop();

    // In milliseconds, at least 0. Behind the end of the music there is silence that goes on for ever.
    void setTime(int ms);

    // By the clock: the time of the last start or seek and what has passed since, also behind the end of the music.
    int getTime() const;

    // Fills `frames` pairs of samples with what comes next, silence when stopped, muted or behind the end.
    void render(std::int16_t* target, std::size_t frames, bool mute);

    const FSound::Music mMusic;

private:
    typedef std::chrono::steady_clock Clock;

    std::size_t getLength() const { return mMusic.samples.size() / 2; }

    int mStartMs = 0; // position at mStart, or all the time while stopped
    Clock::time_point mStart;
    bool mPlaying = false;
    std::size_t mCursor = 0; // pair of samples that is played next; the number of all behind the end
};
