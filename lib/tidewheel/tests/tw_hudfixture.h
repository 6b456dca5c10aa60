#pragma once

#include "tw_hud.h"

#include "script_loadxml.h"
#include "script_savexml.h"
#include "script_script.h"

#include "am.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <sstream>
#include <string>

namespace HudTest
{

const std::uint32_t white = 0xFFFFFFFF;
const std::uint32_t red = 0xFFFF0000;

// An effect that only exists.
struct Known : Script::Callback
{
    void update(float, float, float) override {}
};

// The font and the logo that the show has.
struct ShowArchive : AM::ArchiveManager
{
    ShowArchive() { addArchive(HUD_DATA_FOLDER); }
};

// A HUD on a script, in which the effect "known" is registered.
struct Stage
{
    explicit Stage(const std::string& script) : mHud(mArchive)
    {
        Script::LoadXML().loadMem(script.data(), static_cast<long>(script.size()), mEngine);
        mEngine.addCallback("known", &mKnown);
        mHud.setScriptEngine(&mEngine);
    }

    // Presses keys, named or by what they type; "^" before a key holds Ctrl: "Right Down ^n a b Return".
    void keys(const std::string& text)
    {
        static const std::map<std::string, int> named = {
            {"Backspace", 8}, {"Return", 13}, {"Blank", 32},  {"Delete", 127}, {"Minus", 269},  {"Plus", 270},
            {"Up", 273},      {"Down", 274},  {"Right", 275}, {"Left", 276},   {"Insert", 277}, {"NumLock", 300},
            {"F2", 283},      {"F3", 284},    {"F4", 285},    {"Quote", '"'},  {"Caret", '^'}};
        std::istringstream words(text);
        for (std::string word; words >> word;)
        {
            Tidewheel::Event event;
            event.type = Tidewheel::EVENT_KEYDOWN;
            event.ctrl = word[0] == '^';
            word.erase(0, event.ctrl);
            event.key = word.size() == 1 ? word[0] : named.at(word);
            send(event);
        }
    }
    void time(float seconds, float start = 0.0f, float fps = 0.0f)
    {
        Tidewheel::Event event;
        event.type = Tidewheel::EVENT_TIME;
        event.time = seconds;
        event.start = start;
        event.fps = fps;
        send(event);
    }
    void send(Tidewheel::Event event)
    {
        Tidewheel::Events events;
        events.count = 1;
        events.events = &event;
        mHud.processEvents(events);
    }

    Script::Effect& effect(std::size_t i) { return *mEngine.mEffects.at(i); }
    Script::Trigger& trigger(std::size_t k) { return *effect(0).mTriggers.at(k); }
    Script::Spline& spline(std::size_t s) { return *effect(0).mSplines.at(s); }
    std::string saved() { return Script::SaveXML().saveMem(mEngine); }

    ShowArchive mArchive;
    Known mKnown;
    Script::ScriptEngine mEngine;
    Tidewheel::HUD mHud;
};

inline std::uint32_t pixel(const Tidewheel::HUDBase& hud, int x, int y)
{
    return hud.mData[y * hud.mWidth + x];
}

// Does `text` stand at (x, y) in this colour, with all its ink and nothing of the colour in between? The cells' first
// two rows hold no letters, and may lie on a line of the frame or on a descender of the text above.
inline bool hasText(const Tidewheel::HUDBase& hud, const std::string& text, int x, int y, std::uint32_t colour)
{
    for (const char character : text)
    {
        const int code = static_cast<unsigned char>(character);
        const unsigned char* ink = hud.mFont + code * hud.mCharWidth * hud.mCharHeight;
        for (int row = 2; row < hud.mCharHeight; ++row)
            for (int column = 0; column < hud.mCharAdvance[code] && column < hud.mCharWidth; ++column)
                if ((pixel(hud, x + column, y + row) == colour) != (ink[row * hud.mCharWidth + column] == 1))
                    return false;
        x += hud.mCharAdvance[code];
    }
    return true;
}

} // namespace HudTest
