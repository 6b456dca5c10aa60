#include "fsound.h"

#include <SDL.h>
#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "fsound_stream.h"

using FSound::decodeMusic;
using FSound::Music;

namespace
{
typedef std::vector<char> Bytes;
typedef std::vector<float> Floats;
typedef std::vector<std::int16_t> Samples;

const int mode = 0x28000;

std::string makeTemporaryFile()
{
    std::string name = testing::TempDir() + "fsoundXXXXXX";
    close(mkstemp(&name[0]));
    return name;
}

Bytes takeFile(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    std::remove(name.c_str());
    return Bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
}

// A file of that format as libsndfile writes it; empty when it cannot.
Bytes encode(int format, int rate, int channels, const Floats& samples)
{
    const std::string name = makeTemporaryFile();
    SF_INFO info = {0, rate, channels, format, 0, 0};
    if (SNDFILE* file = sf_open(name.c_str(), SFM_WRITE, &info))
    {
        sf_write_float(file, samples.data(), static_cast<sf_count_t>(samples.size()));
        sf_close(file);
    }
    return takeFile(name);
}

Bytes encodeWav(int rate, int channels, const Samples& samples)
{
    Floats floats;
    for (const std::int16_t sample : samples) floats.push_back(sample / 32767.0f); // libsndfile's scale
    return encode(SF_FORMAT_WAV | SF_FORMAT_PCM_16, rate, channels, floats);
}

Music decode(const Bytes& file)
{
    Music music;
    EXPECT_EQ(FMOD_ERR_NONE, decodeMusic(reinterpret_cast<const unsigned char*>(file.data()), file.size(), music));
    return music;
}

// Every pair of samples tells its number; 0, 0 is silence.
Samples makeNumbers(int count)
{
    Samples samples;
    for (int i = 0; i < count; ++i)
        samples.insert(samples.end(),
                       {static_cast<std::int16_t>(i % 30000 + 1), static_cast<std::int16_t>(i / 30000 + 1)});
    return samples;
}

int getNumber(const std::int16_t* pair)
{
    return pair[1] == 0 ? -1 : (pair[1] - 1) * 30000 + pair[0] - 1;
}

void sleep(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

FSOUND_STREAM* openStream(const Bytes& file)
{
    return FSOUND_Stream_Open(file.data(), mode, 0, static_cast<int>(file.size()));
}

// The library on one of SDL's drivers, for one test.
struct Library
{
    explicit Library(const char* driver)
    {
        setenv("SDL_AUDIODRIVER", driver, 1);
        EXPECT_TRUE(FSOUND_Init(44100, 32, 2));
    }
    ~Library() { FSOUND_Close(); }
};
} // namespace

TEST(Decode, readsEveryFormatWholeAndInTune)
{
    const std::vector<std::tuple<int, int, double>> cases = {{SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 1.0},
                                                             {SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 22050, 1.0},
                                                             {SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 300.0},
                                                             {SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000, 1200.0},
                                                             {SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100, 300.0}};
    for (const auto& [format, rate, error] : cases)
    {
        Floats tone;
        for (int i = 0; i < rate; ++i)
            for (const double frequency : {440.0, 550.0})
                tone.push_back(static_cast<float>(std::sin(i * frequency * 2 * M_PI / rate) / 2));
        const Bytes file = encode(format, rate, 2, tone);
        if (file.empty()) std::printf("not checked, since libsndfile cannot write it: format %#x\n", format);
        if (file.empty()) continue;
        const Music music = decode(file);
        EXPECT_EQ(rate, music.rate);
        ASSERT_EQ(tone.size(), music.samples.size());
        double sum = 0.0;
        for (std::size_t i = 0; i < tone.size(); ++i) sum += std::pow(music.samples[i] - tone[i] * 32768, 2);
        EXPECT_LE(std::sqrt(sum / static_cast<double>(tone.size())), error) << format;
    }
}

TEST(Decode, limitsWhatIsTooLoudAndSpreadsOrPicksChannels)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    const Bytes mono = encode(format, 8000, 1, Floats{2.0f, -2.0f, 1.0f, -1.0f, nan, 0.5f});
    EXPECT_EQ((Samples{32767, 32767, -32768, -32768, 32767, 32767, -32768, -32768, 0, 0, 16384, 16384}),
              decode(mono).samples);
    EXPECT_EQ((Samples{8192, 16384}), decode(encode(format, 8000, 3, Floats{0.25f, 0.5f, 1.0f})).samples);
}

