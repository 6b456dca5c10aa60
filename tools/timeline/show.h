#pragma once

#include "document.h"
#include "score.h"

#include "am.h"

#include <memory>
#include <string>
#include <vector>

namespace Timeline
{

// The show in a folder, found as the program finds it: through the folder's tidewheel.xml, with the archives that the
// program searches, and with bin/ of that folder as the place from which it runs.
class Show
{
public:
    // Throws Failure when there is no configuration, and SyntaxError when it cannot be read.
    explicit Show(const std::string& folder);

    // A file by its name in the archives; null if none has it.
    AM::File read(const std::string& name) { return mArchives.readFile(name, -1); }

    // Its text. Throws Failure.
    std::string readText(const std::string& name);

    // Where a file that the archives know lies as a file of its own; empty for one inside a zip.
    std::string pathOf(const std::string& name) const;

    // The name for messages: the path, or the bare name for a file in a zip.
    std::string labelOf(const std::string& name) const;

    const std::string& folder() const { return mFolder; }
    const Document& configuration() const { return *mConfiguration; }
    const std::vector<std::string>& scripts() const { return mScripts; } // names, in the order of the configuration
    const std::string& music() const { return mMusic; }                  // name of the last one; may be empty
    double start() const { return mStart; }                              // seconds; where the show begins

    // The one script of the show; throws Failure when there is none or more than one.
    std::string script() const;

private:
    void addFolder(const std::string& folder);

    std::string mFolder; // with a slash at its end
    std::vector<std::string> mFolders;
    AM::ArchiveManager mArchives;
    std::unique_ptr<Document> mConfiguration;
    std::vector<std::string> mScripts;
    std::string mMusic;
    double mStart = 0.0;
};

// The program's names for what every show has.
extern const char CONFIGURATION_FILE[];
extern const char PACKED_SHOW[];

} // namespace Timeline
