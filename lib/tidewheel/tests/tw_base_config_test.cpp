#include "tw_base.h"

#include "tw_hud.h"
#include "tw_minihud.h"
#include "tw_show.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{

const char script[] = "<script><effect name=\"a\" start=\"0\" end=\"10\"/></script>";

// Runs `action` and gives the text of what it throws.
template <typename Action> std::string textOf(Action action)
{
    try
    {
        action();
    }
    catch (const std::exception& exception)
    {
        return exception.what();
    }
    return "";
}

std::unique_ptr<Tidewheel::Base> makeBase(const ShowFolder& folder)
{
    auto base = std::make_unique<Tidewheel::Base>();
    base->addArchive(folder.mPath);
    base->addScreenshotArchive(folder.mPath + "screenshots/");
    return base;
}

TEST(Configuration, settingsAreReadAsTheyStandInTheFile)
{
    ShowFolder folder;
    folder.write("script.xml", script);
    folder.write("other.xml", "<script><effect name=\"b\" end=\"30\"/></script>");
    folder.write("track", "music");
    folder.write("tidewheel.xml", "<demo><time start=\"3\"/><hud mini=\"on\"/><hud mini=\"off\"/>"
                                  "<music file=\"track\" mute=\"on\"/><music file=\"track\" mute=\"ON\"/>"
                                  "<script file=\"script.xml\"/><script file=\"other.xml\"/>"
                                  "<time start=\"12.5x\"/><archive file=\"zip://none\"/><archive/></demo>");
    auto base = makeBase(folder);
    base->load(folder.mPath + "screenshots/");

    EXPECT_EQ(12.5f, base->mStartTime);
    EXPECT_TRUE(base->mMiniHUD->mVisible);
    EXPECT_FALSE(base->mMute);
    EXPECT_TRUE(base->mStream);
    ASSERT_EQ(2u, base->mScriptEngine.mEffects.size());
    EXPECT_EQ("a", base->mScriptEngine.mEffects[0]->mName);
    EXPECT_EQ(30.0f, base->mScriptEngine.mEndTime);
    EXPECT_EQ("other.xml", base->mScriptFile);
    EXPECT_EQ(2u, base->mHUD->mEffectStatus.size());
    EXPECT_EQ(3u, base->mArchives.mArchives.size());
    EXPECT_TRUE(base->mLoaded);
}

TEST(Configuration, isRewrittenByteForByteAtTheEnd)
{
    struct Case
    {
        const char* name;
        const char* before;
        const char* after;
    };
    const Case cases[] = {
        {"missing tags come first, the time before the hud", "<demo>\n  <script file='script.xml'/>\n</demo>",
         "<demo>\n\t<time start=\"0.00\"/>\n\t<hud mini=\"off\"/>\n\t<script file=\"script.xml\"/>\n</demo>\n"},
        {"a missing hud alone comes first", "<demo><time start=\"12.345\"/></demo>",
         "<demo>\n\t<hud mini=\"off\"/>\n\t<time start=\"12.35\"/>\n</demo>\n"},
        {"the first time and hud, but the last value; every music; the rest stays",
         "<?xml version='1.0'?><!-- lost --><demo><!-- kept --><hud a=\"b\"/><hud mini=\"on\"/><time/>"
         "<time start=\"2\"/><music file=\"track\"/><music file=\"track\" mute=\"on\"/>some text<x y=\"z\"/>"
         "</demo>",
         "<?xml version=\"1.0\"?>\n\n<demo>\n\t<!-- kept -->\n\t<hud a=\"b\" mini=\"on\"/>\n\t<hud mini=\"on\"/>\n"
         "\t<time start=\"2.00\"/>\n\t<time start=\"2\"/>\n\t<music file=\"track\" mute=\"on\"/>\n"
         "\t<music file=\"track\" mute=\"on\"/>\n\tsome text\n\t<x y=\"z\"/>\n</demo>\n"},
        {"a start that is no point in time is zero", "<demo><hud/><time start=\"nan\"/></demo>",
         "<demo>\n\t<hud mini=\"off\"/>\n\t<time start=\"0.00\"/>\n</demo>\n"},
        {"another root is left alone", "<show></show>", "<show></show>"},
    };
    for (const Case& c : cases)
    {
        ShowFolder folder;
        folder.write("script.xml", script);
        folder.write("track", "music");
        folder.write("tidewheel.xml", c.before);
        auto base = makeBase(folder);
        base->load("");
        base.reset();
        EXPECT_EQ(c.after, folder.read("tidewheel.xml")) << c.name;
    }
}

TEST(Configuration, aWindowIsAnnouncedBeforeItsSizeIsRefused)
{
    ShowFolder folder;
    folder.write("tidewheel.xml", "<demo><window caption=\"show\" width=\"640\" height=\"0\"/></demo>");
    auto base = makeBase(folder);
    testing::internal::CaptureStdout();
    EXPECT_EQ("[Tidewheel] The window in 'tidewheel.xml' needs a width and a height from 1 to 16384 (640x0)",
              textOf([&] { base->load(""); }));
    EXPECT_EQ("Opening window ['show'][640x0][Windowed][Software]\n", testing::internal::GetCapturedStdout());
}

// Reading goes through all archives, writing into the first: the copy wins at the next start.
TEST(Configuration, isWrittenIntoTheFirstArchive)
{
    ShowFolder folder;
    std::filesystem::create_directory(folder.mPath + "data");
    folder.write("data/tidewheel.xml", "<demo></demo>");
    auto base = makeBase(folder);
    base->addArchive(folder.mPath + "data/");
    base->load("");
    base->mStartTime = 7.0f;
    base.reset();
    EXPECT_EQ("<demo></demo>", folder.read("data/tidewheel.xml"));
    EXPECT_NE(std::string::npos, folder.read("tidewheel.xml").find("<time start=\"7.00\"/>"));
}

TEST(Configuration, thatIsGoneAtTheEndIsReported)
{
    ShowFolder folder;
    folder.write("tidewheel.xml", "<demo></demo>");
    EXPECT_EQ("[Tidewheel] Could not load 'tidewheel.xml'", textOf([&] {
                  Tidewheel::Base base;
                  base.addArchive(folder.mPath);
                  base.load("");
                  std::filesystem::remove(folder.mPath + "tidewheel.xml");
              }));

    // Another failure on its way comes through, with this one on standard error.
    folder.write("tidewheel.xml", "<demo></demo>");
    testing::internal::CaptureStderr();
    EXPECT_EQ("the show", textOf([&] {
                  Tidewheel::Base failing;
                  failing.addArchive(folder.mPath);
                  failing.load("");
                  std::filesystem::remove(folder.mPath + "tidewheel.xml");
                  throw std::runtime_error("the show");
              }));
    EXPECT_EQ("Error: [Tidewheel] Could not load 'tidewheel.xml'\n", testing::internal::GetCapturedStderr());
}

} // namespace
