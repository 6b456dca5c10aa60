#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Timeline
{

// Points in the music on which things may stand.
class Grid
{
public:
    // Even: `bpm` beats a minute, one of them at `offset` seconds. `division` is a note: 1/4 is a beat, 1/1 a bar.
    // Throws Failure for a tempo or division that makes no grid.
    Grid(double bpm, double offset, const std::string& division);

    // As found in the music: beats in ascending seconds, at least two; before the first and behind the last the grid
    // goes on evenly. Divisions of a beat lie evenly in it; of longer ones, the first begins at the first beat.
    Grid(std::vector<double> beats, const std::string& division);

    // The nearest point, in seconds.
    double nearest(double time) const;

    // The distance between points around `time`, in seconds.
    double step(double time) const;

private:
    double beatAt(double time) const; // beats since the first one
    double timeOf(double beat) const;

    std::vector<double> mBeats;
    double mBeatsPerPoint;
};

// The beats in a file that `timeline beats -o` writes: a JSON object whose "beats" is an array of seconds. A plain text
// with a number a line does as well. Throws Failure.
std::vector<double> readBeats(const std::string& path);

} // namespace Timeline
