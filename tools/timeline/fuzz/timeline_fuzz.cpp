// Any bytes are refused, or read as the player reads them; and what the commands make of them means what it should.

#include "difference.h"
#include "edits.h"
#include "match.h"
#include "scriptcheck.h"
#include "timemap.h"
#include "writer.h"

#include "script_loadxml.h"
#include "script_savexml.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace
{

using namespace Timeline;

void require(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

// The player and Score read the same entries: saved by the player they mean the same.
void compareWithPlayer(const std::string& text, const Score& score)
{
    Script::ScriptEngine engine;
    if (!Script::LoadXML().loadMem(text.data(), static_cast<long>(text.size()), engine)) return;
    for (const Entry* entry : score.all())
    {
        if (!std::isfinite(entry->start + entry->end)) return;
        for (const Trigger& trigger : entry->triggers)
            if (trigger.repeat < 1 || !std::isfinite(trigger.start + trigger.delay)) return; // a save changes it
    }
    const std::string saved = Script::SaveXML().saveMem(engine);
    try
    {
        require(meaning(Score(saved, "saved")) == meaning(score), "read otherwise than the player does");
    }
    catch (const Failure&)
    {
        require(text.find('"') != std::string::npos || text.find('\'') != std::string::npos,
                "a save that cannot be read");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkScript(text, "fuzz", EffectTable::builtIn());
    try
    {
        const Score score(text, "fuzz");
        Edits nothing(score.document());
        require(nothing.apply() == text, "a text without changes is another");
        require(differences(score, score).empty(), "a script differs from itself");
        compareWithPlayer(text, score);
        Edits edits(score.document());
        mapTimes(score, edits, shiftMap(1.0, std::numeric_limits<double>::infinity(), 0.5), true);
        const Score moved(edits.apply(), "moved");
        require(moved.all().size() == score.all().size(), "a shift loses entries");
        const std::string house = format(score);
        require(format(Score(house, "house")) == house, "the house's writing is not its own");
        mergeComments(score, moved);
    }
    catch (const Failure&)
    {
    }
    return 0;
}
