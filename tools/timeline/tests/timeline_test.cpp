// Scripts in, findings, differences and changed scripts out.

#include "difference.h"
#include "edits.h"
#include "grid.h"
#include "match.h"
#include "numbers.h"
#include "scriptcheck.h"
#include "selection.h"
#include "showcheck.h"
#include "timemap.h"
#include "writer.h"

#include "script_loadxml.h"
#include "script_savexml.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <limits>

using namespace Timeline;

namespace
{

// Enough that a script has no finding: the picture is cleared, and something draws.
std::string whole(const std::string& entries)
{
    return "<script>\n<effect name=\"clear\" start=\"0\" end=\"9\"/><effect name=\"twister\" start=\"0\" "
           "end=\"9\"/>\n" +
           entries + "\n</script>\n";
}

std::string codes(const std::string& text)
{
    std::string result;
    for (const Finding& finding : checkScript(text, "s", EffectTable::builtIn()))
        result += (result.empty() ? "" : " ") + std::string(finding.severity == Severity::ERROR ? "!" : "") +
                  finding.code + ":" + std::to_string(finding.line);
    return result;
}

std::string entry(const std::string& inside)
{
    return whole("<effect name='static' start='1' end='5'>" + inside + "</effect>");
}

std::string spline(const std::string& inside)
{
    return whole("<effect name='sun' start='1' end='5'><spline name='base' " + inside + "</spline></effect>");
}

std::string keys(const std::string& inside)
{
    return spline("type='linear'>" + inside);
}

struct Case
{
    std::string text;
    std::string found; // "!" before an error; code and line
};

std::string shifted(const std::string& text, double from, double to, double by, bool force = false)
{
    const Score score(text, "s");
    Edits edits(score.document());
    mapTimes(score, edits, shiftMap(from, to, by), force);
    return edits.apply();
}

const double END = std::numeric_limits<double>::infinity();

std::string told(const std::string& before, const std::string& after)
{
    std::string text;
    for (const Difference& difference : differences(Score(before, "a"), Score(after, "b")))
        text += difference.text + "\n";
    return text;
}

} // namespace

