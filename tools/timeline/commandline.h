#pragma once

// What the command lines of the commands have in common.

#include "score.h"
#include "show.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <string>

namespace Timeline
{

// Where a command finds its script: FILE, or the show in the current folder or in that of --show.
struct Source
{
    void addTo(CLI::App& command);

    Score load() const;

    // The place of the script as a file, for a command that writes back into it. Throws Failure for one in a zip.
    std::string path() const;

    std::string file;
    std::string show;
};

// Where an edited script goes: -o OUT, or --in-place.
struct Target
{
    void addTo(CLI::App& command);

    // Writes `text`. `source` is where the script came from.
    void write(const std::string& text, const Source& source) const;

    // Prints a line about what was done, where it does not get into the script.
    void tell(const std::string& line) const;

    std::string out;
    bool inPlace = false;
};

// Adds a command: a line about it, and what more there is to tell, which help wraps.
CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& about, const std::string& details);

// Help as CLI11 formats it, in the words of this program and with wrapped texts. For the app; its commands inherit it.
std::shared_ptr<CLI::Formatter> helpFormatter();

// Breaks lines between words, at 80 columns at most; a line end in the text stays.
std::string wrapped(const std::string& text);

// The folder of the show that --show names, or the current one.
inline std::string showFolder(const std::string& option)
{
    return option.empty() ? "." : option;
}

void addShow(CLI::App& command, std::string& show);
void addJson(CLI::App& command, bool& json);

// Text that may hold any bytes, as JSON takes it: bytes that are not UTF-8 become the characters of the same numbers.
std::string jsonText(const std::string& text);

// Prints one JSON value, indented, with a line end.
template <class Json> void printJson(const Json& value)
{
    const std::string text = value.dump(2) + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
}

} // namespace Timeline
