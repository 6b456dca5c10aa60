#pragma once

#include <vector>

// The piece as a list of notes, for the program that plays it and for makers of scenes that want lights and movements
// to follow what is heard. Every time is in seconds of the music, and so of the show.
namespace Music
{

// The tempo grid of the whole show: 120 beats a minute, so that a beat is half a second, a bar of four beats two
// seconds, and a sixteenth an eighth of a second. The show's script counts on it.
const double SECONDS_PER_BEAT = 0.5;
const double SECONDS_PER_BAR = 4.0 * SECONDS_PER_BEAT;
const double SECONDS_PER_STEP = SECONDS_PER_BEAT / 4.0;
const int BARS = 104;
const double SECONDS = BARS * SECONDS_PER_BAR;

// A part of the piece, for those who look at the grid.
struct Section
{
    const char* name;
    int firstBar;
};

extern const std::vector<Section> SECTIONS;

// How loud the whole is played: decibels at a place in the piece, on straight lines between.
struct Dynamic
{
    double bar;
    double decibels;
};

extern const std::vector<Dynamic> DYNAMICS;

// What a note is played on.
enum class Voice
{
    Pad,
    Choir,
    Bass,
    Pluck,
    Lead,
    Counter, // a second, softer melody
    Bell,
    Kick,
    Snare,
    Clap,
    Shaker,
    Hat,
    OpenHat,
    Tom,
    Heart, // one thump; a heartbeat is two of them, a quarter second apart
    Impact,
    Riser,
    Wind,
    Crackle,
};

// "pad", "open hat" and so on.
const char* nameOf(Voice voice);

struct Note
{
    Voice voice;
    double start;      // seconds
    double length;     // seconds; 0 for what is struck and rings out by itself
    double hertz;      // pitch; 0 for what has none
    float level;       // linear, 1 for a full note
    float pan;         // -1 left to 1 right
    double brightness; // how far the filter of pads, basses and plucks opens, in hertz; 0 elsewhere
};

// All notes of the piece in the order of their starts.
const std::vector<Note>& notes();

// The notes of one voice that start at `from` seconds or later and before `to`.
std::vector<Note> notes(Voice voice, double from = 0.0, double to = SECONDS);

} // namespace Music