// Each code once, with the nearest script that has no finding beside it.
TEST(Check, findsEachMistakeAndNotItsNeighbour)
{
    const std::vector<Case> cases = {
        {whole(""), ""},
        {"<script><effect name=\"clear\"", "!syntax:1"},
        {"<script>\n<effect name='sun' end='1'>\n</efect>\n</script>", "!syntax:3"},
        {"<script>\n<effect name='sun' end='1'>\n<!-- > -->\n</script>", "!syntax:4"},
        {"<show></show>", "!root:1"},
        {spline("type='linear'>"), "!no-keys:3"},
        {keys("<key/>"), ""},
        {"<script><effect name='clear'/></script>", "!no-end:1 never-active:1"},
        {whole("<effect name='claer' start='0' end='1'/>"), "!unknown-effect:3"},
        {whole("<effect name='claer' state='off' start='0' end='1'/>"), "unknown-effect:3"},
        {entry("<trigger name='siez' value='1'/>"), "unknown-trigger:3"},
        {entry("<trigger name='size' value='1'/>"), ""},
        {whole("<effect name='cubes' end='1'><trigger name='x'/></effect>"), ""},
        {whole("<effect name='sun' end='1'><spline name='bse' type='linear'><key/></spline></effect>"),
         "unknown-spline:3"},
        {whole("<effect name='clear' end='1'><trigger name='color' value='00000'/></effect>"), "!bad-value:3"},
        {whole("<effect name='clear' end='1'><trigger name='color' value='000000'/></effect>"), "odd-value:3"},
        {whole("<effect name='clear' end='1'><trigger name='color' value='000256000'/></effect>"), "odd-value:3"},
        {whole("<effect name='clear' end='1'><trigger name='color' value='000255000'/></effect>"), ""},
        {whole("<effect name='stencilop1' end='1'><trigger name='mode' value='exlude'/></effect>"), "odd-value:3"},
        {entry("<trigger name='size' value='1,5'/>"), "odd-value:3"},
        {entry("<trigger name='size' value=''/>"), "odd-value:3"},
        {entry("<trigger name='size' value='65'/>"), "odd-value:3"},
        {entry("<trigger name='size' value='64'/>"), ""},
        {entry("<trigger name='size' value='1' start='0,5'/>"), "odd-value:3"},
        {entry("<trigger name='size' value='1' repeat='2.5' delay='1'/>"), "odd-value:3"},
        {keys("<key value='101'/>"), "odd-value:3"},
        {spline("type='linear' valuescale='2'><key value='50'/>"), ""},
        {spline("type='linear' timescale='0'><key/>"), "odd-value:3"},
        {spline("type='liner'><key/>"), "unknown-type:3"},
        {spline("><key/>"), "unknown-type:3"},
        {keys("<key time='2'/><key time='1'/>"), "unsorted-keys:3"},
        {keys("<key time='1'/><key time='1'/>"), "equal-keys:3"},
        {keys("<key time='1'/><key time='1.01'/>"), ""},
        {whole("<effect name='sun' start='2' end='2'/>"), "never-active:3"},
        {whole("<effect name='sun' start='-2' end='0'/>"), "never-active:3"},
        {whole("<effect name='sun' start='-2' end='0.1'/>"), ""},
        {whole("<effect name='sun' start='1' end='3'><effect name='fire' start='2' end='4'/></effect>"),
         "never-active:3"},
        {entry("<trigger name='falloff' start='4' repeat='17' delay='0'/>"), "late-trigger:3"},
        {entry("<trigger name='falloff' start='3.9'/>"), ""},
        {entry("<trigger name='falloff' repeat='0'/>"), "no-firing:3"},
        {entry("<trigger name='falloff' delay='1'/>"), "lost-delay:3"},
        {entry("<trigger name='falloff' repeat='2' delay='1'/>"), ""},
        {entry("<trigger name='falloff' repeat='17' delay='0'/>"), "trigger-flood:3"},
        {entry("<trigger name='falloff' repeat='16' delay='0'/>"), ""},
        {entry("<trigger name='falloff' repeat='2000000000' delay='0'/>"), "!trigger-flood:3"},
        {whole("<effect name='sun' state='OFF' end='1'/>"), "state-text:3"},
        {whole("<effect name='sun' state='on' end='1'/>"), ""},
        {whole("<effect name='sun' end='3'><effect name='static' end='1'><trigger name='falloff'/></effect></effect>"),
         "nested-triggers:3"},
        {whole("<effect name='sun' state='off' end='3'><effect name='fire' end='1'/></effect>"), "nested-parent:3"},
        {whole("<effect name='sun' end='3'><effect name='fire' end='1'/></effect>"), ""},
        {whole("<efect/>"), "unknown-tag:3"},
        {entry("<key/>"), "unknown-tag:3"},
        {entry("text"), "unknown-tag:3"},
        {whole("<effect name='sun' end='1' stat='off'/>"), "unknown-attribute:3"},
        {entry("<trigger name='falloff' value='a\"b'/>"), "quote:3"},
        {"<script>\n<effect name='sun' end='3'/>\n<effect name='clear' start='1' end='2'/></script>",
         "no-clear:1 no-clear:3"},
        {"<script>\n<effect name='clear' end='3'/>\n<effect name='sun' end='2'/></script>", "gap:3"},
        {whole("<effect name='flash' end='1'><trigger name='r' value='1'/></effect>\n<effect name='flash' start='2' "
               "end='3'/>"),
         "inherited:4"},
        {whole("<effect name='flash' end='1'><trigger name='r' value='1'/></effect>\n"
               "<effect name='flash' start='2' end='3'><trigger name='r' value='1'/></effect>"),
         ""},
        // The first entry goes on and speaks again after a seek.
        {whole("<effect name='flash' end='3'><trigger name='r' value='1'/></effect>\n<effect name='flash' start='2' "
               "end='3'/>"),
         ""},
        {whole("<!-- timeline: allow never-active: later -->\n<effect name='sun'/>\n<effect name='sun'/>"),
         "never-active:5"},
        {"<!-- timeline: allow gap, no-clear -->\n<script><effect name='lines' state='off' end='1'/></script>", ""},
    };
    for (const Case& test : cases) EXPECT_EQ(codes(test.text), test.found) << test.text;
}

