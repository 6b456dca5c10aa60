#pragma once

#include "am_videofile.h"

namespace AM
{
// Writes every frame as a numbered PNG file: "dump.png" gives dump.0000000000.png, dump.0000000001.png and so on.
class VideoFileImageDumper : public VideoFile
{
public:
    VideoFileImageDumper();
    ~VideoFileImageDumper() override;

    void attach(Image& image) override;

    // Writes the attached image, which must not be null or managed, into the first archive. A frame that cannot be
    // written is dropped and its number used up.
    void writeFrame() override;

    Format getFormat() const override;
    int getWidth() const override;
    int getHeight() const override;

    // The extension must be "png" in lower case.
    bool openForWrite(const std::string& filename, const Format& format, ArchiveManager* archive) override;

    // Lets go of the image.
    void close();

    ArchiveManager* mArchive = nullptr; // not owned
    Format mFormat;
    int mFrameNumber = 0;   // of the next frame
    std::string mFilename;  // up to the last dot, without it
    std::string mExtension; // behind the last dot
    Image mImage;           // what each frame writes
};
} // namespace AM
