#include "script_loadxml.h"
#include "script_savexml.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

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

// The document that the entries make, written.
std::string writtenDocument(ScriptEngine& engine)
{
    Xml::XmlParser document;
    document.setName("script");
    Xml::Iterator it = document.createIterator("");
    for (Script::Effect* effect : engine.mEffects) SaveXML().saveEffect(it, effect);
    std::string text;
    document.write(text, "\t");
    return text;
}

// `text` loaded and saved again, which gives what its document gives.
std::string resaved(const std::string& text)
{
    ScriptEngine engine;
    if (!loadText(text, engine)) return "refused";
    const std::string saved = SaveXML().saveMem(engine);
    EXPECT_TRUE(saved == writtenDocument(engine));
    return saved;
}

const std::string SAVED = R"(<script>
	<effect name="clear" start="0" end="12.5">
		<trigger start="0" name="color" value="000000255"/>
		<trigger start="0.1000000014901161193847656" name="" value="" repeat="4" delay="0.5"/>
	</effect>
	<effect name="sorrel" start="12.5" end="30">
		<spline name="y" type="smooth" timescale="1" timeoffset="0" valuescale="1" valueoffset="0">
			<key time="0" value="0"/>
			<key time="2.5" value="1"/>
		</spline>
		<effect name="inner" start="-1" end="2">
			<effect name="innermost" start="0" end="1"/>
		</effect>
		<effect name="second" start="0" end="1"/>
	</effect>
	<effect name="ball" state="off" start="30" end="40"/>
</script>
)";

} // namespace

TEST(ScriptFile, handWrittenFileComesBackInTheWritersForm)
{
    EXPECT_EQ(resaved(R"(<?xml version='1.0'?><script author='me'><!-- c --><other/>text
        <effect end=' 4x' name=a state=OFF color=red><effect name=child state=on/>
        <spline type='' timescale='' timeoffset='1e1' valuescale='0' valueoffset='-2'>
        <key value=1/><key time='0x10'/><!-- d --></spline>
        <trigger start=1 delay=4 /><trigger repeat='-3'/><trigger repeat=4 /></effect></script> rest)"),
              R"(<script>
	<effect name="a" start="0" end="4">
		<trigger start="1" name="" value=""/>
		<trigger start="0" name="" value=""/>
		<trigger start="0" name="" value="" repeat="4" delay="0.1000000014901161193847656"/>
		<spline name="" type="" timescale="1" timeoffset="10" valuescale="0" valueoffset="-2">
			<key time="0" value="1"/>
			<key time="16" value="0"/>
		</spline>
		<effect name="child" start="0" end="0"/>
	</effect>
</script>
)");
}

TEST(ScriptFile, loadingAppendsAndFindsTheEnd)
{
    EXPECT_EQ(resaved(SAVED), SAVED);
    EXPECT_EQ(resaved("<script></script>"), "<script>\n</script>\n");
    ScriptEngine engine;
    ASSERT_TRUE(loadText(SAVED, engine));
    EXPECT_EQ(engine.mEndTime, 40.0f);
    EXPECT_EQ(engine.mEffects[0]->mTriggers[0]->mDelay, 0.0f);
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
    EXPECT_EQ(engine.mEffects.back()->mName, "kept");
    EXPECT_EQ(engine.mEndTime, 0.0f);
}

TEST(ScriptFile, entriesOfAnyDepthLoadSaveAndAreFreed)
{
    std::string text = "<script>", end = "</script>";
    for (int i = 0; i < 1000; ++i) text += "<effect>", end = "</effect>" + end;
    const std::string saved = resaved(text + end);
    EXPECT_GT(saved.size(), 2u * 1000 * 500); // one tab for each level
    EXPECT_TRUE(resaved(saved) == saved);
    EXPECT_EQ(resaved(text + "<spline/>" + end), "refused");
}

TEST(ScriptFile, filesAreReadAndWritten)
{
    const std::string name = testing::TempDir() + "script_file_test.xml";
    ScriptEngine engine, again;
    ASSERT_TRUE(loadText(SAVED, engine));
    SaveXML().save(name.c_str(), engine);
    EXPECT_TRUE(LoadXML().load(name.c_str(), again));
    EXPECT_EQ(SaveXML().saveMem(again), SAVED);
    std::remove(name.c_str());
    EXPECT_FALSE(LoadXML().load(name.c_str(), again));
    EXPECT_FALSE(LoadXML().load(testing::TempDir().c_str(), again)); // a folder
    EXPECT_THROW(SaveXML().save(testing::TempDir().c_str(), engine), Xml::XmlException);
    EXPECT_EQ(again.mEffects.size(), 3u);
}
