#pragma once

#include <string>
#include <vector>

#include "am_archivebase.h"
#include "am_exception.h"
#include "am_file.h"
#include "am_image.h"
#include "am_imagemanager.h"

namespace AM
{
// The road of all data into the program: a list of archives, asked in the order in which they were added. Nothing is
// kept in between; every read goes to the archives again.
class ArchiveManager
{
public:
    ArchiveManager();
    ArchiveManager(const ArchiveManager&) = delete;
    ArchiveManager& operator=(const ArchiveManager&) = delete;
    ~ArchiveManager();

    // Adds an archive and returns its index, or -1 for an empty name or an unknown type. "zip://PATH" and "PATH.zip"
    // are zip files, a path with a trailing slash or without a dot in its last component is a directory.
    int addArchive(const std::string& pFilename);

    // The whole file, or a null File when no archive has it. With -1 the archives are asked from index 0 up. With an
    // index, which must be in range, that archive is asked first and then all.
    File readFile(const std::string& pFilename, int pArchiveID);

    // Writes the file under its own name into an archive, whose index must be in range; -1 means the first one. False
    // when there is no archive or it could not write.
    bool writeFile(File pFile, int pArchiveID);

    // One archive, or all of them when pArchiveID is negative.
    void flush(int pArchiveID);

    // readFile and ImageManager::loadImage in one. Throws AM::Exception when the file is not found, even if the image
    // is cached, and when it cannot be decoded.
    Image loadImage(const std::string& pFileId, int pArchiveID, bool uniqueAccess);

    // Encodes the image by the extension of the name and writes it into the first archive. Throws AM::Exception for a
    // null image or a managed one.
    bool writeImage(const std::string& filename, Image& image);

    std::vector<ArchiveBase*> mArchives; // owned; the order of search
    ImageManager* mImageManager;         // owned
};
} // namespace AM
