#pragma once

#include "music.h"

#include <string>
#include <vector>

namespace Timeline
{

struct Onset
{
    double time;     // seconds, of the attack
    double strength; // by how much it gets louder; 1 for the strongest
};

// A stretch of the music that is about as loud throughout.
struct Section
{
    double from, to; // seconds
    double level;    // decibels; 0 is a full-scale square
};

// What a piece of music of one tempo offers to lean on.
struct Rhythm
{
    double seconds; // length of the piece
    double guess;   // beats a minute by aubio alone; 0 if it found none
    double bpm;     // of the grid that fits the whole piece best
    double offset;  // time of the first beat, seconds; a hair below 0 at most
    double fit;     // 0 to 1: how much of the onsets' strength lies on sixteenths
    int firstBar;   // index of the beat with which the first whole bar begins
    std::vector<double> beats;
    std::vector<Onset> onsets;
    std::vector<Section> sections;

    std::vector<double> bars() const; // a bar has four beats
};

const int BEATS_PER_BAR = 4;

// Finds the rhythm of a piece; with `bpm` above 0 only the place of the grid. aubio finds the onsets and a first tempo;
// the grid is the comb that gathers most of the onsets' strength over the whole piece, put on their attacks. Throws
// Failure for music without onsets, or too short for a grid.
Rhythm findRhythm(const Music& music, double bpm);

} // namespace Timeline
