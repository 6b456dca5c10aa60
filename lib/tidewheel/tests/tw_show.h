#pragma once

// What the tests of the runtime share: a show folder of their own on disk, and keys.

#include "tw_events.h"

#include "am.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

// A new folder, laid out like the root of a show, with the font and the logo that the HUDs ask for. It goes with its
// contents at the end of the test.
class ShowFolder
{
public:
    ShowFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "show-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        mPath = pattern + "/";
        std::filesystem::create_directory(mPath + "screenshots");

        write("tidewheel.font", std::string("SBF!\x08\x0c", 6) + std::string(32 * 8 * 12, '\x55'));
        AM::ArchiveManager archives;
        archives.addArchive(mPath);
        AM::Image logo(new AM::ImageObject(0, 0, nullptr, nullptr, ""));
        logo->setData(2, 2, new unsigned char[16]());
        archives.writeImage("tidewheel_logo.png", logo);
    }

    ~ShowFolder() { std::filesystem::remove_all(mPath); }

    void write(const std::string& name, const std::string& text) const
    {
        std::ofstream(mPath + name, std::ios::binary) << text;
    }

    std::string read(const std::string& name) const
    {
        std::ifstream file(mPath + name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    bool has(const std::string& name) const { return std::filesystem::exists(mPath + name); }

    std::string mPath; // ends in a slash
};

inline Tidewheel::Event keyDown(int key, const std::string& modifiers = "")
{
    Tidewheel::Event event;
    event.type = Tidewheel::EVENT_KEYDOWN;
    event.key = key;
    event.ctrl = modifiers.find("ctrl") != std::string::npos;
    event.alt = modifiers.find("alt") != std::string::npos;
    event.shift = modifiers.find("shift") != std::string::npos;
    return event;
}