// The manual's example of each code has the finding, first of all.
TEST(Check, findsWhatTheManualShows)
{
    const std::string manual = readFile(std::string(SOURCE_FOLDER) + "/docs/timeline.md");
    const std::string heading = "\n### `";
    int examples = 0;
    for (std::size_t at = manual.find(heading); at != std::string::npos; at = manual.find(heading, at + 1))
    {
        const std::size_t begin = at + heading.size();
        const std::string code = manual.substr(begin, manual.find('`', begin) - begin);
        const std::string section = manual.substr(begin, manual.find(heading, begin) - begin);
        const std::size_t example = section.find("\n    <");
        if (example == std::string::npos) continue;
        const std::string text = section.substr(example + 5, section.find('\n', example + 1) - example - 5);
        const bool isWhole = text.compare(0, 7, "<script") == 0 || text.compare(0, 5, "<show") == 0;
        const std::string found = codes(isWhole ? text : whole(text));
        EXPECT_NE(("!" + found).find("!" + code + ":"), std::string::npos) << code << " gives " << found;
        ++examples;
    }
    EXPECT_EQ(examples, 26);
}

TEST(Check, saysWhenAndWhatMayHaveBeenMeant)
{
    const std::string text =
        whole("<effect name='sun' start='2' end='4'><spline name='aplha' type='linear'><key/></spline></effect>");
    const std::vector<Finding> found = checkScript(text, "s", EffectTable::builtIn());
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].text, "sun 2-4: spline 'aplha' means nothing to this effect; did you mean 'alpha'?");
    EXPECT_EQ(found[0].time, 2.0);
}

// A show whose one effect reads a picture and whose other one reads a scene description.
TEST(Check, looksAtConfigurationPicturesAndScenes)
{
    const EffectTable table("<effects><effect class='A' shows='a' draws='yes' clears='yes' seek='same'>"
                            "<name name='a' reads='scene.xml'/><file name='a.png'/></effect></effects>",
                            "table");
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("timeline_test." + std::to_string(getpid()));
    std::filesystem::create_directories(folder / "data");
    const std::string picture = readFile(std::string(SOURCE_FOLDER) + "/lib/tidewheel/assets/tidewheel_logo.png");
    const std::string configuration = "<demo><window width='8' height='6' type='opengl'/><script file='s.xml'/></demo>";
    const std::string scene = "<x><scene filename='a.y3d'/></x>";
    const auto look = [&](const std::string& config, const std::string& image, const std::string& description) {
        for (const auto& [name, text] :
             {std::pair("tidewheel.xml", config), {"data/a.png", image}, {"scene.xml", description}})
        {
            std::filesystem::remove(folder / name);
            if (!text.empty()) writeFile((folder / name).string(), text);
        }
        writeFile((folder / "data/s.xml").string(), "<script></script>");
        Show show(folder.string());
        std::string found;
        for (const Finding& finding : checkShow(show, table)) found += finding.code + " ";
        return found;
    };
    const std::string noScene = "missing-file "; // of the one that the description names
    EXPECT_EQ(look(configuration, picture, scene), noScene);
    EXPECT_EQ(look(configuration, "", scene), "missing-file " + noScene);
    EXPECT_EQ(look(configuration, picture.substr(0, 99), scene), "bad-picture " + noScene);
    EXPECT_EQ(look(configuration, picture, ""), "missing-file ");
    EXPECT_EQ(look(configuration, picture, "<x><cene/></x>"), "unknown-tag root ");
    EXPECT_EQ(look(configuration, picture, "<x"), "syntax ");
    EXPECT_EQ(look("<dmeo></dmeo>", picture, scene), "root " + noScene);
    EXPECT_EQ(look("<demo><script file='s.xml'/><time strat='1'/><hud mini='yes'/></demo>", picture, scene),
              "unknown-attribute odd-value root " + noScene);
    EXPECT_EQ(
        look("<demo><window width='0' height='6' type='opengl'/><script file='s.xml'/><music file='m.ogg'/></demo>",
             picture, scene),
        "bad-value missing-file " + noScene);
    std::filesystem::remove_all(folder);
}

