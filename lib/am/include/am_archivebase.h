#pragma once

#include <string>

#include "am_file.h"

namespace AM
{
// The longest file that is loaded. Whoever takes a file apart may count its bytes in an int.
const long MAX_FILE_LENGTH = 0x7fffffff;

// A place that files are read from and, perhaps, written to.
class ArchiveBase
{
public:
    virtual ~ArchiveBase() = default;

    // The whole file, or a null File when the archive has no such file.
    virtual File read(const std::string& pFilename) = 0;

    // Writes pFile under its own name; false when that was not possible.
    virtual bool write(File pFile) = 0;

    virtual void flush() {}
};
} // namespace AM
