#pragma once

#include "am_archivebase.h"

namespace AM
{
// A directory on disk.
class ArchiveDirectory : public ArchiveBase
{
public:
    // pPath goes in front of every file name as it stands, so that it ends with its own slash.
    explicit ArchiveDirectory(const std::string& pPath);

    // Only regular files can be read: a folder, a pipe or a device is a file that was not found. Throws AM::Exception
    // for a file that is longer than MAX_FILE_LENGTH or does not fit into memory.
    File read(const std::string& pFilename) override;

    // Replaces the file, whose owner and permissions stay, as do links to it. What stood there stays whole until the
    // new content is: it is written to a second file beside it first. Only where none can be made, as in a folder that
    // may not be written, the file itself is. Directories are not created.
    bool write(File pFile) override;

    std::string mPath;
};
} // namespace AM
