#include "am_archivedirectory.h"

#include <sys/stat.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <new>

#include "am_exception.h"

namespace AM
{
namespace
{
struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Looked at before the file is opened, since opening a pipe may wait for ever.
bool isRegularFile(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}
} // namespace

ArchiveDirectory::ArchiveDirectory(const std::string& pPath) : mPath(pPath) {}

File ArchiveDirectory::read(const std::string& pFilename)
{
    const std::string path = mPath + pFilename;
    if (!isRegularFile(path)) return File();
    std::unique_ptr<std::FILE, FileCloser> input(std::fopen(path.c_str(), "rb"));
    if (!input || std::fseek(input.get(), 0, SEEK_END) != 0) return File();
    const long length = std::ftell(input.get());
    if (length < 0 || std::fseek(input.get(), 0, SEEK_SET) != 0) return File();
    if (length > maxFileLength)
        throw Exception("AM::ArchiveDirectory::read, File too long (%s, %ld bytes)", path.c_str(), length);

    File file = new FileStructure;
    file->filename = pFilename;
    file->data = new (std::nothrow) unsigned char[static_cast<std::size_t>(length)];
    if (!file->data)
        throw Exception("AM::ArchiveDirectory::read, Not enough memory (%s, %ld bytes)", path.c_str(), length);
    file->length = length;
    // A file that gives less than its size is being changed or cannot be read.
    if (std::fread(file->data, 1, static_cast<std::size_t>(length), input.get()) != static_cast<std::size_t>(length))
        return File();
    return file;
}

bool ArchiveDirectory::write(File pFile)
{
    std::FILE* output = std::fopen((mPath + pFile->filename).c_str(), "wb");
    if (!output) return false;
    const std::size_t length = static_cast<std::size_t>(pFile->length);
    const bool complete = length == 0 || std::fwrite(pFile->data, 1, length, output) == length;
    // The last bytes reach the disk here: a full one shows only now.
    return std::fclose(output) == 0 && complete;
}
} // namespace AM
