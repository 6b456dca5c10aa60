#include "am.h"

#include <algorithm>
#include <cassert>
#include <cctype>
#include <cstddef>

#include "am_archivedirectory.h"
#include "am_archivezip.h"
#include "gr_debug.h"

namespace AM
{
namespace
{
bool isSeparator(char character)
{
    return character == '/' || character == '\\';
}

// What stands in front of "://", unless a separator comes first; the path is then what stands behind it. At least one
// character must follow.
std::string takeProtocol(std::string& path)
{
    for (std::size_t j = 0; j + 3 < path.size(); ++j)
    {
        if (path.compare(j, 3, "://") == 0)
        {
            const std::string protocol = path.substr(0, j);
            path.erase(0, j + 3);
            return protocol;
        }
        if (isSeparator(path[j])) break;
    }
    return std::string();
}

// The text behind the last dot of the path's last component.
std::string getExtension(const std::string& path)
{
    for (std::size_t i = path.size(); i > 0 && !isSeparator(path[i - 1]); --i)
        if (path[i - 1] == '.') return path.substr(i);
    return std::string();
}
} // namespace

ArchiveManager::ArchiveManager() : mImageManager(new ImageManager) {}

ArchiveManager::~ArchiveManager()
{
    for (ArchiveBase* archive : mArchives) delete archive;
    mArchives.clear();
    delete mImageManager;
}

int ArchiveManager::addArchive(const std::string& pFilename)
{
    if (pFilename.empty()) return -1;

    std::string noFilter = pFilename;
    const std::string protocol = takeProtocol(noFilter);
    std::string extension = protocol.empty() ? getExtension(noFilter) : protocol;
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    if (!extension.empty() && extension != "zip") return -1;

    mArchives.push_back(nullptr);
    try
    {
        if (extension.empty())
            mArchives.back() = new ArchiveDirectory(noFilter);
        else
            mArchives.back() = new ArchiveZIP(noFilter);
    }
    catch (...)
    {
        mArchives.pop_back();
        throw;
    }
    return static_cast<int>(mArchives.size()) - 1;
}

File ArchiveManager::readFile(const std::string& pFilename, int pArchiveID)
{
    assert(pArchiveID >= -1 && pArchiveID < static_cast<int>(mArchives.size()));
    if (pArchiveID >= 0)
    {
        File file = mArchives[static_cast<std::size_t>(pArchiveID)]->read(pFilename);
        if (!file.isNull()) return file;
    }
    for (ArchiveBase* archive : mArchives)
    {
        File file = archive->read(pFilename);
        if (!file.isNull()) return file;
    }
    DEBUG_STRING("AM::readFile, not in any archive: %s\n", pFilename.c_str());
    return File();
}

bool ArchiveManager::writeFile(File pFile, int pArchiveID)
{
    if (pArchiveID == -1 && mArchives.empty()) return false;
    const int index = pArchiveID == -1 ? 0 : pArchiveID;
    assert(index >= 0 && index < static_cast<int>(mArchives.size()));
    return mArchives[static_cast<std::size_t>(index)]->write(pFile);
}

void ArchiveManager::flush(int pArchiveID)
{
    if (pArchiveID >= 0)
    {
        assert(pArchiveID < static_cast<int>(mArchives.size()));
        mArchives[static_cast<std::size_t>(pArchiveID)]->flush();
        return;
    }
    for (ArchiveBase* archive : mArchives) archive->flush();
}

Image ArchiveManager::loadImage(const std::string& pFileId, int pArchiveID, bool uniqueAccess)
{
    File file = readFile(pFileId, pArchiveID);
    if (file.isNull()) throw Exception("AM::loadImage, File not found (%s)", pFileId.c_str());
    return mImageManager->loadImage(pFileId, file, uniqueAccess);
}

bool ArchiveManager::writeImage(const std::string& filename, Image& image)
{
    File file = mImageManager->encodeImage(filename, image);
    return !file.isNull() && writeFile(file, -1);
}
} // namespace AM