TEST(Stream, goesToTheMillisecondAndToItsSampleAndOnBehindTheEnd)
{
    for (const int rate : {44100, 48000, 11025, 999})
    {
        Music music;
        music.rate = rate;
        music.samples = makeNumbers(3 * rate / 2);
        FSOUND_STREAM stream(std::move(music));
        for (int ms = 0; ms <= 1600; ++ms)
        {
            stream.setTime(ms);
            ASSERT_EQ(ms, stream.getTime());
            std::int16_t pair[2];
            stream.play();
            stream.render(pair, 1, false);
            const int number = (ms * rate + 999) / 1000;
            ASSERT_EQ(number < 3 * rate / 2 ? number : -1, getNumber(pair));
            stream.stop();
        }
        stream.setTime(-5);
        EXPECT_EQ(0, stream.getTime());
        stream.setTime(5000000);
        stream.play();
        sleep(20);
        stream.stop();
        EXPECT_GE(stream.getTime(), 5000020);
        EXPECT_LE(stream.getTime(), 5010000);
        stream.setTime(INT_MAX);
        stream.play();
        sleep(2);
        EXPECT_EQ(INT_MAX, stream.getTime());
    }
}

TEST(Library, tellsWhyACallFails)
{
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    const Bytes wav = encodeWav(8000, 1, {1, 2, 3}), empty = encodeWav(8000, 1, {}), text(100, 'x');
    EXPECT_EQ(nullptr, openStream(wav));
    EXPECT_EQ(FMOD_ERR_UNINITIALIZED, FSOUND_GetError());
    EXPECT_FALSE(FSOUND_SetMute(FSOUND_ALL, true));
    EXPECT_FALSE(FSOUND_Init(3999, 32, 2));
    EXPECT_EQ(FMOD_ERR_INVALID_PARAM, FSOUND_GetError());

    Library library("dummy");
    EXPECT_TRUE(FSOUND_Init(4000, 32, 2)); // again
    const auto getError = [](const Bytes& data, unsigned flags) {
        EXPECT_EQ(nullptr, FSOUND_Stream_Open(data.data(), flags, 0, static_cast<int>(data.size())));
        return FSOUND_GetError();
    };
    EXPECT_EQ(FMOD_ERR_INVALID_PARAM, getError(Bytes(), mode));
    EXPECT_EQ(FMOD_ERR_INVALID_PARAM, getError(wav, 0));
    EXPECT_EQ(FMOD_ERR_FILE_FORMAT, getError(text, mode));
    EXPECT_EQ(FMOD_ERR_FILE_BAD, getError(empty, mode));
    EXPECT_EQ(-1, FSOUND_Stream_Play(FSOUND_FREE, nullptr));
    EXPECT_FALSE(FSOUND_Stream_SetTime(nullptr, 5));
    EXPECT_EQ(0, FSOUND_Stream_GetTime(nullptr));
    EXPECT_EQ(FMOD_ERR_INVALID_PARAM, FSOUND_GetError());
    EXPECT_STREQ("Unknown file format", FMOD_ErrorString(FMOD_ERR_FILE_FORMAT));
    for (const int code : {-1, 19}) EXPECT_STREQ("Unknown error", FMOD_ErrorString(code));
    EXPECT_GE(FSOUND_GetVersion(), 3.73f);
}

