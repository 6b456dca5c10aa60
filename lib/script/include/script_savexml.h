#pragma once

#include "script_script.h"
#include "xml_parser.h"

#include <string>

namespace Script
{

// Writes the entries of an engine as a script file. A file written here reads back to the same entries, and saving it
// again gives the same bytes.
class SaveXML
{
public:
    // Throws Xml::XmlException if the file cannot be written.
    void save(const char* filename, ScriptEngine& engine);

    // The whole file as text, which is what the document of all entries would be written as. Throws as save does when
    // it would be too long to be read back, at 2 GiB.
    std::string saveMem(ScriptEngine& engine);

    // Add one tag, with all that lies under it, as the next child at `it`.
    void saveEffect(Xml::Iterator& it, Effect* effect);
    void saveTrigger(Xml::Iterator& it, Trigger* trigger);
    void saveSpline(Xml::Iterator& it, Spline* spline);

private:
    Xml::Iterator saveEntry(Xml::Iterator& it, const Effect& effect);
};

} // namespace Script
