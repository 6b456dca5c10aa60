#pragma once

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

Bytes readFile(const std::string& path);

// One of the files from which the fuzzer starts.
inline Bytes readSample(const std::string& name)
{
    return readFile(AM_FOLDER "fuzz/corpus/" + name);
}

Bytes cut(const Bytes& file, std::size_t length);
Bytes replaceByte(Bytes file, std::size_t position, unsigned char byte);
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
