#include "scriptcheck.h"

#include "numbers.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <utility>

namespace Timeline
{

namespace
{

const double FRAME = 1.0 / 60.0; // seconds
const double FLOOD = 16;         // firings of a trigger in one frame that nobody means
const double STANDSTILL = 1e7;   // firings that hold the show up for many frames
const double NO_MATTER = 0.001;  // seconds; a gap that is shorter is a matter of rounding

const std::vector<std::string> SPLINE_TYPES = {"square", "linear", "bezier", "smooth"};

// What the player reads: tags with their attributes and the tags that may lie in them.
struct TagRule
{
    std::vector<std::string> attributes;
    std::vector<std::string> numbers; // those of them that are numbers
    std::vector<std::string> children;
};

const std::map<std::string, TagRule> TAGS = {
    {"script", {{}, {}, {"effect"}}},
    {"effect", {{"name", "state", "start", "end"}, {"start", "end"}, {"trigger", "spline", "effect"}}},
    {"trigger", {{"name", "value", "start", "repeat", "delay"}, {"start", "delay"}, {}}},
    {"spline",
     {{"name", "type", "timescale", "timeoffset", "valuescale", "valueoffset"},
      {"timescale", "timeoffset", "valuescale", "valueoffset"},
      {"key"}}},
    {"key", {{"time", "value"}, {"time", "value"}, {}}},
};

struct Interval
{
    double begin;
    double end;
};

std::string list(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "'" : ", '") + word + "'";
    return text;
}

bool hasDecimalComma(const std::string& text)
{
    const std::size_t comma = text.find(',');
    return comma != std::string::npos && comma + 1 < text.size() &&
           std::isdigit(static_cast<unsigned char>(text[comma + 1]));
}

std::string readAs(const std::string& text, const std::string& number)
{
    return "'" + text + "' is read as " + number + (hasDecimalComma(text) ? "; decimals stand behind a point" : "");
}

class Checker
{
public:
    Checker(const Score& score, const EffectTable& effects)
        : mScore(score), mEffects(effects), mNames(effects.names()), mFindings(score.path(), score.document())
    {
    }

    std::vector<Finding> run()
    {
        const Node& root = mScore.document().root();
        if (root.name != "script")
        {
            mFindings.add(Severity::ERROR, root, "root",
                          "the root is <" + root.name +
                              ">, not <script>: nothing is read and the show is over at once");
            return mFindings.take();
        }
        checkTags(root);
        if (mScore.end() <= 0.0)
            mFindings.add(Severity::ERROR, root, "no-end", "no outer entry ends after 0: the show is over at once");
        const Interval always{0.0, std::numeric_limits<double>::infinity()};
        for (const std::unique_ptr<Entry>& entry : mScore.entries()) checkEntry(*entry, true, always);
        checkCover("no-clear", "nothing clears the picture", [](const EffectClass& effect) { return effect.clears; });
        checkCover("gap", "nothing draws", [](const EffectClass& effect) { return effect.draws; });
        checkInherited();
        return mFindings.take();
    }

private:
    // An entry that can be seen, with the time for which it runs.
    struct Running
    {
        const Entry* entry;
        const EffectClass* effect;
        Interval interval;
    };

    void warn(const Node& node, const char* code, const std::string& text)
    {
        mFindings.add(Severity::WARNING, node, code, text);
    }
    void warn(const Node& node, const char* code, const std::string& text, double time)
    {
        mFindings.add(Severity::WARNING, node, code, text, time);
    }

    // What stands in the tags, whatever it means. Nesting is bounded by Document::MAX_DEPTH.
    void checkTags(const Node& node)
    {
        const TagRule& rule = TAGS.at(node.name);
        for (const Attribute& attribute : node.attributes) checkAttribute(node, attribute, rule);
        for (const std::unique_ptr<Node>& child : node.children)
        {
            if (child->kind == Node::Kind::TAG &&
                std::count(rule.children.begin(), rule.children.end(), child->name) > 0)
            {
                checkTags(*child);
                continue;
            }
            if (child->kind == Node::Kind::TAG)
                warn(*child, "unknown-tag",
                     "<" + child->name + "> in <" + node.name + "> is not read, and lost on a save" +
                         suggestion(child->name, rule.children));
            else if (child->kind == Node::Kind::TEXT)
                warn(*child, "unknown-tag", "text between tags is not read, and lost on a save");
            else if (child->kind == Node::Kind::OTHER)
                warn(*child, "unknown-tag", "this tag is not read, and lost on a save");
        }
    }

