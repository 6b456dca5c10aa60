#include "showcheck.h"

#include "silentoutput.h"

#include "numbers.h"

#include "am_exception.h"
#include "y3d_exception.h"
#include "y3d_manager.h"
#include "y3d_scene.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace Timeline
{

namespace
{

// The attributes of the configuration's tags, each with the words that its value may be, the last one being what any
// other text means; "#" for a number, nothing for any text.
const std::map<std::string, std::map<std::string, std::vector<std::string>>> CONFIGURATION = {
    {"time", {{"start", {"#"}}}},
    {"hud", {{"mini", {"on", "off"}}}},
    {"window",
     {{"caption", {}},
      {"width", {"#"}},
      {"height", {"#"}},
      {"mode", {"windowed", "fullscreen"}},
      {"type", {"opengl", "software"}}}},
    {"archive", {{"file", {}}}},
    {"music", {{"file", {}}, {"mute", {"on", "off"}}}},
    {"script", {{"file", {}}}},
    {"videodump",
     {{"name", {}}, {"width", {"#"}}, {"height", {"#"}}, {"fps", {"#"}}, {"fpsbase", {"#"}}, {"frameskip", {"#"}}}},
};

template <class Map> std::vector<std::string> keysOf(const Map& map)
{
    std::vector<std::string> keys;
    for (const auto& pair : map) keys.push_back(pair.first);
    return keys;
}

class ShowChecker
{
public:
    ShowChecker(Show& show, const EffectTable& effects) : mShow(show), mEffects(effects) {}

    std::vector<Finding> run()
    {
        Findings findings(mShow.labelOf(CONFIGURATION_FILE), mShow.configuration());
        checkConfiguration(findings);
        checkEffectFiles(findings);
        std::vector<Finding> all = findings.take();
        all.insert(all.end(), std::make_move_iterator(mScenes.begin()), std::make_move_iterator(mScenes.end()));
        return all;
    }

private:
    void checkConfiguration(Findings& findings)
    {
        const Node& root = mShow.configuration().root();
        if (root.name != "demo")
        {
            findings.add(Severity::ERROR, root, "root",
                         "the root is <" + root.name + ">, not <demo>: nothing is set up");
            return;
        }
        std::set<std::string> seen;
        for (const std::unique_ptr<Node>& node : root.children)
        {
            if (node->kind != Node::Kind::TAG) continue;
            const auto rule = CONFIGURATION.find(node->name);
            if (rule == CONFIGURATION.end())
            {
                findings.add(Severity::WARNING, *node, "unknown-tag",
                             "<" + node->name + "> is not read" + suggestion(node->name, keysOf(CONFIGURATION)));
                continue;
            }
            for (const Attribute& attribute : node->attributes)
                checkAttribute(findings, *node, attribute, rule->second);
            if (!seen.insert(node->name).second && (node->name == "window" || node->name == "music"))
                findings.add(Severity::WARNING, *node, "odd-value",
                             "a second <" + node->name + "> takes the place of the first");
            if ((node->name == "music" || node->name == "script") && mShow.read(node->value("file")).isNull())
                findings.add(Severity::ERROR, *node, "missing-file",
                             node->name + " '" + node->value("file") +
                                 "' is in no archive: the program does not start");
            if (node->name == "window" && !(isSize(node->value("width")) && isSize(node->value("height"))))
                findings.add(Severity::ERROR, *node, "bad-value", "the window needs a width and a height of 1 or more");
            if (node->name == "window" && node->value("type") != "opengl")
                findings.add(Severity::ERROR, *node, "bad-value",
                             "a window of type '" + node->value("type") + "' has no OpenGL: effects cannot draw in it");
        }
        for (const char* tag : {"window", "script"})
            if (seen.count(tag) == 0)
                findings.add(Severity::ERROR, root, "root", std::string("there is no <") + tag + ">: nothing is shown");
    }

    static bool isSize(const std::string& text) { return readInt(text) >= 1; }

    static void checkAttribute(Findings& findings, const Node& node, const Attribute& attribute,
                               const std::map<std::string, std::vector<std::string>>& rule)
    {
        const auto words = rule.find(attribute.name);
        if (words == rule.end())
            findings.add(Severity::WARNING, node, "unknown-attribute",
                         "'" + attribute.name + "' of <" + node.name + "> is not read" +
                             suggestion(attribute.name, keysOf(rule)));
        else if (words->second == std::vector<std::string>{"#"})
        {
            if (!attribute.value.empty() && !isNumber(attribute.value))
                findings.add(Severity::WARNING, node, "odd-value",
                             attribute.name + " '" + attribute.value + "' is read as " +
                                 shortest(readFloat(attribute.value)));
        }
        else if (!words->second.empty() && !attribute.value.empty() &&
                 std::count(words->second.begin(), words->second.end(), attribute.value) == 0)
            findings.add(Severity::WARNING, node, "odd-value",
                         attribute.name + " '" + attribute.value + "' means '" + words->second.back() + "'" +
                             suggestion(attribute.value, words->second));
    }

    void checkEffectFiles(Findings& findings)
    {
        std::set<std::string> done;
        for (const std::string& name : mEffects.names())
        {
            for (const std::string& file : mEffects.find(name)->files)
                if (done.insert(file).second) checkPicture(findings, file, name);
            const std::string scene = mEffects.ownFile(name);
            if (!scene.empty() && done.insert(scene).second) checkScene(findings, scene, name);
        }
    }

    void checkPicture(Findings& findings, const std::string& file, const std::string& user)
    {
        const Node& root = mShow.configuration().root();
        const AM::File data = mShow.read(file);
        if (data.isNull())
        {
            findings.add(Severity::ERROR, root, "missing-file",
                         "'" + file + "', which '" + user + "' reads, is in no archive: the program does not start");
            return;
        }
        try
        {
            mPictures.loadImage(file, data, true);
        }
        catch (const AM::Exception& error)
        {
            const std::string path = mShow.pathOf(file);
            findings.add(Severity::ERROR, root, "bad-picture",
                         "'" + file + "'" + (path.empty() ? "" : " (" + path + ")") + ", which '" + user +
                             "' reads, is refused: " + error.what());
        }
    }

    void checkScene(Findings& findings, const std::string& file, const std::string& user)
    {
        const AM::File data = mShow.read(file);
        if (data.isNull())
        {
            findings.add(Severity::ERROR, mShow.configuration().root(), "missing-file",
                         "'" + file + "', which '" + user + "' reads, is in no archive: the program does not start");
            return;
        }
        std::vector<Finding> found = checkDescription(file, mShow.readText(file));
        mScenes.insert(mScenes.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
    }

    std::vector<Finding> checkDescription(const std::string& file, const std::string& text)
    {
        const std::string label = mShow.labelOf(file);
        try
        {
            const Document document(text, false, label);
            Findings findings(label, document);
            const Node* scene = nullptr;
            for (const std::unique_ptr<Node>& node : document.root().children)
            {
                if (node->kind != Node::Kind::TAG) continue;
                if (node->name != "scene" || scene)
                    findings.add(Severity::WARNING, *node, "unknown-tag",
                                 node->name == "scene" ? "only the first <scene> is read"
                                                       : "<" + node->name + "> is not read");
                else
                    scene = node.get();
            }
            if (!scene)
                findings.add(Severity::ERROR, document.root(), "root",
                             "there is no <scene>: the program does not start");
            else
                checkSceneTag(findings, *scene);
            return findings.take();
        }
        catch (const SyntaxError& error)
        {
            Findings findings(label);
            findings.add(Severity::ERROR, error.line(), "syntax", error.text());
            return findings.take();
        }
    }

    void checkSceneTag(Findings& findings, const Node& scene)
    {
        const std::vector<std::string> known = {"filename", "texturepath", "name"};
        for (const Attribute& attribute : scene.attributes)
            if (std::count(known.begin(), known.end(), attribute.name) == 0)
                findings.add(Severity::WARNING, scene, "unknown-attribute",
                             "'" + attribute.name + "' of <scene> is not read" + suggestion(attribute.name, known));
        const std::string& file = scene.value("filename");
        const AM::File data = mShow.read(file);
        if (data.isNull())
        {
            findings.add(Severity::ERROR, scene, "missing-file",
                         "'" + file + "' is in no archive: the program does not start");
            return;
        }
        try
        {
            y3d::Manager manager;
            {
                const SilentOutput silence;
                manager.load(data->data, static_cast<int>(data->length));
            }
            std::vector<std::string> names;
            for (int i = 0; i < manager.getNumScenes(); ++i) names.push_back(manager.getSceneAt(i)->getName());
            if (names.empty())
                findings.add(Severity::ERROR, scene, "bad-value",
                             "'" + file + "' holds no scene: the program does not start");
            else if (!manager.getScene(scene.value("name")))
                findings.add(Severity::WARNING, scene, "odd-value",
                             "'" + file + "' has no scene '" + scene.value("name") + "': its first, '" + names.front() +
                                 "', is shown" + suggestion(scene.value("name"), names));
        }
        catch (const y3d::Exception& error)
        {
            findings.add(Severity::ERROR, scene, "bad-value", "'" + file + "' is refused: " + error.what());
        }
    }

    Show& mShow;
    const EffectTable& mEffects;
    AM::ImageManager mPictures;
    std::vector<Finding> mScenes;
};

} // namespace

std::vector<Finding> checkShow(Show& show, const EffectTable& effects)
{
    return ShowChecker(show, effects).run();
}

} // namespace Timeline