TEST(Shift, movesStretchesAndCutsInTwo)
{
    const std::string before =
        "<script> <!-- as it is -->\n"
        "\t<effect  start='0.50' end=\"8\" name='ball'>\n"
        "\t\t<trigger start=\"1\" name=\"move\" repeat=\"4\" delay=\"2\"/>\n"
        "\t\t<spline name=\"size\" type=\"linear\" timescale=\"2\" timeoffset=\"0.5\">\n"
        "\t\t\t<key time='01.0' value='1'/><key time='2' value='2'/>\n"
        "\t\t</spline>\n"
        "\t\t<effect name=\"sun\" start=\"4\" end=\"5\"/>\n"
        "\t</effect>\n"
        "\t<effect name=\"over\" start=\"0\" end=\"4.1\"><spline><key time=\"9\"/></spline></effect>\n"
        "\t<effect name=\"sun\" start=\"4.1\"  end=\"5\" odd='1'/>\n"
        "</script>\n<!-- behind -->";
    const std::string after =
        "<script> <!-- as it is -->\n"
        "\t<effect  start='0.50' end=\"8.2\" name='ball'>\n"
        "\t\t<trigger start=\"1\" name=\"move\" repeat=\"2\" delay=\"2\"/>\n"
        "\t\t<trigger start=\"5.2\" name=\"move\" value=\"\" repeat=\"2\" delay=\"2\"/>\n"
        "\t\t<spline name=\"size\" type=\"linear\" timescale=\"2\" timeoffset=\"0.5\">\n"
        "\t\t\t<key time='01.0' value='1'/><key time='2.1' value='2'/>\n"
        "\t\t</spline>\n"
        "\t\t<effect name=\"sun\" start=\"4.2\" end=\"5.2\"/>\n"
        "\t</effect>\n"
        "\t<effect name=\"over\" start=\"0\" end=\"4.1\"><spline><key time=\"9\"/></spline></effect>\n"
        "\t<effect name=\"sun\" start=\"4.3\"  end=\"5.2\" odd='1'/>\n"
        "</script>\n<!-- behind -->";
    EXPECT_EQ(shifted(before, 4.1, END, 0.2), after);
}

TEST(Shift, ofAStretchLeavesTheRestAlone)
{
    const std::string before =
        whole("<effect name=\"sun\" start=\"1\" end=\"2\"/><effect name=\"sun\" start=\"2\" end=\"3\"/>");
    EXPECT_EQ(shifted(before, 1, 2, 0.25),
              whole("<effect name=\"sun\" start=\"1.25\" end=\"2.25\"/><effect name=\"sun\" start=\"2\" end=\"3\"/>"));
}

TEST(Shift, backIsRefusedWhereKeysWouldCross)
{
    const std::string text = keys("<key time='1'/><key time='2'/>");
    EXPECT_THROW(shifted(text, 3, END, -1.5), Failure);
    EXPECT_NE(shifted(text, 3, END, -1.5, true).find("<key time='0.5'/>"), std::string::npos);
    EXPECT_NO_THROW(shifted(text, 3, END, -1));
    EXPECT_THROW(shifted(whole("<effect name='sun' start='3' end='4'/>"), 3.5, END, -1), Failure);
}

