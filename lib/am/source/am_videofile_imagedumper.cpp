#include "am_videofile_imagedumper.h"

#include <cstddef>
#include <cstdio>

#include "am.h"

namespace AM
{
VideoFileImageDumper::VideoFileImageDumper() : mFormat{0, 0, 0, 1} {}

VideoFileImageDumper::~VideoFileImageDumper()
{
    close();
}

void VideoFileImageDumper::attach(Image& image)
{
    mImage = image;
}

void VideoFileImageDumper::writeFrame()
{
    char name[1024];
    std::snprintf(name, sizeof name, "%s.%010d.%s", mFilename.c_str(), mFrameNumber, mExtension.c_str());
    mArchive->writeImage(name, mImage);
    ++mFrameNumber;
}

VideoFile::Format VideoFileImageDumper::getFormat() const
{
    return mFormat;
}

int VideoFileImageDumper::getWidth() const
{
    return mFormat.width;
}

int VideoFileImageDumper::getHeight() const
{
    return mFormat.height;
}

// The first character is never looked at, so a name without a dot has an extension too: all but that character.
bool VideoFileImageDumper::openForWrite(const std::string& filename, const Format& format, ArchiveManager* archive)
{
    if (!archive) return false;
    mArchive = archive;
    mExtension.clear();
    mFilename = filename;
    for (std::size_t i = filename.size(); i > 1; --i)
    {
        const char character = filename[i - 1];
        if (character == '.')
        {
            mFilename.resize(i - 1);
            break;
        }
        mExtension.insert(mExtension.begin(), character);
    }
    if (mExtension != "png") return false;
    mFormat = format;
    mFrameNumber = 0;
    return true;
}

void VideoFileImageDumper::close()
{
    mImage.release();
}
} // namespace AM
