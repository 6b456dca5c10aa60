// The table of effects against the effects: what it names changes something, what it does not name changes nothing.
// Each effect is sent every name of the table, among many settings of its other inputs, and what it draws is compared.
// And the lists for people, in the README and in docs/effects.md, against the table.

#include "effecttable.h"
#include "score.h"

#include "ball.h"
#include "blood.h"
#include "boolean.h"
#include "circle.h"
#include "clear.h"
#include "crashscene.h"
#include "cubes.h"
#include "effect_testing.h"
#include "fire.h"
#include "flash.h"
#include "greetings.h"
#include "hypno.h"
#include "infinity.h"
#include "lighting.h"
#include "linesscene.h"
#include "meta.h"
#include "overlay.h"
#include "particlesscene.h"
#include "pixels.h"
#include "preball.h"
#include "radialblur.h"
#include "render2texture.h"
#include "sandrift.h"
#include "scenese.h"
#include "sorrelplayer.h"
#include "static.h"
#include "stencil.h"
#include "stencilop.h"
#include "sun.h"
#include "twisterscene.h"

#include <filesystem>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <type_traits>

using Timeline::EffectClass;
using Timeline::EffectTable;
using Timeline::Input;
using Timeline::ValueKind;

namespace
{

using Made = std::unique_ptr<Tidewheel::Effect3D>;

template <class Class> Made make()
{
    return std::make_unique<Class>();
}

// Those that draw without a scene.
const std::map<std::string, Made (*)()> MAKERS = {
    {"Ball", make<Ball>},
    {"Blood", make<Blood>},
    {"Boolean", make<Boolean>},
    {"Circle", make<Circle>},
    {"Clear", make<Clear>},
    {"CrashScene", make<CrashScene>},
    {"Cubes", make<Cubes>},
    {"Fire", make<Fire>},
    {"Flash", make<Flash>},
    {"Greetings", make<Greetings>},
    {"Hypno", make<Hypno>},
    {"Infinity", make<Infinity>},
    {"Lighting", make<Lighting>},
    {"LinesScene", make<LinesScene>},
    {"Overlay", make<Overlay>},
    {"ParticlesScene", make<ParticlesScene>},
    {"Pixels", make<Pixels>},
    {"PreBall", make<PreBall>},
    {"RadialBlur", make<RadialBlur>},
    {"Render2Texture", make<Render2Texture>},
    {"Sandrift", make<Sandrift>},
    {"Scenese", make<Scenese>},
    {"Static", make<Static>},
    {"Stencil", make<Stencil>},
    {"StencilOp", make<StencilOp>},
    {"Sun", make<Sun>},
    {"TwisterScene", make<TwisterScene>},
};

// One input that is sent.
struct Sent
{
    bool isSpline;
    std::string name;
    std::string value;
};

std::string valueFor(const Input& input, int n)
{
    switch (input.kind)
    {
    case ValueKind::COLOR:
        return n % 2 ? "200100050" : "010020030";
    case ValueKind::WORD:
        return input.words[static_cast<std::size_t>(n) % input.words.size()];
    case ValueKind::INTEGER:
        return std::to_string(1 + n % 3);
    default:
        return std::to_string(0.1 + 0.13 * (n % 9));
    }
}

// All that a frame consists of, but for the names that its setup was given.
std::string drawn(Stage& stage, Made (*maker)(), const std::vector<Sent>& inputs)
{
    std::srand(1);
    crashType = 0;
    Infinity::mytime = 0;
    GLuint first = 0;
    glGenTextures(1, &first);
    glDeleteTextures(1, &first);
    const Made effect = maker();
    stage.setup(*effect);
    effect->resetTriggers();
    for (const Sent& input : inputs)
    {
        if (input.isSpline)
            effect->updateSpline(0.2f, input.name, std::stof(input.value));
        else
            effect->executeTrigger(0.2f, input.name, input.value);
    }
    std::srand(2);
    stage.draw(*effect, 0.5f, 0.3f, 0.02f);

    const auto relative = [&](GLuint name) { return name > first ? name - first + 1000000 : name; };
    std::ostringstream text;
    for (const std::string& call : GLRecorder::gl.calls)
    {
        std::istringstream words(call);
        std::string name;
        words >> name;
        GLuint target = 0, object = 0;
        if (name == "glCallList" && words >> object)
            text << name << relative(object);
        else if (name == "glBindTexture" && words >> target >> object)
            text << name << relative(object);
        else
            text << call;
        text << '\n';
    }
    for (const GLRecorder::Primitive& primitive : GLRecorder::gl.primitives)
    {
        text << primitive.mode << ' ' << relative(primitive.texture);
        for (const GLRecorder::Vertex& vertex : primitive.vertices)
        {
            for (const float number : vertex.clip) text << ' ' << number;
            for (const float number : vertex.color) text << ' ' << number;
            for (const float number : vertex.texture) text << ' ' << number;
        }
        text << '\n';
    }
    text << GLRecorder::gl.state.stencilFunction[0];
    return text.str();
}

// All inputs of the table for this effect but one, in a setting of their values.
std::vector<Sent> others(const EffectClass& effect, const Input* without, int setting)
{
    std::vector<Sent> sent;
    int n = setting;
    for (const Input& input : effect.triggers)
        if (&input != without) sent.push_back({false, input.name, valueFor(input, n += 5)});
    for (const Input& input : effect.splines)
        if (&input != without) sent.push_back({true, input.name, valueFor(input, n += 5)});
    return sent;
}

// One of some settings of the other inputs lets the picture depend on what `with` says more than `without`.
bool matters(Stage& stage, const EffectClass& effect, const Input* input, const std::vector<Sent>& without,
             const std::vector<Sent>& with, int settings)
{
    for (int setting = 0; setting < settings; ++setting)
    {
        const std::vector<Sent> ground = others(effect, input, setting);
        std::vector<Sent> before = ground, after = ground;
        before.insert(before.end(), without.begin(), without.end());
        after.insert(after.end(), with.begin(), with.end());
        if (drawn(stage, MAKERS.at(effect.name), before) != drawn(stage, MAKERS.at(effect.name), after)) return true;
    }
    return false;
}

// The names of the table, those that any source of the effects compares with, and some that are nearly right.
std::set<std::string> allNames()
{
    std::set<std::string> names = {"", "Alpha", "COLOR", "alpha "};
    const std::regex comparison("== \"([^\"]*)\"");
    for (const auto& file : std::filesystem::recursive_directory_iterator(std::string(SOURCE_FOLDER) + "/demo"))
    {
        if (file.path().extension() != ".cpp") continue;
        const std::string text = Timeline::readFile(file.path());
        for (std::sregex_iterator match(text.begin(), text.end(), comparison), end; match != end; ++match)
            names.insert((*match)[1]);
    }
    for (const EffectClass& effect : EffectTable::builtIn().classes())
    {
        for (const Input& input : effect.triggers) names.insert(input.name);
        for (const Input& input : effect.splines) names.insert(input.name);
    }
    return names;
}

// The row or section of a document about the effect of that name.
std::string about(const std::string& text, const std::string& begin, const std::string& end)
{
    const std::size_t found = text.find(begin);
    return found == std::string::npos ? "" : text.substr(found, text.find(end, found + begin.size()) - found);
}

} // namespace