TEST(Retime, scalesAllTimesAboutItsOrigin)
{
    const Score score(whole("<effect name=\"sun\" start=\"3\" end=\"5\"><trigger start=\"1\" repeat=\"3\"/>"
                            "<spline timeoffset=\"2\"><key time=\"4\"/></spline></effect>"),
                      "s");
    Edits edits(score.document());
    mapTimes(score, edits, tempoMap(120, 60, 1), false);
    EXPECT_NE(edits.apply().find(
                  "<effect name=\"sun\" start=\"5\" end=\"9\"><trigger start=\"2\" repeat=\"3\" delay=\"0.2\"/>"
                  "<spline timeoffset=\"4\"><key time=\"8\"/></spline></effect>"),
              std::string::npos)
        << edits.apply();
}

TEST(Diff, tellsWhatTheMusicAuthorWouldSay)
{
    const std::string before = whole("<effect name='sun' start='1' end='2'/><effect name='cubes' start='5' end='8'>"
                                     "<trigger name='split' start='2' repeat='3' delay='1'/></effect>");
    EXPECT_EQ(told(before, before), "");
    EXPECT_EQ(told(before, format(Score(before, "s"))), "");
    EXPECT_EQ(
        told(before, whole("<effect name='sun' state='off' start='1' end='2'/><effect name='cubes' start='5' end='8'>"
                           "<trigger name='split' start='2' repeat='4' delay='1'/></effect>"
                           "<effect name='cubes' start='8.4' end='9'/>")),
        "`sun` 1-2: off\n`cubes` 5-8: trigger `split` at 7 s: repeat 3 to 4\n`cubes` added at 8.4-9\n");
    EXPECT_EQ(told(before,
                   whole("<effect name='cubes' start='6' end='9'><trigger name='split' start='2' repeat='3' delay='1'/>"
                         "</effect><effect name='sun' start='1' end='2'/>")),
              "`sun` 1-2: layer to above `cubes` 6-9\n`cubes` 5-8: moved by +1 to 6-9\n");
    EXPECT_EQ(told(keys("<key time='1' value='1'/><key time='2' value='2'/>"),
                   keys("<key time='1' value='3'/><key time='3' value='2'/>")),
              "`sun` 1-5: spline `base`: key at 2 s: 1 to 3, key at 3 s: time 2 to 3\n");
}

TEST(Edits, findOneValueByItsPath)
{
    const Score score(
        whole("<effect name='sun' start='1' end='5'><spline name='base'><key/><key value='7'/></spline></effect>"
              "<effect name='sun' start='6' end='7'/>"),
        "s");
    const auto set = [&](const std::string& path, const std::string& value) {
        Edits edits(score.document());
        const Place place = findPlace(score, path);
        edits.setAttribute(*place.node, place.attribute, value);
        return edits.apply();
    };
    EXPECT_NE(set("sun@3/base/key[2]/value", "8.5").find("<key value='8.5'/>"), std::string::npos);
    EXPECT_NE(set("3/base/key[1]/time", "2").find("<key time=\"2\"/>"), std::string::npos);
    for (const char* path :
         {"sun/start", "sun@3", "sun@3/base/key/value", "sun@3/base/key[3]/value", "sun@3/begin", "moon/start"})
        EXPECT_THROW(findPlace(score, path), Failure) << path;
    EXPECT_THROW(set("sun@6/name", "a\"b'c"), Failure);
}

TEST(Edits, takeTheLineEndsOfTheirScript)
{
    std::string text = "<script>\r\n<effect start='0' end='9'>\r\n\t<trigger start='1' repeat='2' delay='4'/>\r\n"
                       "</effect>\r\n</script>\r\n";
    for (int i = 0; i < 2; ++i)
    {
        for (const std::string& written : {shifted(text, 3, END, 1), format(Score(text, "s"))})
            EXPECT_EQ(std::count(written.begin(), written.end(), '\n') * (1 - i),
                      std::count(written.begin(), written.end(), '\r'));
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    }
}

