// Any bytes are refused or become entries that run, start over and are saved, at once and as a document alike.

#include "script_loadxml.h"
#include "script_savexml.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace
{

struct Silent : public Script::Callback
{
    void update(float, float, float) override {}
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Silent silent;
    Script::ScriptEngine engine;
    try
    {
        Script::LoadXML().loadMem(reinterpret_cast<const char*>(data), static_cast<long>(size), engine);
    }
    catch (const Xml::XmlException&)
    {
        return 0;
    }
    for (const Script::Effect* entry : engine.mEffects)
    {
        if (entry->mName != "nobody") engine.addCallback(entry->mName, &silent);
    }
    for (const float time : {0.0f, 1.5f, 30.0f, -1.0f, 0.5f}) engine.update(time);
    Xml::XmlParser document;
    document.setName("script");
    Xml::Iterator it = document.createIterator("");
    for (Script::Effect* entry : engine.mEffects) Script::SaveXML().saveEffect(it, entry);
    std::string text;
    document.write(text, "\t");
    if (Script::SaveXML().saveMem(engine) != text) std::abort();
    return 0;
}
