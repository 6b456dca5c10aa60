#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Timeline
{

// A piece of music as the player hears it: decoded by its own sound library.
class Music
{
public:
    // From the bytes of a music file. `path` is for messages. Throws Failure.
    Music(const unsigned char* data, std::size_t length, const std::string& path);

    // Reads a file. Throws Failure.
    static Music load(const std::string& path);

    int rate() const { return mRate; } // samples a second
    double seconds() const { return static_cast<double>(mMono.size()) / mRate; }

    // Both sides together, -1 to 1.
    const std::vector<float>& mono() const { return mMono; }

    // Left, right, left, right.
    const std::vector<std::int16_t>& stereo() const { return mStereo; }

private:
    std::vector<std::int16_t> mStereo;
    std::vector<float> mMono;
    int mRate = 0;
};

} // namespace Timeline
