#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "am.h"

typedef std::vector<unsigned char> Bytes;

// A folder of its own for each test, removed at the end.
struct TemporaryFolder
{
    TemporaryFolder();
    ~TemporaryFolder() { std::filesystem::remove_all(path); }
    void write(const std::string& name, const Bytes& bytes) const;

    std::string path; // with a slash at its end
};

// An entry of a zip file, with room for lies.
struct ZipEntry
{
    std::string name;
    Bytes content;
    int method = 8;      // 8 deflates the content, everything else stores it
    long long size = -1; // claimed instead of the content's
    long long compressed = -1;
    std::uint32_t crcError = 0; // by which the checksum is wrong
};

Bytes makeZip(const std::vector<ZipEntry>& entries);

// A PNG file, its checksums true whether the rows are as many as it claims or not.
Bytes makePng(int width, int height, int colorType, int depth, const Bytes& rows);

// A JPEG file; a number of scans makes a progressive one of a grey picture, one coefficient a scan.
Bytes makeJpeg(int width, int height, int components, const Bytes& rows, int scans = 0);

Bytes cut(const Bytes& file, std::size_t length);
Bytes replaceBytes(Bytes file, std::size_t position, const Bytes& bytes);
Bytes toBytes(const std::string& text);
Bytes toBytes(const AM::File& file);
AM::File toFile(const std::string& name, const Bytes& bytes);

// The text of the AM::Exception that `action` throws; "" if there is none.
template <class Action> std::string getError(Action action)
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
