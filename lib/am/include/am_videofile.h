#pragma once

#include <string>

#include "am_image.h"

namespace AM
{
class ArchiveManager;

// A video stream that is read or written frame by frame.
class VideoFile
{
public:
    // frameRate / frameRateBase frames a second.
    struct Format
    {
        int width;
        int height;
        int frameRate;
        int frameRateBase;
    };

    virtual ~VideoFile() = default;

    // The image that holds one frame after the other. Its pixels are not copied.
    virtual void attach(Image& image) = 0;

    virtual bool readFrame() { return false; }
    virtual void writeFrame() {}
    virtual Format getFormat() const = 0;
    virtual int getWidth() const = 0;
    virtual int getHeight() const = 0;

    // False from an implementation that cannot do what is asked.
    virtual bool openForRead(const std::string&) { return false; }
    virtual bool openForRead(const unsigned char*, int) { return false; }
    virtual bool openForWrite(const std::string&, const Format&, ArchiveManager*) { return false; }

    // Offers one more implementation, which is asked before the system's own and before those offered earlier. Always
    // true, so that a constant can hold the call.
    static bool offer(VideoFile* (*make)());

    // The first implementation that takes the job; it belongs to the caller. Throws AM::Exception when none does.
    static VideoFile* createForRead(const std::string& filename);
    static VideoFile* createForRead(const unsigned char* buffer, int bufferLength);
    static VideoFile* createForWrite(const std::string& filename, const Format& format, ArchiveManager* archive);
};
} // namespace AM
