#include "tw_base.h"

#include "tw_device_sdl.h"
#include "tw_effect.h"
#include "tw_hud.h"
#include "tw_minihud.h"
#include "tw_show.h"
#include "tw_standins.h"

#include "am_videofile.h"

#include <SDL.h>

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace
{

using Strings = std::vector<std::string>;
using Keys = std::vector<Tidewheel::Event>;

// Writes down what the timeline and the runtime tell it.
class Probe : public Tidewheel::Effect
{
public:
    Probe(const std::string& name, Strings& log) : mName(name), mLog(log) {}

    void setup(AM::ArchiveManager&) override {}
    void setupInternal(Tidewheel::DeviceSDL*, AM::ArchiveManager*) override { mLog.push_back("setup " + mName); }
    void executeTrigger(float, const std::string& name, const std::string& value) override
    {
        mLog.push_back(mName + " " + name + "=" + value);
    }
    void update(float time, float, float position) override
    {
        mTimes.push_back(time);
        mPositions.push_back(position);
    }

    std::string mName;
    Strings& mLog;
    std::vector<float> mTimes;
    std::vector<float> mPositions;
};

// A device that shows nothing: with each poll it moves the clock by 20 ms and hands out a prepared list of events, of
// which those that find no room wait for the next poll. It writes down what it is told.
class ScriptedDevice : public Tidewheel::DeviceSDL
{
public:
    explicit ScriptedDevice(Strings& log) : mLog(log)
    {
        mWidth = 4;
        mHeight = 2;
    }

    void updateEvents(Tidewheel::Events& events) override
    {
        StandIn::gTicks += 20;
        if (mPolls.empty()) return;
        Keys& keys = mPolls.front();
        while (!keys.empty() && !events.isFull())
        {
            events.append(keys.front());
            keys.erase(keys.begin());
        }
        if (keys.empty()) mPolls.pop_front();
    }

    void open(const std::string&, int, int, bool) override {}
    void setFullscreen(bool fullscreen) override
    {
        mFullscreen = fullscreen;
        mLog.push_back(fullscreen ? "fullscreen" : "windowed");
    }
    bool isFullscreen() const override { return mFullscreen; }
    void beginFrame() override { mLog.push_back("begin"); }
    void endFrame() override { mLog.push_back("end"); }
    void displayHUD(Tidewheel::HUD&) override { mLog.push_back("hud"); }
    void displayMiniHUD(Tidewheel::MiniHUD&) override { mLog.push_back("minihud"); }
    void displayLoadingBar(float delta) override { mLog.push_back("bar " + std::to_string(delta)); }

    std::deque<Keys> mPolls;
    Strings& mLog;
};

// A loaded runtime with a scripted device, and one entry "probe" from 0 to 100 seconds.
class BaseTest : public testing::Test
{
protected:
    void load(const std::string& settings = "")
    {
        mBase.reset(); // writes its settings
        mLog.clear();
        mProbe.mTimes.clear();
        mFolder.write("track", "music");
        mFolder.write("script.xml", "<script><effect name=\"probe\" start=\"0\" end=\"100\"/></script>");
        mFolder.write("tidewheel.xml", "<demo>" + settings + "<script file=\"script.xml\"/></demo>");
        mBase = std::make_unique<Tidewheel::Base>();
        mBase->addArchive(mFolder.mPath);
        mBase->addScreenshotArchive(mFolder.mPath + "screenshots/");
        mBase->load("");
        mBase->addEffect("probe", &mProbe);
        mDevice = new ScriptedDevice(mLog);
        mBase->mDevice = mDevice;
        mDevice->mPolls.push_back({}); // of the setup of the one effect
    }

    // Frames in which these events arrive one list after the other, and then one with Escape.
    void runWith(const std::vector<Keys>& polls)
    {
        mDevice->mPolls.insert(mDevice->mPolls.end(), polls.begin(), polls.end());
        mDevice->mPolls.push_back({keyDown(SDLK_ESCAPE)});
        mBase->run();
    }

    std::string errorOfRun()
    {
        try
        {
            mBase->run();
        }
        catch (const std::exception& exception)
        {
            return exception.what();
        }
        return "";
    }

    std::size_t frames() const { return mProbe.mTimes.size(); }

    ShowFolder mFolder;
    Strings mLog;
    Probe mProbe{"probe", mLog};
    std::unique_ptr<Tidewheel::Base> mBase;
    ScriptedDevice* mDevice = nullptr; // the runtime's
};

TEST_F(BaseTest, setsUpInOrderOfNamesAndTellsTheLoadingEffect)
{
    load();
    Probe other("other", mLog);
    Probe loading("loading", mLog);
    mBase->addEffect("another", &other);
    mBase->mLoadingEffect = &loading;
    mBase->mScriptEngine.mEffects.push_back(new Script::Effect);
    runWith({{}});
    mLog.resize(12);
    EXPECT_EQ((Strings{"setup loading", "loading max=2", "setup other", "begin", "loading percent=0.000000",
                       "loading index=0", "end", "setup probe", "begin", "loading percent=0.500000", "loading index=1",
                       "end"}),
              mLog);
    EXPECT_EQ((std::vector<float>{0.0f, 0.5f}), loading.mPositions);
}

TEST_F(BaseTest, aFrameIsDrawnInThisOrderAndTheLastOneToItsEnd)
{
    load("<hud mini=\"on\"/>");
    Probe other("other", mLog);
    mBase->addEffect("another", &other);
    mDevice->mPolls.push_back({});
    runWith({{keyDown(SDLK_RETURN, "alt")}});
    EXPECT_EQ((Strings{"setup other", "begin", "bar 0.000000", "end", "setup probe", "begin", "bar 1.000000", "end",
                       "begin", "hud", "minihud", "end", "fullscreen", "begin", "hud", "minihud", "end"}),
              mLog);
    EXPECT_EQ(2u, frames());
}

TEST_F(BaseTest, neitherEscapeNorQuitLeavesWhileTheHUDIsOnScreen)
{
    Tidewheel::Event quit;
    quit.type = Tidewheel::EVENT_QUIT;
    load();
    // The first record shows the HUD, so the second finds it; the last list hides it again.
    runWith({{keyDown(SDLK_TAB), keyDown(SDLK_ESCAPE)}, {quit}, {keyDown(SDLK_TAB)}});
    EXPECT_EQ(4u, frames());
}

TEST_F(BaseTest, whatFindsTheEventListFullWaitsForTheNextFrame)
{
    load("<hud mini=\"on\"/>");
    Keys burst(24, keyDown(SDLK_m)); // even: the last one leaves the sound on
    burst.push_back(keyDown(SDLK_f));
    burst.push_back(keyDown(SDLK_ESCAPE));
    mDevice->mPolls.push_back(burst);
    mBase->run();
    EXPECT_EQ(3u, frames());
    EXPECT_FALSE(mBase->mMute || mBase->mMiniHUD->mVisible);

    load();
    mDevice->mPolls.front() = burst; // all of it during the setup of one effect
    mBase->run();
    EXPECT_EQ(2u, frames());
    load();
    burst.erase(burst.begin(), burst.begin() + 20);
    mDevice->mPolls.front() = burst;
    EXPECT_EQ("User aborted!", errorOfRun());
}

TEST_F(BaseTest, aStartPastTheEndOfTheShowShowsOneFrame)
{
    for (const std::string start : {"100", "3e6"})
        for (const std::string music : {"", "<music file=\"track\"/>"})
        {
            load("<time start=\"" + start + "\"/>" + music);
            runWith({{}, {}});
            EXPECT_EQ((Strings{"setup probe", "begin", "bar 1.000000", "end", "begin", "hud", "end"}), mLog) << start;
            EXPECT_EQ(0u, frames());
        }
}

TEST_F(BaseTest, theClockGoesWhereItIsToldAndOnFromThere)
{
    for (const std::string music : {"", "<music file=\"track\"/>"})
        for (const float seconds : {60.0505f, 0.0f, 3e6f, 1e30f, -5.0f})
        {
            load(music);
            mBase->setMusicTime(seconds);
            const float reached = std::min(std::max(seconds, 0.0f), 2147483.647f);
            EXPECT_NEAR(reached, mBase->getMusicTime(), 1e-3f) << seconds;
            StandIn::gTicks += 1500;
            EXPECT_NEAR(reached + 1.5f, mBase->getMusicTime(), 1e-3f) << seconds;
            EXPECT_EQ(seconds, mBase->mPauseTime);
        }
}

TEST_F(BaseTest, aPausedShowStandsAndGoesOnFromThere)
{
    for (const std::string music : {"", "<music file=\"track\"/>"})
    {
        load("<time start=\"60\"/>" + music);
        runWith({{}, {keyDown(SDLK_SPACE)}, {}, {keyDown(SDLK_SPACE)}, {}});
        EXPECT_EQ((std::vector<float>{60.02f, 60.04f, 60.04f, 60.04f, 60.06f, 60.08f}), mProbe.mTimes);
        load("<time start=\"60\"/>" + music);
        runWith({{keyDown(SDLK_SPACE)}});
        EXPECT_FALSE(StandIn::gPlaying);
    }
}

TEST_F(BaseTest, keysMoveTheShowAndItsStart)
{
    const float step = 5.0f * 40.0f / 398.0f; // five pixels of the axis
    const struct
    {
        Keys keys;
        float time, start;
    } cases[] = {
        {{keyDown(SDLK_PAGEUP)}, 2.0f + step, 2.0f},
        {{keyDown(SDLK_PAGEUP, "ctrl shift")}, 2.0f + 3.0f * step, 2.0f},
        {{keyDown(SDLK_PAGEDOWN, "shift")}, 2.0f - 2.0f * step, 2.0f},
        {Keys(9, keyDown(SDLK_PAGEDOWN)), 0.0f, 2.0f},
        {{keyDown(SDLK_PAGEUP), keyDown(SDLK_p)}, 2.0f, 2.0f},
        {{keyDown(SDLK_PAGEUP), keyDown(SDLK_p, "ctrl alt")}, 2.0f + step, 2.0f + step},
        {{keyDown(SDLK_p, "alt")}, 0.0f, 0.0f},
    };
    for (const auto& test : cases)
    {
        load("<time start=\"2\"/>");
        mBase->mPaused = true;
        runWith({test.keys});
        EXPECT_FLOAT_EQ(test.time, mBase->getMusicTime());
        EXPECT_FLOAT_EQ(test.start, mBase->mStartTime);
    }
}

TEST_F(BaseTest, keysMuteSaveAndTakePicturesUnlessATextFieldIsOpen)
{
    load("<music file=\"track\" mute=\"on\"/>");
    mFolder.write("script.xml", "");
    std::string name = "|";
    mBase->mHUD->mTextField = &name;
    const Keys keys = {keyDown(SDLK_m), keyDown(SDLK_s), keyDown(SDLK_s, "ctrl")};
    runWith({keys});
    EXPECT_TRUE(mBase->mMute && StandIn::gMuted);
    EXPECT_FALSE(mFolder.has("screenshots/screenshot.png"));

    load("<music file=\"track\" mute=\"on\"/>");
    mFolder.write("script.xml", "");
    runWith({keys});
    EXPECT_FALSE(mBase->mMute || StandIn::gMuted);
    EXPECT_TRUE(mFolder.has("screenshots/screenshot.png"));
    EXPECT_EQ("<script>\n\t<effect name=\"probe\" start=\"0\" end=\"100\"/>\n</script>\n", mFolder.read("script.xml"));

    load();
    mDevice->mHeight = 3;
    testing::internal::CaptureStderr();
    runWith({{keyDown(SDLK_s)}, {}});
    EXPECT_EQ("[Tidewheel] A screenshot needs a window of even height (3)\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ(3u, frames());

    load();
    Script::Effect* entry = mBase->mScriptEngine.mEffects[0];
    for (int depth = 0; depth < 50000; ++depth)
    {
        entry->mEffects.push_back(new Script::Effect);
        entry = entry->mEffects[0];
    }
    testing::internal::CaptureStderr();
    runWith({{keyDown(SDLK_s, "ctrl")}, {}});
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("The script cannot be saved: "));
    EXPECT_EQ(3u, frames());
}

TEST_F(BaseTest, theHUDsGetTheTimeOncePerPixelOfTheAxis)
{
    load("<hud mini=\"on\"/>");
    runWith({{}, {}, {}, {}, {}}); // 120 ms; a pixel is worth 100.5
    EXPECT_FLOAT_EQ(0.02f, mBase->mMiniHUD->mTime);
    EXPECT_EQ(0.0f, mBase->mMiniHUD->mFps);
    load("<hud mini=\"on\"/>");
    runWith({{}, {}, {}, {}, {}, {}});
    EXPECT_FLOAT_EQ(0.14f, mBase->mMiniHUD->mTime);
    EXPECT_LT(0.0f, mBase->mMiniHUD->mFps);
}

TEST_F(BaseTest, aDumpGoesByItsOwnClock)
{
    load();
    const AM::VideoFile::Format format = {4, 2, 25, 2};
    mBase->mVideoFile = AM::VideoFile::createForWrite("frame.png", format, &mBase->mScreenshotArchives);
    mBase->mFrameSkip = 2;
    runWith({{}, {}});
    EXPECT_EQ((std::vector<float>{0.04f, 0.08f, 0.12f}), mProbe.mTimes);
    std::size_t pictures = 0;
    for (const auto& file : std::filesystem::directory_iterator(mFolder.mPath + "screenshots"))
        pictures += file.is_regular_file();
    EXPECT_EQ(2u, pictures); // the first and the third
}

TEST_F(BaseTest, aDumpThatCannotComeToAnEndIsRefused)
{
    const struct
    {
        int fps, height;
        float start;
        const char* error;
    } cases[] = {
        {0, 2, 0.0f, "[Tidewheel] The fps of the videodump in 'tidewheel.xml' must be at least 1 (0)"},
        {25, 3, 0.0f, "[Tidewheel] Frames can be dumped only from a window of even height (3)"},
        {25, 2, -1e30f, "[Tidewheel] The step between frames is too small to go on from -1e+30 seconds"},
    };
    for (const auto& c : cases)
    {
        load();
        const AM::VideoFile::Format format = {4, c.height, c.fps, 1};
        mBase->mVideoFile = AM::VideoFile::createForWrite("frame.png", format, &mBase->mScreenshotArchives);
        mBase->mFrameSkip = 1;
        mDevice->mHeight = c.height;
        mBase->mStartTime = c.start;
        EXPECT_EQ(c.error, errorOfRun());
    }
}

} // namespace
