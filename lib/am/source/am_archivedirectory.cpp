#include "am_archivedirectory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
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

// Looked at before a file is opened, since opening a pipe may wait for ever.
bool isRegularFile(const std::string& path, struct stat& status)
{
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// Takes the descriptor, which may be -1, and closes it.
bool writeAll(int descriptor, const FileStructure& file)
{
    if (descriptor < 0) return false;
    std::FILE* output = fdopen(descriptor, "wb");
    if (!output)
    {
        close(descriptor);
        return false;
    }
    const std::size_t length = static_cast<std::size_t>(file.length);
    const bool complete = length == 0 || std::fwrite(file.data, 1, length, output) == length;
    // The last bytes reach the disk here: a full one shows only now.
    return std::fclose(output) == 0 && complete;
}

// Truncates what stands there.
bool writeInPlace(const std::string& path, const FileStructure& file)
{
    return writeAll(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666), file);
}

// Gives a new file the owner and the permissions of the one that it is to replace, or else those of any new file.
bool takeOver(int descriptor, const struct stat* old)
{
    if (old) return fchown(descriptor, old->st_uid, old->st_gid) == 0 && fchmod(descriptor, old->st_mode & 07777) == 0;
    const mode_t mask = umask(0);
    umask(mask);
    return fchmod(descriptor, 0666 & ~mask) == 0;
}

// What became of the second file.
enum class Second
{
    inPlace,    // it is the file now
    impossible, // it cannot be made here, or not be put in place
    incomplete  // not all bytes could be written
};

// Writes a second file into the same folder and puts it in the place of the first, which stays whole until then. `old`
// is null where there is none yet. All is written even where it cannot take the place, which shows that there is room.
Second writeBeside(const std::string& path, const struct stat* old, const FileStructure& file)
{
    std::string name = path + ".XXXXXX";
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) return errno == ENOSPC || errno == EDQUOT ? Second::incomplete : Second::impossible;
    const bool isAlike = takeOver(descriptor, old);
    const bool isWhole = writeAll(descriptor, file);
    if (isWhole && isAlike && std::rename(name.c_str(), path.c_str()) == 0) return Second::inPlace;
    unlink(name.c_str());
    return isWhole ? Second::impossible : Second::incomplete;
}

// The path with its links followed; empty if there is nothing at its end.
std::string followLinks(const std::string& path)
{
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : std::string();
}
} // namespace

ArchiveDirectory::ArchiveDirectory(const std::string& pPath) : mPath(pPath) {}

File ArchiveDirectory::read(const std::string& pFilename)
{
    const std::string path = mPath + pFilename;
    struct stat status;
    if (!isRegularFile(path, status)) return File();
    std::unique_ptr<std::FILE, FileCloser> input(std::fopen(path.c_str(), "rb"));
    if (!input || std::fseek(input.get(), 0, SEEK_END) != 0) return File();
    const long length = std::ftell(input.get());
    if (length < 0 || std::fseek(input.get(), 0, SEEK_SET) != 0) return File();
    if (length > MAX_FILE_LENGTH)
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
    const std::string path = mPath + pFile->filename;
    const std::string target = followLinks(path);
    struct stat status;
    Second second = Second::impossible;
    if (!target.empty() && isRegularFile(target, status))
    {
        // A folder that may be written would let a file be replaced that may not.
        if (faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) return false;
        second = writeBeside(target, &status, *pFile);
    }
    else if (lstat(path.c_str(), &status) != 0) // neither a device nor a link to nowhere
        second = writeBeside(path, nullptr, *pFile);
    if (second == Second::impossible) return writeInPlace(path, *pFile);
    return second == Second::inPlace;
}
} // namespace AM
