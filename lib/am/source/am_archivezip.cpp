#include "am_archivezip.h"

#include <unzip.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>
#include <type_traits>

namespace AM
{
namespace
{
static_assert(std::is_same<unzFile, void*>::value, "the archive keeps minizip's handle as it is");

// Deflate cannot make more than 1032 bytes out of one; the rest is for entries of a few bytes.
const unsigned long long MAX_RATIO = 1032;
const unsigned long long RATIO_SLACK = 1024;

// How many characters in front of a name the directory of the zip file does not have: a dot, a separator or both.
std::size_t getPrefixLength(const std::string& name)
{
    std::size_t removeFirst = 0;
    if (!name.empty() && name[0] == '.') removeFirst = 1;
    if (name.size() > 1 && (name[removeFirst] == '/' || name[removeFirst] == '\\')) ++removeFirst;
    return removeFirst;
}
} // namespace

ArchiveZIP::ArchiveZIP(const std::string& pFilename) : mZipfile(unzOpen(pFilename.c_str()))
{
    std::error_code error;
    const std::uintmax_t length = std::filesystem::file_size(pFilename, error);
    if (!error) mZipLength = length;
}

ArchiveZIP::~ArchiveZIP()
{
    if (mZipfile) unzClose(mZipfile);
}

File ArchiveZIP::read(const std::string& pFilename)
{
    if (!mZipfile) return File();
    const std::string name = pFilename.substr(getPrefixLength(pFilename));
    if (unzLocateFile(mZipfile, name.c_str(), 0) != UNZ_OK) return File();
    unz_file_info info;
    char entryName[512];
    if (unzGetCurrentFileInfo(mZipfile, &info, entryName, sizeof entryName, nullptr, 0, nullptr, 0) != UNZ_OK)
        return File();
    if (unzOpenCurrentFilePassword(mZipfile, nullptr) != UNZ_OK) return File();

    File file = new FileStructure;
    file->filename = pFilename;
    const bool complete = readCurrentFile(*file, info.compressed_size, info.uncompressed_size);
    // A wrong checksum shows only now.
    const bool closed = unzCloseCurrentFile(mZipfile) == UNZ_OK;
    return complete && closed ? file : File();
}

// Sizes are only claims of the zip file until the bytes are there, so no block is made that they cannot fill.
bool ArchiveZIP::readCurrentFile(FileStructure& file, unsigned long compressedSize, unsigned long size)
{
    if (compressedSize > mZipLength || size > compressedSize * MAX_RATIO + RATIO_SLACK ||
        size > static_cast<unsigned long>(MAX_FILE_LENGTH))
        return false;
    file.data = new (std::nothrow) unsigned char[size];
    if (!file.data) return false;
    file.length = static_cast<long>(size);

    unsigned long left = size;
    while (left > 0)
    {
        const int count = unzReadCurrentFile(mZipfile, file.data + (size - left), static_cast<unsigned>(left));
        if (count < 0) return false;
        if (count == 0) break;
        left -= static_cast<unsigned long>(count);
    }
    // An entry that ends early keeps its length; what is missing reads as zeros.
    std::memset(file.data + (size - left), 0, left);
    return true;
}

bool ArchiveZIP::write(File)
{
    return false;
}
} // namespace AM
