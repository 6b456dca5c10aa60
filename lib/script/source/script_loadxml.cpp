#include "script_loadxml.h"

#include <charconv>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <vector>

namespace Script
{

namespace
{

// As atof reads it, rounded to a float. A text that is a plain decimal number from its first byte to its last goes a
// faster way to the same double.
float readFloat(const std::string& text)
{
    double value;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) value = std::atof(text.c_str());
    return static_cast<float>(value);
}

// The names in the file, made once: a look-up takes a string.
const std::string TRIGGER = "trigger", SPLINE = "spline", EFFECT = "effect", KEY = "key", NAME = "name",
                  STATE = "state", START = "start", END = "end", VALUE = "value", REPEAT = "repeat", DELAY = "delay",
                  TYPE = "type", TIME = "time", TIME_SCALE = "timescale", VALUE_SCALE = "valuescale",
                  TIME_OFFSET = "timeoffset", VALUE_OFFSET = "valueoffset";

float readScale(const std::string& text)
{
    return text.empty() ? 1.0f : readFloat(text);
}

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

} // namespace

bool LoadXML::load(const char* filename, ScriptEngine& engine)
{
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(filename, "r"));
    if (!file) return false;

    // In pieces: the length of a pipe or a device is not known beforehand.
    std::string text;
    std::vector<char> piece(1 << 16);
    while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), file.get()))
    {
        text.append(piece.data(), count);
        if (text.size() > INT_MAX) throw Xml::XmlException("LoadXML::load, File is too long (%s)", filename);
    }
    if (std::ferror(file.get())) return false;
    return loadMem(text.data(), static_cast<long>(text.size()), engine);
}

bool LoadXML::loadMem(const char* data, long size, ScriptEngine& engine)
{
    if (size < 0 || size > INT_MAX) throw Xml::XmlException("LoadXML::loadMem, Bad length (%ld)", size);
    Xml::XmlParser document;
    document.mOnlyClosingTagEnds = true; // an entry without content is saved as <effect/>, also inside an entry
    document.parse(data, static_cast<int>(size));
    if (document.mName != "script") return false;

    Xml::IteratorConst it = document.createIterator(EFFECT);
    while (++it)
    {
        auto effect = std::make_unique<Effect>();
        if (!loadEffect(it, effect.get())) return false;
        engine.mEffects.push_back(effect.get());
        effect.release();
    }
    engine.init();
    return true;
}

// Depth first, with an explicit list of the open entries: a child joins its parent when all of it has been read.
bool LoadXML::loadEffect(Xml::IteratorConst& it, Effect* effect)
{
    struct Level
    {
        Xml::IteratorConst children;
        Effect* effect;
        std::unique_ptr<Effect> owned; // the same, but for the outermost
    };
    if (!loadEntry(it, effect)) return false;
    std::vector<Level> levels;
    levels.push_back({it.createIterator(EFFECT), effect, nullptr});
    for (;;)
    {
        Level& level = levels.back();
        if (++level.children)
        {
            auto child = std::make_unique<Effect>();
            if (!loadEntry(level.children, child.get())) return false;
            Effect* const entry = child.get();
            Xml::IteratorConst grandchildren = level.children.createIterator(EFFECT);
            levels.push_back({std::move(grandchildren), entry, std::move(child)});
            continue;
        }
        std::unique_ptr<Effect> complete = std::move(level.owned);
        levels.pop_back();
        if (levels.empty()) return true;
        levels.back().effect->mEffects.push_back(complete.get());
        complete.release();
    }
}

// The entry itself with its triggers and splines, without its child entries.
bool LoadXML::loadEntry(const Xml::IteratorConst& it, Effect* effect)
{
    effect->mName = it->getValue(NAME);
    effect->mEnabled = it->getValue(STATE) != "off";
    effect->mStart = readFloat(it->getValue(START));
    effect->mEnd = readFloat(it->getValue(END));

    Xml::IteratorConst under = it.createIterator("");
    while (++under)
    {
        const std::string& kind = under->mName;
        if (kind == TRIGGER)
        {
            auto trigger = std::make_unique<Trigger>();
            if (!loadTrigger(under, trigger.get())) return false;
            effect->mTriggers.push_back(trigger.get());
            trigger.release();
        }
        else if (kind == SPLINE)
        {
            auto spline = std::make_unique<Spline>();
            if (!loadSpline(under, spline.get())) return false;
            effect->mSplines.push_back(spline.get());
            spline.release();
        }
    }
    return true;
}

bool LoadXML::loadTrigger(Xml::IteratorConst& it, Trigger* trigger)
{
    const Xml::XmlTag& tag = *it.operator->();
    trigger->mName = tag.getValue(NAME);
    trigger->mValue = tag.getValue(VALUE);
    trigger->mStart = readFloat(tag.getValue(START));

    const std::string& repeat = tag.getValue(REPEAT);
    if (repeat.empty())
    {
        trigger->mRepeat = 1;
        trigger->mDelay = 0.0f;
        return true;
    }
    const std::string& delay = tag.getValue(DELAY);
    trigger->mRepeat = std::atoi(repeat.c_str());
    trigger->mDelay = delay.empty() ? readFloat("0.1") : readFloat(delay);
    return true;
}

bool LoadXML::loadSpline(Xml::IteratorConst& it, Spline* spline)
{
    const Xml::XmlTag& tag = *it.operator->();
    spline->mName = tag.getValue(NAME);
    spline->mType = tag.getValue(TYPE);
    spline->mTimeScale = readScale(tag.getValue(TIME_SCALE));
    spline->mValueScale = readScale(tag.getValue(VALUE_SCALE));
    spline->mTimeOffset = readFloat(tag.getValue(TIME_OFFSET));
    spline->mValueOffset = readFloat(tag.getValue(VALUE_OFFSET));

    Xml::IteratorConst keys = it.createIterator(KEY);
    while (++keys)
    {
        const Xml::XmlTag& keyTag = *keys.operator->();
        auto key = std::make_unique<Spline::Key>();
        key->time = readFloat(keyTag.getValue(TIME));
        key->value = readFloat(keyTag.getValue(VALUE));
        spline->mKeys.push_back(key.get());
        key.release();
    }
    spline->recalculate();
    return !spline->mKeys.empty();
}

} // namespace Script
