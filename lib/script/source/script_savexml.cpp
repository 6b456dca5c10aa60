#include "script_savexml.h"

#include <cstddef>
#include <cstdio>
#include <vector>

namespace Script
{

namespace
{

// A new child at `it`, closed and without attributes, but with room for `attributes`. The iterator comes back over the
// child's own children; its root is the tag to fill, in its place in the document.
Xml::Iterator addTag(Xml::Iterator& it, const char* name, std::size_t attributes)
{
    Xml::Iterator under = it.addChild(Xml::XmlTag());
    under.getRoot().setName(name);
    under.getRoot().mArguments.reserve(attributes);
    return under;
}

} // namespace

void SaveXML::save(const char* filename, ScriptEngine& engine)
{
    const std::string text = saveMem(engine);
    std::FILE* file = std::fopen(filename, "wb");
    if (!file) throw Xml::XmlException("SaveXML::save, Could not open file for writing (%s)", filename);
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (std::fclose(file) != 0 || !isWritten)
    {
        throw Xml::XmlException("SaveXML::save, Could not write file (%s)", filename);
    }
}

std::string SaveXML::saveMem(ScriptEngine& engine)
{
    Xml::XmlParser document;
    document.setName("script");
    Xml::Iterator it = document.createIterator("");
    for (Effect* effect : engine.mEffects) saveEffect(it, effect);

    std::string text;
    document.write(text, "\t");
    return text;
}

// Depth first, with an explicit list of the open entries.
void SaveXML::saveEffect(Xml::Iterator& it, Effect* effect)
{
    struct Level
    {
        Xml::Iterator it;
        const Effect* effect;
        std::size_t next; // index of the child to save next
    };
    std::vector<Level> levels;
    levels.push_back({saveEntry(it, *effect), effect, 0});
    while (!levels.empty())
    {
        Level& level = levels.back();
        if (level.next == level.effect->mEffects.size())
        {
            levels.pop_back();
            continue;
        }
        const Effect* child = level.effect->mEffects[level.next++];
        Xml::Iterator grandchildren = saveEntry(level.it, *child);
        levels.push_back({std::move(grandchildren), child, 0});
    }
}

// The entry's own tag with its triggers and splines; the iterator stands where its child entries go.
Xml::Iterator SaveXML::saveEntry(Xml::Iterator& it, const Effect& effect)
{
    Xml::Iterator under = addTag(it, "effect", effect.mEnabled ? 3 : 4);
    Xml::XmlTag& tag = under.getRoot();
    tag.setValue("name", effect.mName);
    if (!effect.mEnabled) tag.setValue("state", "off");
    tag.setValue("start", effect.mStart);
    tag.setValue("end", effect.mEnd);

    for (Trigger* trigger : effect.mTriggers) saveTrigger(under, trigger);
    for (Spline* spline : effect.mSplines) saveSpline(under, spline);
    return under;
}

void SaveXML::saveTrigger(Xml::Iterator& it, Trigger* trigger)
{
    const bool repeats = trigger->mRepeat > 1;
    Xml::XmlTag& tag = addTag(it, "trigger", repeats ? 5 : 3).getRoot();
    tag.setValue("start", trigger->mStart);
    tag.setValue("name", trigger->mName);
    tag.setValue("value", trigger->mValue);
    if (repeats)
    {
        tag.setValue("repeat", trigger->mRepeat);
        tag.setValue("delay", trigger->mDelay);
    }
}

void SaveXML::saveSpline(Xml::Iterator& it, Spline* spline)
{
    Xml::Iterator under = addTag(it, "spline", 6);
    Xml::XmlTag& tag = under.getRoot();
    tag.setValue("name", spline->mName);
    tag.setValue("type", spline->mType);
    tag.setValue("timescale", spline->mTimeScale);
    tag.setValue("timeoffset", spline->mTimeOffset);
    tag.setValue("valuescale", spline->mValueScale);
    tag.setValue("valueoffset", spline->mValueOffset);

    for (const Spline::Key* key : spline->mKeys)
    {
        Xml::XmlTag& keyTag = addTag(under, "key", 2).getRoot();
        keyTag.setValue("time", key->time);
        keyTag.setValue("value", key->value);
    }
}

} // namespace Script
