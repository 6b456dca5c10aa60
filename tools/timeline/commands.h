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
void addDiff(CLI::App& app, int& status);
void addShift(CLI::App& app, int& status);
void addRetime(CLI::App& app, int& status);
void addSnap(CLI::App& app, int& status);
void addCopy(CLI::App& app, int& status);
void addMove(CLI::App& app, int& status);
void addDelete(CLI::App& app, int& status);
void addRename(CLI::App& app, int& status);
void addEnable(CLI::App& app, int& status);
void addDisable(CLI::App& app, int& status);
void addMerge(CLI::App& app, int& status);
void addExtract(CLI::App& app, int& status);
void addSet(CLI::App& app, int& status);
void addFormat(CLI::App& app, int& status);
void addMergeComments(CLI::App& app, int& status);
void addBeats(CLI::App& app, int& status);
void addSheet(CLI::App& app, int& status);
void addWhy(CLI::App& app, int& status);
void addDocumentation(CLI::App& app, int& status);
void addFacts(CLI::App& app, int& status);

} // namespace Timeline
