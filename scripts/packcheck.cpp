// Reads packed data back the way a show does, and compares it with the files that it was packed from.
//   packcheck ARCHIVE FOLDER <NAMES     one name a line; says in one line what differs, with status 1

#include "am.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <string>

namespace
{
AM::File read(AM::ArchiveManager& archives, const std::string& name, const std::string& place)
{
    const AM::File file = archives.readFile(name, -1);
    if (file.isNull()) throw AM::Exception("%s has no file '%s'", place.c_str(), name.c_str());
    return file;
}

// How many of the names there were.
int compare(const std::string& packed, const std::string& folder)
{
    AM::ArchiveManager archive, files;
    archive.addArchive("zip://" + packed);
    files.addArchive(folder + "/");
    int count = 0;
    for (std::string name; std::getline(std::cin, name); ++count)
    {
        const AM::File one = read(archive, name, packed), other = read(files, name, folder);
        if (one->length != other->length || std::memcmp(one->data, other->data, one->length) != 0)
            throw AM::Exception("%s holds another '%s' than was packed", packed.c_str(), name.c_str());
    }
    return count;
}
} // namespace

int main(int count, char** words)
{
    if (count != 3)
    {
        std::fprintf(stderr, "Usage: packcheck ARCHIVE FOLDER <NAMES\n");
        return 2;
    }
    try
    {
        std::printf("%d\n", compare(words[1], words[2]));
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "Error: %s\n", error.what());
        return 1;
    }
}
