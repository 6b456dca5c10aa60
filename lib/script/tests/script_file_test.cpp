#include "script_loadxml.h"
#include "script_savexml.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

using Script::Effect;
using Script::LoadXML;
using Script::SaveXML;
using Script::ScriptEngine;

namespace
{

// From a block of the exact size, so that the address sanitizer sees a byte read behind it.
bool loadText(const std::string& text, ScriptEngine& engine)
{
    const std::unique_ptr<char[]> block(new char[text.size()]);
    text.copy(block.get(), text.size());
    return LoadXML().loadMem(block.get(), static_cast<long>(text.size()), engine);
}

// `text` loaded and saved again.
std::string resaved(const std::string& text)
{
    ScriptEngine engine;
    if (!loadText(text, engine)) return "refused";
    return SaveXML().saveMem(engine);
}

const std::string cSaved = "<script>\n"
                           "\t<effect name=\"clear\" start=\"0\" end=\"12.5\">\n"
                           "\t\t<trigger start=\"0\" name=\"color\" value=\"000000255\"/>\n"
                           "\t\t<trigger start=\"0.1000000014901161193847656\" name=\"\" value=\"\" repeat=\"4\" "
                           "delay=\"0.1000000014901161193847656\"/>\n"
                           "\t</effect>\n"
                           "\t<effect name=\"sorrel\" start=\"12.5\" end=\"30\">\n"
                           "\t\t<spline name=\"y\" type=\"smooth\" timescale=\"1\" timeoffset=\"0\" valuescale=\"1\" "
                           "valueoffset=\"0\">\n"
                           "\t\t\t<key time=\"0\" value=\"0\"/>\n"
                           "\t\t\t<key time=\"2.5\" value=\"1\"/>\n"
                           "\t\t</spline>\n"
                           "\t\t<effect name=\"inner\" start=\"-1\" end=\"2\">\n"
                           "\t\t\t<effect name=\"innermost\" start=\"0\" end=\"1\"/>\n"
                           "\t\t</effect>\n"
                           "\t\t<effect name=\"second\" start=\"0\" end=\"1\"/>\n"
                           "\t</effect>\n"
                           "\t<effect name=\"ball\" state=\"off\" start=\"30\" end=\"40\"/>\n"
                           "</script>\n";

} // namespace

TEST(ScriptFile, savedBytesStayTheSameThroughLoadingAndSaving)
{
    EXPECT_EQ(resaved(cSaved), cSaved);
    EXPECT_EQ(resaved("<script></script>"), "<script>\n</script>\n");
}

TEST(ScriptFile, handWrittenFileComesBackInTheWritersForm)
{
    EXPECT_EQ(resaved("<?xml version='1.0'?><script author='me'><!-- c --><other/>text"
                      "<effect end=' 4x' name=a state=OFF color=red>"
                      "<effect name=child state=on/>"
                      "<spline type='' timescale='' timeoffset='1e1' valuescale='0' valueoffset='-2'>"
                      "<key value=1/><key time='0x10'/><!-- d --></spline>"
                      "<trigger start=1 delay=4 />"
                      "<trigger start=1 repeat=0/>"
                      "<trigger repeat=3 delay='0'/>"
                      "</effect></script> rest"),
              "<script>\n"
              "\t<effect name=\"a\" start=\"0\" end=\"4\">\n"
              "\t\t<trigger start=\"1\" name=\"\" value=\"\"/>\n"
              "\t\t<trigger start=\"1\" name=\"\" value=\"\"/>\n"
              "\t\t<trigger start=\"0\" name=\"\" value=\"\" repeat=\"3\" delay=\"0\"/>\n"
              "\t\t<spline name=\"\" type=\"\" timescale=\"1\" timeoffset=\"10\" valuescale=\"0\" valueoffset=\"-2\">\n"
              "\t\t\t<key time=\"0\" value=\"1\"/>\n"
              "\t\t\t<key time=\"16\" value=\"0\"/>\n"
              "\t\t</spline>\n"
              "\t\t<effect name=\"child\" start=\"0\" end=\"0\"/>\n"
              "\t</effect>\n"
              "</script>\n");
}