    void checkAttribute(const Node& node, const Attribute& attribute, const TagRule& rule)
    {
        const std::string& text = attribute.value;
        if (std::count(rule.attributes.begin(), rule.attributes.end(), attribute.name) == 0)
        {
            warn(node, "unknown-attribute",
                 "'" + attribute.name + "' of <" + node.name + "> is not read, and lost on a save" +
                     suggestion(attribute.name, rule.attributes));
            return;
        }
        if (text.find('"') != std::string::npos)
            warn(node, "quote",
                 "'" + attribute.name + "' holds a double quote: after a save the script cannot be read");
        if (std::count(rule.numbers.begin(), rule.numbers.end(), attribute.name) > 0 && !text.empty() &&
            !isNumber(text))
            warn(node, "odd-value", attribute.name + " " + readAs(text, shortest(readFloat(text))));
        if (attribute.name == "repeat" && !text.empty() && !isWholeNumber(text))
            warn(node, "odd-value", "repeat " + readAs(text, std::to_string(readInt(text))));
        if (attribute.name == "state" && !text.empty() && text != "on" && text != "off")
            warn(node, "state-text", "state '" + text + "' leaves the entry on: only 'off' switches off");
        if (attribute.name == "timescale" && !text.empty() && readFloat(text) == 0.0f)
            warn(node, "odd-value", "a timescale of 0 divides the time by 0");
    }

    // `runs`: all entries around it run; `around`: for this time of the show.
    void checkEntry(const Entry& entry, bool runs, Interval around)
    {
        const Node& node = *entry.node;
        const EffectClass* effect = mEffects.find(entry.name);
        mEntry = &entry;
        mIsOn = runs && entry.enabled;
        if (!effect)
            mFindings.add(mIsOn ? Severity::ERROR : Severity::WARNING, node, "unknown-effect",
                          said("no effect is called '" + entry.name + "'" + suggestion(entry.name, mNames)),
                          entry.showStart());
        const Interval interval{std::max(entry.showStart(), around.begin), std::min(entry.showEnd(), around.end)};
        if (!(entry.end > entry.start))
            warn(node, "never-active",
                 said("ends " + std::string(entry.end < entry.start ? "before" : "when") + " it starts"),
                 entry.showStart());
        else if (!(interval.end > interval.begin))
            warn(node, "never-active",
                 said(entry.parent ? "lies outside the entry around it" : "ends before the show begins"),
                 entry.showStart());
        else if (mIsOn && effect)
            mRunning.push_back({&entry, effect, interval});

        for (const Trigger& trigger : entry.triggers) checkTrigger(trigger, effect);
        for (const Spline& spline : entry.splines) checkSpline(spline, effect);
        if (entry.parent && !entry.triggers.empty())
            warn(node, "nested-triggers",
                 said("triggers of an entry inside another do not fire again after a seek back"), entry.showStart());
        if (!entry.children.empty() && (!effect || !entry.enabled))
            warn(*entry.children.front()->node, "nested-parent",
                 said(entry.enabled ? "is unknown, so the entries in it never run"
                                    : "is switched off, so the entries in it never run"),
                 entry.showStart());
        const bool childrenRun = mIsOn && effect;
        for (const std::unique_ptr<Entry>& child : entry.children) checkEntry(*child, childrenRun, interval);
    }

    std::string said(const std::string& trouble) const { return mEntry->label() + ": " + trouble; }
    double showTime(double local) const { return mEntry->showStart() + local; }

    void checkTrigger(const Trigger& trigger, const EffectClass* effect)
    {
        const Node& node = *trigger.node;
        const double time = showTime(trigger.due(0));
        const std::string name = "trigger '" + trigger.name + "' ";
        const Input* input = effect ? effect->trigger(trigger.name) : nullptr;
        if (effect && !input)
            warn(node, "unknown-trigger",
                 said(name + "means nothing to this effect" + meant(trigger.name, effect->triggers)), time);
        if (input) checkValue(trigger, *input, time);

        const double length = static_cast<double>(mEntry->end) - static_cast<double>(mEntry->start);
        if (length > 0.0 && trigger.due(0) >= length)
            warn(node, "late-trigger", said(name + "lies at or behind the end of the entry and never fires"), time);
        if (trigger.repeat <= 0)
            warn(node, "no-firing", said(name + "never fires; a save turns it into one that fires once"), time);
        if (!node.value("delay").empty() && trigger.repeat == 1)
            warn(node, "lost-delay",
                 said(name + "has a delay but no repeat: it fires once, and a save drops the delay"), time);
        if (trigger.due(0) < length) checkFlood(trigger, length, time);
    }

