#pragma once

// What the tests of the runtime share: a show folder of their own on disk, and a device without a window.

#include "tw_device_sdl.h"

#include "am.h"

#include <stdlib.h>

#include <cstdio>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

// A new folder, laid out like the root of a show, with the font and the logo that the HUDs ask for. It goes with its
// contents at the end of the test.
class ShowFolder
{
public:
    ShowFolder()
    {
        setenv("SDL_AUDIODRIVER", "dummy", 1);
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

// A tenth of a second of silence, which any sound library can play.
inline std::string silentWave()
{
    std::string wave("RIFF\x00\x00\x00\x00WAVEfmt \x10\x00\x00\x00\x01\x00\x02\x00\x44\xac\x00\x00\x10\xb1\x02\x00"
                     "\x04\x00\x10\x00"
                     "data\x00\x00\x00\x00",
                     44);
    const unsigned int bytes = 4410 * 4;
    for (int i = 0; i < 4; i++)
    {
        wave[static_cast<std::size_t>(4 + i)] = static_cast<char>((bytes + 36) >> (8 * i));
        wave[static_cast<std::size_t>(40 + i)] = static_cast<char>(bytes >> (8 * i));
    }
    return wave + std::string(bytes, '\0');
}

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

// A device that shows nothing: it hands out prepared events, one list a poll, and writes down what it is told.
class ScriptedDevice : public Tidewheel::DeviceSDL
{
public:
    ScriptedDevice()
    {
        mWidth = 4;
        mHeight = 2;
    }

    void updateEvents(Tidewheel::Events& events) override
    {
        if (mPolls.empty()) return;
        for (const Tidewheel::Event& event : mPolls.front()) events.append(event);
        mPolls.pop_front();
    }

    void open(const std::string&, int, int, bool) override {}
    void setFullscreen(bool fullscreen) override
    {
        mFullscreen = fullscreen;
        mCalls.push_back(fullscreen ? "fullscreen" : "windowed");
    }
    bool isFullscreen() const override { return mFullscreen; }
    void beginFrame() override { mCalls.push_back("begin"); }
    void endFrame() override { mCalls.push_back("end"); }
    void displayHUD(Tidewheel::HUD&) override { mCalls.push_back("hud"); }
    void displayMiniHUD(Tidewheel::MiniHUD&) override { mCalls.push_back("minihud"); }
    void displayLoadingBar(float delta) override { mCalls.push_back("bar " + std::to_string(delta)); }

    std::deque<std::vector<Tidewheel::Event>> mPolls; // the events of each poll to come
    std::vector<std::string> mCalls;
};
