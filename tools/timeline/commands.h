#pragma once

// One function for each command: it adds the command to the program's command line. What the command does runs when
// the line has been read whole; it sets `status`, which is 0 before, and throws Failure for what it cannot do.

namespace CLI
{
class App;
}

namespace Timeline
{

void addCheck(CLI::App& app, int& status);
void addPrint(CLI::App& app, int& status);

} // namespace Timeline
