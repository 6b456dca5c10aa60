#pragma once

#include "edits.h"
#include "score.h"

#include <functional>
#include <string>

namespace Timeline
{

// Where the times of a show go: from seconds to seconds.
struct TimeMap
{
    std::function<double(double)> point; // starts, triggers, keys
    std::function<double(double)> end;   // ends, which do not belong to their entry any more
    double slope = 1.0;                  // of distances, such as the delay of a trigger

    // Whether anything in an entry of this time may move: an entry that is over before the first change keeps the keys
    // behind its end, for they shape its curves.
    std::function<bool(double start, double end)> concerns = [](double, double) { return true; };
};

// What a change of times has done.
struct TimeChanges
{
    int moved = 0;     // entries whose start went elsewhere
    int stretched = 0; // entries whose length is another
    int triggers = 0;  // triggers and keys with another time in their entry
    int keys = 0;

    std::string text() const;
};

// From `from` on, up to `to`, everything moves by `by` seconds; what spans `from` is stretched, and what repeats across
// a border is cut in two.
TimeMap shiftMap(double from, double to, double by);

// A piece of `fromTempo` beats a minute as one of `toTempo`, with `origin` staying where it is.
TimeMap tempoMap(double fromTempo, double toTempo, double origin);

// Sends all times of a script through a map: those of entries, of the entries in them, of triggers and of keys, in the
// show's time, whatever their own zero, scale and offset are. Throws Failure when keys would lose their order or an
// entry its length, unless `force` is set.
TimeChanges mapTimes(const Score& score, Edits& edits, const TimeMap& map, bool force);

} // namespace Timeline
