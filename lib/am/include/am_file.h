#pragma once

#include <string>

#include "am_smartpointer.h"

namespace AM
{
// One whole file in memory.
struct FileStructure
{
    FileStructure() = default;
    FileStructure(const FileStructure&) = delete;
    FileStructure& operator=(const FileStructure&) = delete;
    ~FileStructure() { delete[] data; }

    std::string filename;          // as asked for or to be written, without the archive's path
    long length = 0;               // bytes in data
    unsigned char* data = nullptr; // owned, from array new; no terminating zero
};

// The type in which every file travels. A null File means that the file was not found.
typedef TSmartPtr<FileStructure, TRefCount<FileStructure>> File;
} // namespace AM
