#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace Timeline
{

// What a trigger's value is to the effect.
enum class ValueKind
{
    NUMBER,
    INTEGER,
    COLOR, // nine digits RRRGGGBBB
    WORD,
    NONE // not looked at
};

// A trigger or spline that an effect takes.
struct Input
{
    bool hasRange() const { return !min.empty() || !max.empty(); }

    std::string name; // "*": any
    ValueKind kind = ValueKind::NUMBER;
    std::string unit;
    std::string min, max; // of what is useful; empty for no limit
    std::string start;    // before it is first set; empty if that has no meaning
    bool kept = true;     // stays for later entries
    std::string does;
    std::vector<std::string> words; // of kind WORD
};

struct EffectClass
{
    // By name, or the one for any name; null if the effect does not take it.
    const Input* trigger(const std::string& name) const;
    const Input* spline(const std::string& name) const;

    std::string name; // of the class
    std::string shows;
    bool draws = false;
    bool clears = false;
    std::string seek;               // "same", "flicker" or "other"
    std::vector<std::string> files; // read while the program loads
    std::vector<Input> triggers;
    std::vector<Input> splines;
};

// Which effects a script can name, and what they take: the table demo/effects.xml, which describes itself.
class EffectTable
{
public:
    // Throws Failure for a text that is no such table. `path` is for messages.
    EffectTable(const std::string& text, const std::string& path);

    // The table of the program that this tool was built with.
    static const EffectTable& builtIn();

    // The table effects.xml that a show brings along in its folder, or the built-in one. Throws Failure.
    static EffectTable ofShow(const std::string& folder);

    // The effect registered under a name, or null.
    const EffectClass* find(const std::string& name) const;

    // What the object of that name reads beside the files of its class, such as a scene description; or empty.
    std::string ownFile(const std::string& name) const;

    std::vector<std::string> names() const;

    const std::vector<EffectClass>& classes() const { return mClasses; }

private:
    struct Registered
    {
        std::size_t index; // of the class
        std::string reads;
    };

    std::vector<EffectClass> mClasses;
    std::map<std::string, Registered> mRegistered;
};

} // namespace Timeline
