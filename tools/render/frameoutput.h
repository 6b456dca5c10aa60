#pragma once

#include "am_videofile.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// What a show's renderer does with its frames, in place of the program's own dump: hands them on raw, or compresses
// them on all cores. Drawing goes on meanwhile; it waits only where the frames that are under way would fill the
// memory.
//
// The name in the configuration's `videodump` tag says what is wanted:
//     raw:FIRST:COUNT:FD      frames as they are, 4 bytes a pixel (blue, green, red, alpha), top row first, to a file
//                             descriptor that the renderer was started with
//     png:FIRST:COUNT:PATH    PATH0000000000.png and so on; a file that is there already is kept
// FIRST frames are drawn and left out before the COUNT that are wanted (0: all to the show's end). After the last one
// the show is asked to end. Each frame that is done is told on the standard error stream as a line "frame N T", N from
// 1 and T the milliseconds of processor time that the program had taken when it was drawn, and each that is left out
// ahead of them as "passed N".
class FrameOutput : public AM::VideoFile
{
public:
    FrameOutput();
    ~FrameOutput() override; // waits for what is under way

    void attach(AM::Image& image) override;
    // Takes a copy of the attached image. Throws AM::Exception if an earlier frame could not be written.
    void writeFrame() override;
    Format getFormat() const override { return mFormat; }
    int getWidth() const override { return mFormat.width; }
    int getHeight() const override { return mFormat.height; }
    // False for a name that is not of the forms above.
    bool openForWrite(const std::string& name, const Format& format, AM::ArchiveManager* archive) override;

private:
    struct Frame
    {
        int number;        // from 0
        int processorTime; // when it was drawn, in milliseconds
        std::vector<unsigned char> pixels;
    };

    void work();
    void writeRaw(const Frame& frame);
    void writePng(const Frame& frame);
    std::string pathOf(int number) const;
    void finish();

    bool mIsRaw = false;
    int mFirst = 0;
    int mCount = 0;
    int mDescriptor = -1;
    std::string mPath;
    Format mFormat = {0, 0, 0, 1};
    AM::Image mImage;
    int mDrawn = 0;

    std::vector<std::thread> mWorkers;
    std::mutex mMutex; // for all that follows
    std::condition_variable mChanged;
    std::deque<Frame> mWaiting;
    bool mIsClosing = false;
    int mDone = 0;
    std::string mTrouble; // of the first frame that could not be written
};
