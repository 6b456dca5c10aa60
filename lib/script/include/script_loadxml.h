#pragma once

#include "script_script.h"
#include "xml_parser.h"

namespace Script
{

// Reads the script file into the entries of an engine. docs/script.md describes the file.
class LoadXML
{
public:
    // False if the file cannot be read, otherwise as loadMem.
    bool load(const char* filename, ScriptEngine& engine);

    // Appends the entries of a script text to `engine` and works out its end. Throws Xml::XmlException for a syntax
    // error. False for a root other than "script", which leaves the engine alone, and for a spline without keys, which
    // leaves the entries before it in the engine and its end as it was.
    bool loadMem(const char* data, long size, ScriptEngine& engine);

    // Read the tag on which `it` stands, and what lies under it, into an object fresh from its constructor. False for a
    // spline without keys, or an entry that holds one.
    bool loadEffect(Xml::IteratorConst& it, Effect* effect);
    bool loadTrigger(Xml::IteratorConst& it, Trigger* trigger);
    bool loadSpline(Xml::IteratorConst& it, Spline* spline);

private:
    bool loadEntry(const Xml::IteratorConst& it, Effect* effect);
};

} // namespace Script
