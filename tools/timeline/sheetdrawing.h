#pragma once

#include "music.h"
#include "rhythm.h"
#include "score.h"

#include <string>
#include <vector>

namespace Timeline
{

// A small picture of the show, as the bytes of a PNG file.
struct SheetPicture
{
    double time;
    int width;
    int height;
    std::string png;
};

// The whole show as one drawing: the music with its beats, bars and pictures, and below it a row for each entry with
// its bar, its triggers and the player's own curves; a comment ahead of an entry heads what follows it. Time is a scale
// that the page changes as it is looked at.
class SheetDrawing
{
public:
    // `music` and `rhythm` may be null. What is given must live as long as this.
    SheetDrawing(const Score& score, const Music* music, const Rhythm* rhythm, std::vector<SheetPicture> pictures);

    // One HTML page that needs nothing else.
    std::string page() const;

    // One SVG picture; `scale` is in pixels a second.
    std::string still(double scale) const;

private:
    struct Row
    {
        const Entry* entry; // null for a heading
        std::string heading;
        int y;
        int height;
    };

    void layOut();
    std::string drawHeadNames() const;
    std::string drawHead(double scale) const;
    std::string drawWave() const;
    std::string drawNames() const;
    std::string drawRows(double scale) const;
    std::string drawEntry(const Row& row, double scale) const;
    std::string lines(const char* kind, const std::vector<double>& times, int top, int bottom) const;
    std::string data(double scale) const;

    const Score& mScore;
    const Music* mMusic;
    const Rhythm* mRhythm;
    std::vector<SheetPicture> mPictures;
    std::vector<Row> mRows;
    std::vector<std::pair<double, std::string>> mHeadings; // show time, words
    double mSeconds;                                       // width of the drawing
    int mNamesWidth = 0;
    int mWaveTop = 0, mPicturesTop = 0, mHeadHeight = 0, mRowsHeight = 0;
};

} // namespace Timeline
