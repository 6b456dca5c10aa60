#include "tw_base.h"

#include "tw_effect.h"
#include "tw_exception.h"
#include "tw_hud.h"
#include "tw_minihud.h"
#include "tw_show.h"

#include "am_image.h"
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

    void dump(int fps, int base, int skip)
    {
        const AM::VideoFile::Format format = {4, 2, fps, base};
        mBase->mVideoFile = AM::VideoFile::createForWrite("frame.png", format, &mBase->mScreenshotArchives);
        mBase->mFrameSkip = skip;
    }

    // Frames in which these events arrive one list after the other, and then one with Escape.
    void runWith(std::vector<std::vector<Tidewheel::Event>> polls)
    {
        for (const auto& poll : polls)
            mDevice->mPolls.push_back(poll);
        mDevice->mPolls.push_back({keyDown(SDLK_ESCAPE)});
        mBase->run();
    }

    std::size_t frames() const { return mProbe.mTimes.size(); }

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

TEST_F(BaseTest, theUserCanLeaveWhileEffectsAreSetUp)
{
    Tidewheel::Event quit;
    quit.type = Tidewheel::EVENT_QUIT;
    for (const Tidewheel::Event& event : {keyDown(SDLK_ESCAPE), quit})
    {
        mLog.clear();
        load();
        mDevice->mPolls = {{keyDown(SDLK_SPACE), event}};
        try
        {
            mBase->run();
            ADD_FAILURE() << "the show ran";
        }
        catch (const Tidewheel::Exception& exception)
        {
            EXPECT_STREQ("User aborted!", exception.what());
        }
        EXPECT_TRUE(mLog.empty());
    }
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

TEST_F(BaseTest, dumpingStepsTheClockAndWritesEverySoManythFrame)
{
    load("<time start=\"1\"/>");
    dump(25, 1, 2);
    runWith({{}, {keyDown(SDLK_s)}, {}, {}});

    ASSERT_EQ(5u, frames());
    for (std::size_t i = 0; i < frames(); i++)
        EXPECT_NEAR(1.02 + 0.02 * static_cast<double>(i), static_cast<double>(mProbe.mTimes[i]), 1e-6);
    for (int i = 0; i < 3; i++)
        EXPECT_TRUE(mFolder.has("screenshots/frame.000000000" + std::to_string(i) + ".png"));
    EXPECT_FALSE(mFolder.has("screenshots/frame.0000000003.png"));
    EXPECT_FALSE(mFolder.has("screenshots/screenshot.png"));

    // The second file holds what was on screen when the third frame had been drawn.
    AM::Image image = mBase->mScreenshotArchives.loadImage("frame.0000000001.png", -1, true);
    EXPECT_EQ(4, image->getWidth());
    EXPECT_EQ(2, image->getData()[0]);
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
        dump(c.fps, 1, 1);
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

// Paused, the clock is exactly what the keys make of it.
TEST_F(BaseTest, seekKeysStepFivePixelsOfTheAxisAndStopAtZero)
{
    const float step = 40.0f / 398.0f * 5.0f;
    const struct
    {
        int key;
        const char* modifiers;
        float from, to;
    } cases[] = {
        {SDLK_PAGEUP, "", 1.0f, 1.0f + step},
        {SDLK_PAGEUP, "ctrl", 1.0f, 1.0f + 2.0f * step},
        {SDLK_PAGEUP, "ctrl shift", 1.0f, 1.0f + 3.0f * step},
        {SDLK_PAGEDOWN, "shift", 5.0f, 5.0f - 2.0f * step},
        {SDLK_PAGEDOWN, "", 0.1f, 0.0f},
    };
    for (const auto& c : cases)
    {
        load();
        mBase->mPaused = true;
        mBase->mStartTime = c.from;
        runWith({{keyDown(c.key, c.modifiers)}});
        EXPECT_FLOAT_EQ(c.to, mBase->getMusicTime());
    }
}

TEST_F(BaseTest, theStartKeySeeksClearsOrTakesTheStart)
{
    const float moved = 4.0f + 40.0f / 398.0f * 5.0f;
    const struct
    {
        const char* modifiers;
        float start, time;
    } cases[] = {{"", 4.0f, 4.0f}, {"ctrl", moved, moved}, {"alt", 0.0f, 0.0f}, {"ctrl alt", moved, moved}};
    for (const auto& c : cases)
    {
        load("<time start=\"4\"/>");
        mBase->mPaused = true;
        runWith({{keyDown(SDLK_PAGEUP)}, {keyDown(SDLK_p, c.modifiers)}});
        EXPECT_FLOAT_EQ(c.start, mBase->mStartTime) << c.modifiers;
        EXPECT_FLOAT_EQ(c.time, mBase->getMusicTime()) << c.modifiers;
    }
}

TEST_F(BaseTest, otherKeysToggleAndSave)
{
    load();
    mDevice->mPolls.push_back({keyDown(SDLK_m), keyDown(SDLK_f), keyDown(SDLK_s), keyDown(SDLK_s, "ctrl")});
    mDevice->mPolls.push_back({keyDown(SDLK_RETURN), keyDown(SDLK_SPACE)});
    runWith({});
    EXPECT_TRUE(mBase->mMute);
    EXPECT_TRUE(mBase->mMiniHUD->mVisible);
    EXPECT_FALSE(mBase->mFullscreen);
    EXPECT_TRUE(mBase->mPaused);
    EXPECT_TRUE(mFolder.has("screenshots/screenshot.png"));
    EXPECT_EQ("<script>\n\t<effect name=\"probe\" start=\"0\" end=\"10\"/>\n</script>\n", mFolder.read("script.xml"));
}

TEST_F(BaseTest, aScreenShotOfAnOddHeightIsRefusedAndTheShowGoesOn)
{
    load();
    mDevice->mHeight = 3;
    testing::internal::CaptureStderr();
    runWith({{keyDown(SDLK_s)}, {}});
    EXPECT_EQ("[Tidewheel] A screenshot needs a window of even height (3)\n",
              testing::internal::GetCapturedStderr());
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

TEST_F(BaseTest, aPausedShowGoesOnWhereItStood)
{
    load("<time start=\"5\"/>");
    runWith({{keyDown(SDLK_SPACE)}, {}, {keyDown(SDLK_SPACE)}});
    ASSERT_EQ(4u, frames());
    EXPECT_EQ(mProbe.mTimes[0], mProbe.mTimes[1]);
    EXPECT_LE(5.0f, mProbe.mTimes[0]);
    EXPECT_NEAR(mProbe.mTimes[1], mProbe.mTimes[2], 0.5);
    EXPECT_LE(mProbe.mTimes[2], mProbe.mTimes[3]);
}

TEST_F(BaseTest, theClockFollowsTheStreamWhenItSeeks)
{
    mFolder.write("track.wav", silentWave()); // a tenth of a second
    load("<music file=\"track.wav\"/>");
    mBase->setMusicTime(0.0505f);
    EXPECT_NEAR(0.050f, mBase->getMusicTime(), 0.04f);
    EXPECT_EQ(0.0505f, mBase->mPauseTime);

    // Behind its end the stream stays at the end, and the clock with it.
    mBase->setMusicTime(60.0f);
    EXPECT_LT(mBase->getMusicTime(), 1.0f);
    mBase->setMusicTime(1e30f);
    EXPECT_LT(mBase->getMusicTime(), 1.0f);
}

} // namespace
