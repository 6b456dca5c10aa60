#include "show.h"

#include "numbers.h"

#include <filesystem>

namespace Timeline
{

const char CONFIGURATION_FILE[] = "tidewheel.xml";
const char PACKED_SHOW[] = "ourglacierheartcold.sdr";

Show::Show(const std::string& folder) : mFolder(folder.empty() ? "./" : folder)
{
    if (mFolder.back() != '/') mFolder += '/';
    if (!std::filesystem::is_directory(mFolder)) throw Failure(mFolder + " is no folder");
    if (mFolder == "./") mFolder.clear();
    addFolder(mFolder.empty() ? "./" : mFolder);
    addFolder(mFolder + "data/");
    mArchives.addArchive("zip://" + mFolder + PACKED_SHOW);
    // Any other show is packed under the name of its folder.
    const std::filesystem::path own = std::filesystem::canonical(mFolder.empty() ? "./" : mFolder);
    const std::string packed = mFolder + own.filename().string() + ".sdr";
    if (packed != mFolder + PACKED_SHOW && std::filesystem::exists(packed)) mArchives.addArchive("zip://" + packed);

    mConfiguration = std::make_unique<Document>(readText(CONFIGURATION_FILE), false, labelOf(CONFIGURATION_FILE));
    const Node& root = mConfiguration->root();
    if (root.name != "demo") return; // the program reads nothing of it either
    for (const std::unique_ptr<Node>& child : root.children)
    {
        const std::string& file = child->value("file");
        if (child->isTag("time")) mStart = readDouble(child->value("start"));
        if (child->isTag("music")) mMusic = file;
        if (child->isTag("script")) mScripts.push_back(file);
        if (!child->isTag("archive") || file.empty()) continue;

        // The program runs in bin/, so that is where a relative name starts.
        const std::size_t scheme = file.find("://");
        const std::string protocol = scheme == std::string::npos ? "" : file.substr(0, scheme + 3);
        const std::string path = file.substr(protocol.size());
        const std::string place = !path.empty() && path[0] == '/' ? path : mFolder + "bin/" + path;
        mArchives.addArchive(protocol + place);
        if (std::filesystem::is_directory(place)) mFolders.push_back(place.back() == '/' ? place : place + "/");
    }
}

void Show::addFolder(const std::string& folder)
{
    mFolders.push_back(folder);
    mArchives.addArchive(folder);
}

std::string Show::readText(const std::string& name)
{
    const AM::File file = read(name);
    if (file.isNull())
        throw Failure("'" + name + "' is in no archive of the show in " + (mFolder.empty() ? "./" : mFolder));
    return {reinterpret_cast<const char*>(file->data), static_cast<std::size_t>(file->length)};
}

std::string Show::pathOf(const std::string& name) const
{
    for (const std::string& folder : mFolders)
    {
        const std::string path = (folder == "./" ? "" : folder) + name;
        if (!name.empty() && std::filesystem::is_regular_file(path)) return path;
    }
    return "";
}

std::string Show::labelOf(const std::string& name) const
{
    const std::string path = pathOf(name);
    return path.empty() ? name : path;
}

std::string Show::script() const
{
    if (mScripts.size() == 1) return mScripts.front();
    throw Failure(labelOf(CONFIGURATION_FILE) +
                  (mScripts.empty() ? " names no script" : " names more than one script") + "; name the FILE");
}

} // namespace Timeline