TEST(Grid, isThatOfTheTempoOrOfTheBeats)
{
    EXPECT_EQ(Grid(120, 0.1, "1/8").nearest(0.3), 0.35);
    EXPECT_EQ(Grid(120, 0, "1/1").nearest(3.1), 4.0);
    const Grid uneven({1, 2, 4}, "1/8");
    EXPECT_EQ(uneven.nearest(1.4), 1.5);
    EXPECT_EQ(uneven.nearest(2.9), 3.0);
    EXPECT_EQ(uneven.nearest(0.1), 0.0); // the first beats go on to the front
    EXPECT_EQ(uneven.nearest(5.9), 6.0); // and the last ones to the back
    EXPECT_THROW(Grid({1, 1}, "1/4"), Failure);
    EXPECT_THROW(Grid(120, 0, "1/0"), Failure);
}

TEST(Format, keepsCommentsAndDropsDefaults)
{
    const std::string text =
        "<?xml version='1.0'?><script>\n <!-- two\n      lines --> <effect end='5.000' name='sun' state='on'>\n"
        "<spline valuescale='1.0' type='linear' name='base' ><key value='1.50'/> <!-- here -->\n\n\n"
        "<key time='2' value='x'/></spline><trigger repeat='1' delay='3' name='a' odd='2'></trigger></effect></script>";
    const std::string house =
        "<?xml version='1.0'?>\n<script>\n\t<!-- two\n\t     lines -->\n\t<effect name=\"sun\" end=\"5\">\n"
        "\t\t<spline name=\"base\" type=\"linear\">\n\t\t\t<key value=\"1.5\"/> <!-- here -->\n\n"
        "\t\t\t<key time=\"2\" value=\"x\"/>\n\t\t</spline>\n\t\t<trigger name=\"a\" odd=\"2\"/>\n"
        "\t</effect>\n</script>\n";
    EXPECT_EQ(format(Score(text, "s")), house);
    EXPECT_EQ(format(Score(house, "s")), house);
}

// What Ctrl+S makes of a script, and an edit in between, gets the comments back.
TEST(MergeComments, undoesASaveAndKeepsItsChanges)
{
    const std::string old = "<!-- head -->\n<script>\n\t<!-- ground -->\n\t<effect name=\"clear\" start=\"0.1\" "
                            "end=\"9\"/> <!-- on its line -->\n"
                            "\n\t<!-- light -->\n\t<effect name=\"sun\" start=\"1\" end=\"5\">\n\t\t<!-- wide -->\n"
                            "\t\t<spline name=\"base\" type=\"linear\">\n\t\t\t<key time=\"0\" value=\"1\"/> <!-- "
                            "first -->\n\t\t</spline>\n"
                            "\t</effect>\n\t<!-- end -->\n</script>\n";
    Script::ScriptEngine engine;
    ASSERT_TRUE(Script::LoadXML().loadMem(old.data(), static_cast<long>(old.size()), engine));
    EXPECT_EQ(mergeComments(Score(old, "o"), Score(Script::SaveXML().saveMem(engine), "s")), old);
    engine.mEffects[1]->mEnd = 6.0f;
    std::string changed = old;
    changed.replace(changed.find("end=\"5\""), 7, "end=\"6\"");
    EXPECT_EQ(mergeComments(Score(old, "o"), Score(Script::SaveXML().saveMem(engine), "s")), changed);
}

TEST(Numbers, areTheShortestThatReadBack)
{
    for (const char* text : {"0.1", "120000", "0.00001", "-16777216", "3.4028235e+38", "1e-45", "0.33333334"})
        EXPECT_EQ(shortest(readFloat(text)), text);
}