    void checkFlood(const Trigger& trigger, double length, double time)
    {
        const double delay = static_cast<double>(trigger.delay);
        double atOnce = trigger.repeat;
        if (delay > 0.0) atOnce = std::min(atOnce, std::floor(FRAME / delay) + 1.0);
        double inAll = trigger.repeat; // after a seek they all come at once
        if (delay > 0.0) inAll = std::min(inAll, std::max(0.0, length - trigger.due(0)) / delay + 1.0);
        if (atOnce <= FLOOD && inAll <= STANDSTILL) return;
        const bool stops = mIsOn && inAll > STANDSTILL;
        mFindings.add(stops ? Severity::ERROR : Severity::WARNING, *trigger.node, "trigger-flood",
                      said("trigger '" + trigger.name + "' fires " + readable(std::max(atOnce, stops ? inAll : 0.0)) +
                           " times in one frame"),
                      time);
    }

    void checkValue(const Trigger& trigger, const Input& input, double time)
    {
        const Node& node = *trigger.node;
        const std::string& value = trigger.value;
        const std::string name = "'" + trigger.name + "' ";
        const bool isNumeric = input.kind == ValueKind::NUMBER || input.kind == ValueKind::INTEGER;
        if (isNumeric && !(input.kind == ValueKind::NUMBER ? isNumber(value) : isWholeNumber(value)))
            warn(node, "odd-value",
                 said(name + readAs(value, input.kind == ValueKind::NUMBER ? shortest(readFloat(value))
                                                                           : std::to_string(readInt(value)))),
                 time);
        else if (isNumeric)
            checkRange(node, name + "of " + value, readDouble(value), input, time);
        if (input.kind == ValueKind::WORD && std::count(input.words.begin(), input.words.end(), value) == 0)
            warn(node, "odd-value", said(name + "'" + value + "' changes nothing" + suggestion(value, input.words)),
                 time);
        if (input.kind == ValueKind::COLOR) checkColor(node, value, time);
    }

    void checkColor(const Node& node, const std::string& value, double time)
    {
        if (value.size() < 6)
        {
            mFindings.add(mIsOn ? Severity::ERROR : Severity::WARNING, node, "bad-value",
                          said("color '" + value + "' ends the show: it takes nine digits RRRGGGBBB"), time);
            return;
        }
        const bool isDigits = value.size() == 9 && value.find_first_not_of("0123456789") == std::string::npos;
        if (!isDigits || value.substr(0, 3) > "255" || value.substr(3, 3) > "255" || value.substr(6, 3) > "255")
            warn(node, "odd-value", said("color '" + value + "' is not nine digits RRRGGGBBB of 000 to 255 each"),
                 time);
    }

    void checkRange(const Node& node, const std::string& what, double value, const Input& input, double time)
    {
        const bool isBelow = !input.min.empty() && value < readDouble(input.min);
        const bool isAbove = !input.max.empty() && value > readDouble(input.max);
        if (isBelow || isAbove)
            warn(node, "odd-value",
                 said(what + " is " + (isBelow ? "below " + input.min : "above " + input.max) +
                      ", outside what is useful"),
                 time);
    }

    void checkSpline(const Spline& spline, const EffectClass* effect)
    {
        const Node& node = *spline.node;
        const std::string name = "spline '" + spline.name + "' ";
        const Input* input = effect ? effect->spline(spline.name) : nullptr;
        if (effect && !input)
            warn(node, "unknown-spline",
                 said(name + "means nothing to this effect" + meant(spline.name, effect->splines)),
                 mEntry->showStart());
        if (std::count(SPLINE_TYPES.begin(), SPLINE_TYPES.end(), spline.type) == 0)
            warn(node, "unknown-type",
                 said(name + (spline.type.empty() ? "has no type" : "has the unknown type '" + spline.type + "'") +
                      ": it stops at each key; there are " + list(SPLINE_TYPES) +
                      suggestion(spline.type, SPLINE_TYPES)),
                 mEntry->showStart());
        if (spline.keys.empty())
        {
            mFindings.add(Severity::ERROR, node, "no-keys",
                          said(name + "has no key: the player stops reading here and the show is over at once"),
                          mEntry->showStart());
            return;
        }
        for (std::size_t i = 0; i < spline.keys.size(); ++i)
        {
            const Key& key = spline.keys[i];
            const double time = showTime(spline.local(key));
            const float before = i > 0 ? spline.keys[i - 1].time : -std::numeric_limits<float>::infinity();
            if (key.time < before)
                warn(*key.node, "unsorted-keys",
                     said(name + "has a key at " + readable(spline.local(key)) +
                          " behind a later one; keys are not sorted"),
                     time);
            if (key.time == before)
                warn(*key.node, "equal-keys",
                     said(name + "has two keys at " + readable(spline.local(key)) + ": it jumps there"), time);
            const double value = static_cast<double>(key.value) * static_cast<double>(spline.valueScale) +
                                 static_cast<double>(spline.valueOffset);
            if (input) checkRange(*key.node, name + "at " + readable(value), value, *input, time);
        }
    }

