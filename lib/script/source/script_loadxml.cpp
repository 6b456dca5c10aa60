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

    Xml::IteratorConst it = document.createIterator("effect");
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
    levels.push_back({it.createIterator("effect"), effect, nullptr});
    for (;;)
    {
        Level& level = levels.back();
        if (++level.children)
        {
            auto child = std::make_unique<Effect>();
            if (!loadEntry(level.children, child.get())) return false;
            Effect* const entry = child.get();
            Xml::IteratorConst grandchildren = level.children.createIterator("effect");
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
    effect->mName = it->getValue("name");
    effect->mEnabled = it->getValue("state") != "off";
    effect->mStart = readFloat(it->getValue("start"));
    effect->mEnd = readFloat(it->getValue("end"));

    Xml::IteratorConst triggers = it.createIterator("trigger");
    while (++triggers)
    {
        auto trigger = std::make_unique<Trigger>();
        if (!loadTrigger(triggers, trigger.get())) return false;
        effect->mTriggers.push_back(trigger.get());
        trigger.release();
    }
    Xml::IteratorConst splines = it.createIterator("spline");
    while (++splines)
    {
        auto spline = std::make_unique<Spline>();
        if (!loadSpline(splines, spline.get())) return false;
        effect->mSplines.push_back(spline.get());
        spline.release();
    }
    return true;
}

bool LoadXML::loadTrigger(Xml::IteratorConst& it, Trigger* trigger)
{
    trigger->mName = it->getValue("name");
    trigger->mValue = it->getValue("value");
    trigger->mStart = readFloat(it->getValue("start"));

    const std::string& repeat = it->getValue("repeat");
    const std::string& delay = it->getValue("delay");
    if (repeat.empty())
    {
        trigger->mRepeat = 1;
        trigger->mDelay = 0.0f;
    }
    else
    {
        trigger->mRepeat = std::atoi(repeat.c_str());
        trigger->mDelay = delay.empty() ? readFloat("0.1") : readFloat(delay);
    }
    return true;
}

bool LoadXML::loadSpline(Xml::IteratorConst& it, Spline* spline)
{
    spline->mName = it->getValue("name");
    spline->mType = it->getValue("type");
    spline->mTimeScale = readScale(it->getValue("timescale"));
    spline->mValueScale = readScale(it->getValue("valuescale"));
    spline->mTimeOffset = readFloat(it->getValue("timeoffset"));
    spline->mValueOffset = readFloat(it->getValue("valueoffset"));

    Xml::IteratorConst keys = it.createIterator("key");
    while (++keys)
    {
        auto key = std::make_unique<Spline::Key>();
        key->time = readFloat(keys->getValue("time"));
        key->value = readFloat(keys->getValue("value"));
        spline->mKeys.push_back(key.get());
        key.release();
    }
    spline->recalculate();
    return !spline->mKeys.empty();
}

} // namespace Script