TEST(ScriptFile, repeatDecidesAboutTheDelay)
{
    ScriptEngine engine;
    ASSERT_TRUE(loadText("<script><effect><trigger repeat='4'/><trigger delay='4'/><trigger repeat='-1' delay='2'/>"
                         "</effect></script>",
                         engine));
    const auto& triggers = engine.mEffects[0]->mTriggers;
    EXPECT_EQ(triggers[0]->mRepeat, 4);
    EXPECT_EQ(triggers[0]->mDelay, 0.1f);
    EXPECT_EQ(triggers[1]->mRepeat, 1);
    EXPECT_EQ(triggers[1]->mDelay, 0.0f);
    EXPECT_EQ(triggers[2]->mRepeat, -1);
    EXPECT_EQ(triggers[2]->mDelay, 2.0f);
}

TEST(ScriptFile, loadingAppendsAndFindsTheEnd)
{
    ScriptEngine engine;
    ASSERT_TRUE(loadText(cSaved, engine));
    EXPECT_EQ(engine.mEndTime, 40.0f);
    EXPECT_TRUE(engine.mEffects[0]->mEnabled);
    EXPECT_FALSE(engine.mEffects[2]->mEnabled);
    EXPECT_EQ(engine.mEffects[1]->mSplines[0]->mMax, 1.0f); // recalculated
    ASSERT_TRUE(loadText("<script><effect end='50'/></script>", engine));
    EXPECT_EQ(engine.mEffects.size(), 4u);
    EXPECT_EQ(engine.mEndTime, 50.0f);
}

TEST(ScriptFile, refusalsLeaveWhatWasRead)
{
    ScriptEngine engine;
    EXPECT_FALSE(loadText("<demo><effect end='5'/></demo>", engine));
    EXPECT_TRUE(engine.mEffects.empty());
    EXPECT_FALSE(loadText("<script><effect name='kept' end='5'/><effect><effect/><effect><spline/></effect></effect>"
                          "<effect/></script>",
                          engine));
    ASSERT_EQ(engine.mEffects.size(), 1u);
    EXPECT_EQ(engine.mEffects[0]->mName, "kept");
    EXPECT_EQ(engine.mEndTime, 0.0f);
}

TEST(ScriptFile, everyPrefixIsASyntaxError)
{
    const std::string whole = cSaved.substr(0, cSaved.size() - 1); // without the last newline
    for (std::size_t length = 0; length < whole.size(); ++length)
    {
        ScriptEngine engine;
        EXPECT_THROW(loadText(whole.substr(0, length), engine), Xml::XmlException) << length;
        EXPECT_TRUE(engine.mEffects.empty());
    }
}

TEST(ScriptFile, syntaxErrorTellsThePlace)
{
    ScriptEngine engine;
    try
    {
        loadText("<script>\n\t<effect start=1.5/>\n</script>", engine);
        FAIL();
    }
    catch (const Xml::XmlException& error)
    {
        EXPECT_STREQ(error.what(), "(error at line 2, col 21); '=' expected! (when reading tag at 1:9)");
    }
    EXPECT_THROW(LoadXML().loadMem("", -1, engine), Xml::XmlException);
}

TEST(ScriptFile, entriesOfAnyDepthLoadSaveAndAreFreed)
{
    std::string text = "<script>";
    for (int i = 0; i < 3000; ++i) text += "<effect>";
    for (int i = 0; i < 3000; ++i) text += "</effect>";
    const std::string saved = resaved(text + "</script>");
    EXPECT_GT(saved.size(), 2u * 3000 * 1500); // one tab for each level
    EXPECT_TRUE(resaved(saved) == saved);
    ScriptEngine engine;
    std::string broken = "<script>";
    for (int i = 0; i < 100000; ++i) broken += "<effect>";
    broken += "<spline/>";
    for (int i = 0; i < 100000; ++i) broken += "</effect>";
    EXPECT_FALSE(loadText(broken + "</script>", engine));
}

TEST(ScriptFile, filesAreReadAndWritten)
{
    const std::string name = testing::TempDir() + "script_file_test.xml";
    ScriptEngine engine, again;
    ASSERT_TRUE(loadText(cSaved, engine));
    SaveXML().save(name.c_str(), engine);
    EXPECT_TRUE(LoadXML().load(name.c_str(), again));
    EXPECT_EQ(SaveXML().saveMem(again), cSaved);
    std::remove(name.c_str());
    EXPECT_FALSE(LoadXML().load(name.c_str(), again));
    EXPECT_FALSE(LoadXML().load(testing::TempDir().c_str(), again)); // a folder
    EXPECT_THROW(SaveXML().save(testing::TempDir().c_str(), engine), Xml::XmlException);
    EXPECT_EQ(again.mEffects.size(), 3u);
}
