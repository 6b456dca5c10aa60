#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "am.h"

typedef std::vector<unsigned char> Bytes;

// A folder of its own for each test, removed at the end.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();

    std::string path() const { return mPath.string() + "/"; }
    void write(const std::string& name, const Bytes& bytes) const;

private:
    std::filesystem::path mPath;
};

// An entry of a zip file, with room for lies.
struct ZipEntry
{
    std::string name;
    Bytes content;
    int method = 8;             // 8 deflates the content, everything else stores it
    long long size = -1;        // claimed instead of the content's
    long long compressed = -1;
    std::uint32_t crcError = 0; // by which the checksum is wrong
};

Bytes makeZip(const std::vector<ZipEntry>& entries);

// Files as the libraries themselves write them: rows from the top, without padding. A number of scans makes a
// progressive JPEG of a grey picture, one coefficient a scan.
Bytes makePng(int width, int height, int colorType, int depth, const Bytes& rows, bool interlaced = false);
Bytes makeJpeg(int width, int height, int components, const Bytes& rows, int scans = 0);

Bytes toBytes(const std::string& text);
Bytes toBytes(const AM::File& file);
AM::File toFile(const std::string& name, const Bytes& bytes);

// The text of the AM::Exception that `action` throws; "" if there is none.
template <class Action>
std::string getError(Action action)
{
    try
    {
        action();
    }
    catch (const AM::Exception& exception)
    {
        return exception.what();
    }
    return std::string();
}