TEST(EffectsTable, whatItNamesChangesThePicture)
{
    Stage stage;
    for (const EffectClass& effect : EffectTable::builtIn().classes())
    {
        if (MAKERS.count(effect.name) == 0) continue;
        for (const bool isSpline : {false, true})
            for (const Input& input : isSpline ? effect.splines : effect.triggers)
            {
                std::vector<Sent> first;
                if (input.kind != ValueKind::NONE) first.push_back({isSpline, input.name, valueFor(input, 0)});
                EXPECT_TRUE(matters(stage, effect, &input, first, {{isSpline, input.name, valueFor(input, 7)}}, 12))
                    << effect.name << " " << input.name;
            }
    }
}

TEST(EffectsTable, whatItDoesNotNameChangesNothing)
{
    Stage stage;
    const std::set<std::string> names = allNames();
    for (const EffectClass& effect : EffectTable::builtIn().classes())
    {
        if (MAKERS.count(effect.name) == 0) continue;
        std::vector<Sent> unknown;
        for (const std::string& name : names)
        {
            if (!effect.trigger(name)) unknown.push_back({false, name, "2"});
            if (!effect.spline(name)) unknown.push_back({true, name, "2"});
        }
        EXPECT_FALSE(matters(stage, effect, nullptr, {}, unknown, 2)) << effect.name;
    }
}

