// Where the show is, told to who watches it: an author's session that starts the show again goes on from there, also
// after a crash. The linker puts this in front of the timeline's own update in the programs that tools run; it acts
// only where the folder that the program runs in holds a file `position`, and does nothing else to the show.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace Script
{
class ScriptEngine;
}

namespace
{

const char* const POSITION_FILE = "position";

// Overwrites the file with the time in seconds, always of the same length, so that it is whole at any moment.
void tell(float time)
{
    static const int DESCRIPTOR = open(POSITION_FILE, O_WRONLY | O_CLOEXEC);
    if (DESCRIPTOR < 0) return;
    char text[32];
    const int length = std::snprintf(text, sizeof text, "%15.3f\n", static_cast<double>(time));
    if (length < static_cast<int>(sizeof text) && pwrite(DESCRIPTOR, text, static_cast<std::size_t>(length), 0) < 0)
        return; // the show goes on without
}

} // namespace

// The names that the linker's option --wrap makes of bool Script::ScriptEngine::update(const float&).
extern "C" {
bool __real__ZN6Script12ScriptEngine6updateERKf(Script::ScriptEngine* engine, const float& time);
bool __wrap__ZN6Script12ScriptEngine6updateERKf(Script::ScriptEngine* engine, const float& time);
}

bool __wrap__ZN6Script12ScriptEngine6updateERKf(Script::ScriptEngine* engine, const float& time)
{
    tell(time);
    return __real__ZN6Script12ScriptEngine6updateERKf(engine, time);
}
