#include "script_savexml.h"

#include "xml_number.h"

#include <climits>
#include <cstddef>
#include <cstdio>
#include <string_view>
#include <vector>

namespace Script
{

namespace
{

// The attributes of each kind of tag in their order in the file. `Tag` takes them by setValue, as Xml::XmlTag does.

template <class Tag> void setAttributes(Tag& tag, const Effect& effect)
{
    tag.setValue("name", effect.mName);
    if (!effect.mEnabled) tag.setValue("state", "off");
    tag.setValue("start", effect.mStart);
    tag.setValue("end", effect.mEnd);
}

template <class Tag> void setAttributes(Tag& tag, const Trigger& trigger)
{
    tag.setValue("start", trigger.mStart);
    tag.setValue("name", trigger.mName);
    tag.setValue("value", trigger.mValue);
    if (trigger.mRepeat <= 1) return;
    tag.setValue("repeat", trigger.mRepeat);
    tag.setValue("delay", trigger.mDelay);
}

template <class Tag> void setAttributes(Tag& tag, const Spline& spline)
{
    tag.setValue("name", spline.mName);
    tag.setValue("type", spline.mType);
    tag.setValue("timescale", spline.mTimeScale);
    tag.setValue("timeoffset", spline.mTimeOffset);
    tag.setValue("valuescale", spline.mValueScale);
    tag.setValue("valueoffset", spline.mValueOffset);
}

template <class Tag> void setAttributes(Tag& tag, const Spline::Key& key)
{
    tag.setValue("time", key.time);
    tag.setValue("value", key.value);
}

// Adds the tag of `object` as the next child at `it`. The iterator comes back over the new tag's own children.
template <class Object> Xml::Iterator addTag(Xml::Iterator& it, const char* name, const Object& object)
{
    Xml::Iterator under = it.addChild(Xml::XmlTag());
    under.getRoot().setName(name);
    setAttributes(under.getRoot(), object);
    return under;
}

// The length that a text would have.
class TextLength
{
public:
    void append(std::size_t count, char) { mLength += count; }
    void operator+=(std::string_view part) { mLength += part.size(); }
    std::size_t size() const { return mLength; }

private:
    std::size_t mLength = 0;
};

// Attributes that go behind the name of a tag at the end of `text`.
template <class Text> class AttributeText
{
public:
    explicit AttributeText(Text& text) : mText(text) {}

    void setValue(std::string_view name, std::string_view value)
    {
        mText += " ";
        mText += name;
        mText += "=\"";
        mText += value;
        mText += "\"";
    }

    void setValue(std::string_view name, int value) { setValue(name, std::string_view(std::to_string(value))); }

    void setValue(std::string_view name, float value)
    {
        Xml::NumberText number;
        setValue(name, Xml::formatNumber(static_cast<double>(value), number));
    }

private:
    Text& mText;
};

// The document that saveEffect builds for all entries, as XmlParser::write writes it with tabs, at once and without
// the document in between. `Text` is a std::string or a TextLength.
template <class Text> class ScriptWriter
{
public:
    explicit ScriptWriter(Text& text) : mText(text) {}

    void write(const ScriptEngine& engine)
    {
        mText += "<script>\n";
        for (const Effect* effect : engine.mEffects) writeEffect(*effect);
        mText += "</script>\n";
    }

private:
    struct Level
    {
        const Effect* effect;
        std::size_t next; // index of the child to write next
    };

    // Depth first, with an explicit list of the open entries.
    void writeEffect(const Effect& effect)
    {
        std::vector<Level> levels;
        open(effect, levels);
        while (!levels.empty())
        {
            Level& level = levels.back();
            if (level.next < level.effect->mEffects.size())
            {
                open(*level.effect->mEffects[level.next++], levels);
                continue;
            }
            levels.pop_back();
            close("effect", 1 + levels.size());
        }
    }

    // An entry with something in it stays open and goes on the list.
    void open(const Effect& effect, std::vector<Level>& levels)
    {
        const std::size_t depth = 1 + levels.size();
        const bool isEmpty = effect.mTriggers.empty() && effect.mSplines.empty() && effect.mEffects.empty();
        writeTag("effect", effect, depth, isEmpty);
        if (isEmpty) return;
        for (const Trigger* trigger : effect.mTriggers) writeTag("trigger", *trigger, depth + 1, true);
        for (const Spline* spline : effect.mSplines)
        {
            writeTag("spline", *spline, depth + 1, spline->mKeys.empty());
            if (spline->mKeys.empty()) continue;
            for (const Spline::Key* key : spline->mKeys) writeTag("key", *key, depth + 2, true);
            close("spline", depth + 1);
        }
        levels.push_back({&effect, 0});
    }

    template <class Object> void writeTag(const char* name, const Object& object, std::size_t depth, bool isClosed)
    {
        mText.append(depth, '\t');
        mText += "<";
        mText += name;
        AttributeText<Text> attributes(mText);
        setAttributes(attributes, object);
        mText += isClosed ? "/>\n" : ">\n";
    }

    void close(const char* name, std::size_t depth)
    {
        mText.append(depth, '\t');
        mText += "</";
        mText += name;
        mText += ">\n";
    }

    Text& mText;
};

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

// Measured first: the text gets its room at once, and one whose indentation would fill the memory is refused before.
std::string SaveXML::saveMem(ScriptEngine& engine)
{
    TextLength length;
    ScriptWriter<TextLength>(length).write(engine);
    if (length.size() > INT_MAX)
        throw Xml::XmlException("SaveXML::saveMem, Text is too long (%zu bytes)", length.size());

    std::string text;
    text.reserve(length.size());
    ScriptWriter<std::string>(text).write(engine);
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
    Xml::Iterator under = addTag(it, "effect", effect);
    for (Trigger* trigger : effect.mTriggers) saveTrigger(under, trigger);
    for (Spline* spline : effect.mSplines) saveSpline(under, spline);
    return under;
}

void SaveXML::saveTrigger(Xml::Iterator& it, Trigger* trigger)
{
    addTag(it, "trigger", *trigger);
}

void SaveXML::saveSpline(Xml::Iterator& it, Spline* spline)
{
    Xml::Iterator under = addTag(it, "spline", *spline);
    for (const Spline::Key* key : spline->mKeys) addTag(under, "key", *key);
}

} // namespace Script
