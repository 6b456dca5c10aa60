#include "tw_base.h"

#include "tw_effect.h"
#include "tw_hud.h"
#include "tw_minihud.h"
#include "tw_show.h"

#include "am_videofile.h"

#include <SDL.h>

#include <gtest/gtest.h>

namespace
{

using Strings = std::vector<std::string>;

// Writes down what the timeline and the runtime tell it, and may interfere.
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
    void update(float, float, float position) override { mPositions.push_back(position); }

    std::string mName;
    Strings& mLog;
    std::vector<float> mPositions;
};

// A loaded runtime with a device that shows nothing, and one entry "probe" from 0 to 10 seconds.
class BaseTest : public testing::Test
{
protected:
    void load(const std::string& settings = "")
    {
        mBase.reset(); // writes its settings
        mFolder.write("script.xml", "<script><effect name=\"probe\" start=\"0\" end=\"10\"/></script>");
        mFolder.write("tidewheel.xml", "<demo>" + settings + "<script file=\"script.xml\"/></demo>");
        mBase = std::make_unique<Tidewheel::Base>();
        mBase->addArchive(mFolder.mPath);
        mBase->addScreenshotArchive(mFolder.mPath + "screenshots/");
        mBase->load("");
        mBase->addEffect("probe", &mProbe);
        SDL_Init(SDL_INIT_TIMER);
        mDevice = new ScriptedDevice;
        mBase->mDevice = mDevice;
        mDevice->mPolls.push_back({}); // of the setup of the one effect
    }

    // Frames in which these events arrive one list after the other, and then one with Escape.
    void runWith(std::vector<std::vector<Tidewheel::Event>> polls)
    {
        for (const auto& poll : polls) mDevice->mPolls.push_back(poll);
        mDevice->mPolls.push_back({keyDown(SDLK_ESCAPE)});
        mBase->run();
    }

    std::size_t frames() const { return mProbe.mPositions.size(); }

    ShowFolder mFolder;
    Strings mLog;
    Probe mProbe{"probe", mLog};
    std::unique_ptr<Tidewheel::Base> mBase;
    ScriptedDevice* mDevice = nullptr;
};

TEST_F(BaseTest, setsUpInOrderOfNamesAndTellsTheLoadingEffect)
{
    load();
    Probe other("other", mLog);
    Probe loading("loading", mLog);
    mBase->addEffect("another", &other);
    mBase->mLoadingEffect = &loading;
    runWith({{}});

    EXPECT_EQ((Strings{"setup loading", "loading max=1", "setup other", "loading percent=0.000000", "loading index=0",
                       "setup probe", "loading percent=0.500000", "loading index=1"}),
              mLog);
    EXPECT_EQ((std::vector<float>{0.0f, 1.0f}), loading.mPositions);
}

TEST_F(BaseTest, showsABarWithoutALoadingEffect)
{
    load();
    Probe other("other", mLog);
    mBase->addEffect("another", &other);
    runWith({{}});
    EXPECT_EQ((Strings{"begin", "bar 0.000000", "end", "begin", "bar 1.000000", "end"}),
              Strings(mDevice->mCalls.begin(), mDevice->mCalls.begin() + 6));
}

TEST_F(BaseTest, aFrameIsDrawnInThisOrderAndTheLastOneToItsEnd)
{
    load("<hud mini=\"on\"/>");
    runWith({{keyDown(SDLK_RETURN, "alt")}});
    EXPECT_EQ((Strings{"begin", "bar 1.000000", "end", "begin", "hud", "minihud", "end", "fullscreen", "begin", "hud",
                       "minihud", "end"}),
              mDevice->mCalls);
    EXPECT_EQ(2u, frames());
    EXPECT_TRUE(mBase->mFullscreen);
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

TEST_F(BaseTest, theShowEndsBehindItsLastEntryAndFinishesThatFrame)
{
    load("<time start=\"11\"/>");
    mBase->run();
    EXPECT_EQ((Strings{"begin", "bar 1.000000", "end", "begin", "hud", "end"}), mDevice->mCalls);
    EXPECT_EQ(0u, frames());
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
        try
        {
            mBase->run();
            ADD_FAILURE() << c.error;
        }
        catch (const std::exception& exception)
        {
            EXPECT_STREQ(c.error, exception.what());
        }
    }
}

TEST_F(BaseTest, aScreenShotOfAnOddHeightIsRefusedAndTheShowGoesOn)
{
    load();
    mDevice->mHeight = 3;
    testing::internal::CaptureStderr();
    runWith({{keyDown(SDLK_s)}, {}});
    EXPECT_EQ("[Tidewheel] A screenshot needs a window of even height (3)\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ(3u, frames());
}

TEST_F(BaseTest, noKeyActsWhileATextFieldIsOpen)
{
    load();
    std::string name = "|";
    mBase->mHUD->mTextField = &name;
    runWith({{keyDown(SDLK_m), keyDown(SDLK_TAB), keyDown(SDLK_s)}});
    EXPECT_FALSE(mBase->mMute);
    EXPECT_FALSE(mBase->mHUD->mVisible);
    EXPECT_FALSE(mFolder.has("screenshots/screenshot.png"));
}

// Thirty keys in one frame are more than the list holds; the time record must not go behind its end either.
TEST_F(BaseTest, aBurstOfKeysWithTheHUDOnScreenStaysInTheList)
{
    load("<hud mini=\"on\"/>");
    runWith({std::vector<Tidewheel::Event>(30, keyDown(SDLK_UP)), {}, {}});
    EXPECT_EQ(4u, frames());
}

TEST_F(BaseTest, theClockFollowsTheStreamWhenItSeeks)
{
    mFolder.write("track.wav", silentWave()); // a tenth of a second
    load("<music file=\"track.wav\"/>");
    mBase->setMusicTime(0.0505f);
    EXPECT_LE(0.05f, mBase->getMusicTime());
    EXPECT_EQ(0.0505f, mBase->mPauseTime);

    // Behind its end the stream stays at the end, and the clock with it.
    for (float seconds : {60.0f, 1e30f})
    {
        mBase->setMusicTime(seconds);
        EXPECT_GT(30.0f, mBase->getMusicTime());
    }
}

} // namespace