    static std::string meant(const std::string& name, const std::vector<Input>& inputs)
    {
        std::vector<std::string> names;
        for (const Input& input : inputs) names.push_back(input.name);
        const std::string near = suggestion(name, names);
        if (!near.empty()) return near;
        return names.empty() ? "; it takes none" : "; it takes " + list(names);
    }

    // The stretches of the show in which no effect of a kind runs.
    void checkCover(const char* code, const std::string& trouble, const std::function<bool(const EffectClass&)>& counts)
    {
        std::vector<const Running*> covers;
        for (const Running& running : mRunning)
            if (counts(*running.effect)) covers.push_back(&running);
        std::sort(covers.begin(), covers.end(),
                  [](const Running* a, const Running* b) { return a->interval.begin < b->interval.begin; });
        double covered = 0.0;
        const Node* last = &mScore.document().root();
        const auto report = [&](double until) {
            if (until - covered >= NO_MATTER)
                warn(*last, code, trouble + " from " + readable(covered) + " to " + readable(until), covered);
        };
        for (const Running* cover : covers)
        {
            report(cover->interval.begin);
            if (cover->interval.end <= covered) continue;
            covered = cover->interval.end;
            last = cover->entry->node;
        }
        report(mScore.end());
    }

    // Values that an entry does not set itself though an earlier entry of the same effect object did.
    void checkInherited()
    {
        std::map<std::string, std::vector<const Running*>> groups;
        for (const Running& running : mRunning) groups[running.entry->name].push_back(&running);
        for (auto& group : groups)
        {
            std::stable_sort(group.second.begin(), group.second.end(),
                             [](const Running* a, const Running* b) { return a->interval.begin < b->interval.begin; });
            std::map<std::string, std::vector<const Running*>> setters;
            for (const Running* running : group.second) checkInherited(*running, setters);
        }
    }

    // `setters`: for each trigger and spline the entries so far that set it.
    void checkInherited(const Running& running, std::map<std::string, std::vector<const Running*>>& setters)
    {
        const Entry& entry = *running.entry;
        std::vector<std::string> inherited;
        double from = 0.0;
        const auto look = [&](const std::string& name, bool isSet) {
            const std::vector<const Running*>& earlier = setters[name];
            if (isSet || earlier.empty() || !(earlier.back()->interval.begin < running.interval.begin)) return;
            if (std::any_of(earlier.begin(), earlier.end(),
                            [&](const Running* other) { return speaksFor(*other, running); }))
                return;
            inherited.push_back(name);
            from = std::max(from, earlier.back()->interval.begin);
        };
        for (const Input& input : running.effect->triggers)
            if (input.kept) look(input.name, isSetAtStart(entry, input.name));
        for (const Input& input : running.effect->splines) look(input.name, hasSpline(entry, input.name));
        if (!inherited.empty())
        {
            mEntry = &entry;
            warn(*entry.node, "inherited",
                 said(list(inherited) + (inherited.size() == 1 ? " comes" : " come") +
                      " from an earlier entry, the last one at " + readable(from) + ": different after a seek"),
                 entry.showStart());
        }
        for (const Trigger& trigger : entry.triggers) setters[trigger.name].push_back(&running);
        for (const Spline& spline : entry.splines) setters[spline.name].push_back(&running);
    }

    // `other` runs, and so sends its values again after a seek, as long as `running` does, and before it in the frame.
    static bool speaksFor(const Running& other, const Running& running)
    {
        return other.interval.begin <= running.interval.begin && other.interval.end >= running.interval.end &&
               other.entry->node->line <= running.entry->node->line;
    }

    static bool isSetAtStart(const Entry& entry, const std::string& name)
    {
        return std::any_of(entry.triggers.begin(), entry.triggers.end(), [&](const Trigger& trigger) {
            return trigger.name == name && trigger.start <= 0.0f && trigger.repeat > 0;
        });
    }

    static bool hasSpline(const Entry& entry, const std::string& name)
    {
        return std::any_of(entry.splines.begin(), entry.splines.end(),
                           [&](const Spline& spline) { return spline.name == name; });
    }

    const Score& mScore;
    const EffectTable& mEffects;
    const std::vector<std::string> mNames;
    Findings mFindings;
    const Entry* mEntry = nullptr; // the one being checked
    bool mIsOn = true;             // it runs, and so do those around it
    std::vector<Running> mRunning;
};

} // namespace

std::vector<Finding> checkScript(const std::string& text, const std::string& path, const EffectTable& effects)
{
    try
    {
        const Score score(text, path);
        return Checker(score, effects).run();
    }
    catch (const SyntaxError& error)
    {
        Findings findings(path);
        findings.add(Severity::ERROR, error.line(), "syntax", error.text());
        return findings.take();
    }
}

} // namespace Timeline