TEST(Library, survivesTheEndOfSdlAndHandlesOfAnotherLife)
{
    Bytes wav = encodeWav(8000, 2, makeNumbers(8000)), other = encodeWav(22050, 2, makeNumbers(22050));
    FSOUND_STREAM* stream;
    {
        Library library("dummy");
        stream = openStream(wav);
        wav.assign(wav.size(), 0); // the music's memory is the caller's again
        EXPECT_EQ(0, FSOUND_Stream_Play(FSOUND_FREE, stream));
        FSOUND_STREAM* second = openStream(other); // takes the device, and the first stops
        const int stopped = FSOUND_Stream_GetTime(stream);
        EXPECT_EQ(0, FSOUND_Stream_Play(FSOUND_FREE, second));
        sleep(20);
        EXPECT_EQ(stopped, FSOUND_Stream_GetTime(stream));
        EXPECT_GE(FSOUND_Stream_GetTime(second), 20);
        EXPECT_EQ(0, FSOUND_Stream_Play(FSOUND_FREE, stream)); // and back
        const int left = FSOUND_Stream_GetTime(second);
        sleep(20);
        EXPECT_EQ(left, FSOUND_Stream_GetTime(second));
        SDL_Quit();
        EXPECT_TRUE(FSOUND_Stream_SetTime(second, 100));
        EXPECT_TRUE(FSOUND_Stream_Close(second));
    }
    EXPECT_FALSE(FSOUND_Stream_Close(stream));
    EXPECT_EQ(FMOD_ERR_UNINITIALIZED, FSOUND_GetError());
}

TEST(Library, keepsTheTimeInSilenceWithoutADevice)
{
    testing::internal::CaptureStderr();
    {
        Library library("nonesuch");
        FSOUND_STREAM* stream = openStream(encodeWav(8000, 2, makeNumbers(16000)));
        ASSERT_NE(nullptr, stream);
        EXPECT_EQ(0, FSOUND_Stream_Play(FSOUND_FREE, stream));
        EXPECT_TRUE(FSOUND_Stream_SetTime(stream, 500));
        sleep(30);
        const int time = FSOUND_Stream_GetTime(stream);
        EXPECT_GE(time, 530);
        EXPECT_LE(time, 2000);
        EXPECT_TRUE(FSOUND_Stream_Stop(stream));
        EXPECT_EQ(0, FSOUND_Stream_Play(FSOUND_FREE, stream));
    }
    Library again("nonesuch");
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(0u, told.find("No sound device (")) << told;
    EXPECT_EQ(told.size() - 1, told.find('\n')) << told;
}

// SDL's disk driver writes what is played to a file.
TEST(Library, playsEverySampleInOrderAndSeeksAndMutesExactly)
{
    const std::string name = makeTemporaryFile();
    setenv("SDL_DISKAUDIOFILE", name.c_str(), 1);
    setenv("SDL_DISKAUDIODELAY", "10", 1);
    {
        Library library("disk");
        FSOUND_STREAM* stream = openStream(encodeWav(44100, 2, makeNumbers(10 * 44100)));
        FSOUND_Stream_Play(FSOUND_FREE, stream);
        sleep(100);
        FSOUND_Stream_SetTime(stream, 5001);
        sleep(100);
        FSOUND_SetMute(FSOUND_ALL, true);
        sleep(100);
        FSOUND_SetMute(FSOUND_ALL, false);
        sleep(100);
        FSOUND_Stream_SetTime(stream, 9990); // 441 samples before the end
        sleep(100);
    }
    const Bytes bytes = takeFile(name);

    // The runs of consecutive numbers: where each starts, how long it is, and the silence ahead of it.
    struct Run
    {
        int start, length, silence;
    };
    std::vector<Run> runs;
    int silence = 0;
    for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4)
    {
        std::int16_t pair[2];
        std::memcpy(pair, &bytes[i], 4);
        const int number = getNumber(pair);
        if (number < 0)
            ++silence;
        else if (silence || runs.empty() || number != runs.back().start + runs.back().length)
            runs.push_back({number, 1, std::exchange(silence, 0)});
        else
            ++runs.back().length;
    }
    ASSERT_EQ(4u, runs.size());
    EXPECT_EQ(0, runs[0].start);
    EXPECT_EQ(220545, runs[1].start); // 5001 ms, rounded up from 220544.1
    EXPECT_EQ(0, runs[1].silence);
    EXPECT_EQ(runs[1].start + runs[1].length + runs[2].silence, runs[2].start);
    EXPECT_GT(runs[2].silence, 0);
    EXPECT_EQ(440559, runs[3].start);
    EXPECT_EQ(441, runs[3].length);
}
