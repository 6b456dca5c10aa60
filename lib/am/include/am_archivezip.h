#pragma once

#include "am_archivebase.h"

namespace AM
{
// A zip file, read-only. One that is missing or damaged is an archive without files.
class ArchiveZIP : public ArchiveBase
{
public:
    explicit ArchiveZIP(const std::string& pFilename);
    ArchiveZIP(const ArchiveZIP&) = delete;
    ArchiveZIP& operator=(const ArchiveZIP&) = delete;
    ~ArchiveZIP() override;

    // Names compare with their case; a "./", ".\", "/" or "\" in front is not looked at. An entry that cannot be
    // unpacked, whose checksum is wrong, or whose claimed size no data of the zip file could fill, gives a null File.
    File read(const std::string& pFilename) override;

    // Always false.
    bool write(File pFile) override;

    void* mZipfile; // minizip's unzFile; null when the file could not be opened

private:
    bool readCurrentFile(FileStructure& file, unsigned long compressedSize, unsigned long size);

    unsigned long long mZipLength = 0; // bytes of the zip file on disk, the limit of what its entries can claim
};
} // namespace AM