// Those that need a scene do not listen at all, but for the height of the camera.
TEST(EffectsTable, sceneEffectsTakeTheHeightAlone)
{
    using NoTrigger = void (Tidewheel::Effect::*)(float, const std::string&, const std::string&);
    using NoSpline = void (Tidewheel::Effect::*)(float, const std::string&, float);
    EXPECT_TRUE((std::is_same<decltype(&Meta::executeTrigger), NoTrigger>::value));
    EXPECT_TRUE((std::is_same<decltype(&Meta::updateSpline), NoSpline>::value));
    EXPECT_TRUE((std::is_same<decltype(&SorrelPlayer::executeTrigger), NoTrigger>::value));
    EXPECT_FALSE((std::is_same<decltype(&SorrelPlayer::updateSpline), NoSpline>::value));
    for (const char* name : {"sorrel", "podium", "meta"})
    {
        const EffectClass* effect = EffectTable::builtIn().find(name);
        ASSERT_TRUE(effect);
        EXPECT_TRUE(effect->triggers.empty());
        EXPECT_EQ(effect->splines.size(), name == std::string("meta") ? 0u : 1u);
    }
}

// The names that `main` registers are those of the table.
TEST(EffectsTable, knowsWhatIsRegistered)
{
    const std::string text = Timeline::readFile(std::string(SOURCE_FOLDER) + "/demo/main.cpp");
    std::vector<std::string> registered;
    const std::string begin = "addEffect(\"";
    for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at + 1))
        registered.push_back(text.substr(at + begin.size(), text.find('"', at + begin.size()) - at - begin.size()));
    std::sort(registered.begin(), registered.end());
    EXPECT_EQ(registered, EffectTable::builtIn().names());
}

TEST(EffectsTable, agreesWithTheReadmeAndTheDescriptions)
{
    const std::string readme = Timeline::readFile(std::string(SOURCE_FOLDER) + "/README.md");
    const std::string docs = Timeline::readFile(std::string(SOURCE_FOLDER) + "/docs/effects.md");
    for (const std::string& name : EffectTable::builtIn().names())
    {
        const std::string row = about(readme, "| `" + name + "` |", "\n");
        ASSERT_NE(row, "") << name;
        std::string heading;
        for (std::size_t at = docs.find("### "); at != std::string::npos; at = docs.find("### ", at + 1))
        {
            const std::string line = docs.substr(at, docs.find('\n', at) - at);
            if ((line + ",").find(" " + name + ",") != std::string::npos) heading = line;
        }
        ASSERT_NE(heading, "") << name;
        const std::string section = about(docs, heading + "\n", "\n### ");
        const EffectClass& effect = *EffectTable::builtIn().find(name);
        std::istringstream lines(section);
        for (std::string line; std::getline(lines, line);)
        {
            std::smatch named;
            if (!std::regex_search(line, named, std::regex("^\\| (trigger|spline) \\| ([^|]*)\\|"))) continue;
            if (line.find("no effect") != std::string::npos || line.find("changes nothing") != std::string::npos)
                continue;
            const std::string names = named[2];
            const std::regex quotes("`([^`]*)`");
            for (std::sregex_iterator match(names.begin(), names.end(), quotes), end; match != end; ++match)
                EXPECT_TRUE(named[1] == "trigger" ? effect.trigger((*match)[1]) : effect.spline((*match)[1]))
                    << name << ": " << line;
        }
        for (const std::vector<Input>* inputs : {&effect.triggers, &effect.splines})
            for (const Input& input : *inputs)
            {
                if (input.name == "*") continue;
                const std::string quoted = "`" + input.name + "`";
                EXPECT_NE(section.find(quoted), std::string::npos) << name << " " << quoted;
                EXPECT_TRUE(row.find(quoted) != std::string::npos || row.find("| as `") != std::string::npos)
                    << name << quoted;
            }
    }
}
