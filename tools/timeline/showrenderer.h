#pragma once

#include "show.h"

#include <memory>
#include <string>
#include <vector>

namespace Timeline
{

// Draws frames of a show by its own renderer, the program NAME-render, in a private show folder that borrows the
// author's files; so scripts can be tried, and this program knows no effect.
class ShowRenderer
{
public:
    struct Frame
    {
        std::vector<unsigned char> pixels; // blue, green, red, alpha; top row first
        double milliseconds;               // since the frame before was done: by the clock, or of processor time
    };

    // Which frames: the first drawn one lies a step behind `start`, a step is fpsBase / fps / frameSkip seconds, and
    // every frameSkip-th is kept. The first `skipped` of those are left out, then there are `count`.
    struct Range
    {
        double start = 0.0;
        int fps = 1000;
        int fpsBase = 1;
        int frameSkip = 1;
        int skipped = 0;
        int count = 1;
    };

    // `program`: path of the renderer; empty for the show's own. A size of 0 is that of the show's window. Starts a
    // virtual display where there is none. Throws Failure. As long as this lives, Ctrl+C waits until it has cleaned up.
    ShowRenderer(const Show& show, const std::string& program, int width, int height);
    ~ShowRenderer();
    ShowRenderer(const ShowRenderer&) = delete;
    ShowRenderer& operator=(const ShowRenderer&) = delete;

    // Measure the renderer's processor time, on all cores, instead of the time by the clock: what else runs on the
    // machine matters less, but a graphics card's work is not in it.
    void countProcessorTime(bool count) { mCountsProcessor = count; }

    int width() const { return mWidth; }
    int height() const { return mHeight; }

    // The frames of the show with this script; fewer where the show ends before. Throws Failure.
    std::vector<Frame> render(const std::string& script, const Range& range);

private:
    class SignalCatch;

    void layOut(const Show& show);
    void startDisplay();
    std::string configuration(const Range& range) const;
    std::vector<Frame> receive(int descriptor, int process, int count) const;

    std::unique_ptr<SignalCatch> mSignals; // goes last
    std::string mProgram;
    std::string mFolder; // with a slash at its end; removed at the end
    std::string mArchives;
    std::string mDisplay;
    int mServer = 0; // process of the virtual display, or 0
    bool mCountsProcessor = false;
    int mWidth;
    int mHeight;
};

} // namespace Timeline
