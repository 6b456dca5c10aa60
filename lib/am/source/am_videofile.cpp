#include "am_videofile.h"

#include <memory>

#include "am_exception.h"
#include "am_videofile_imagedumper.h"

namespace AM
{
namespace
{
// The implementations in the order in which they are tried; null behind the last one.
VideoFile* getImpl(int index)
{
    return index == 0 ? new VideoFileImageDumper : nullptr;
}

// The first implementation whose `open` succeeds, else null.
template <class Open> VideoFile* findImpl(Open open)
{
    for (int index = 0;; ++index)
    {
        std::unique_ptr<VideoFile> file(getImpl(index));
        if (!file || open(*file)) return file.release();
    }
}
} // namespace

VideoFile* VideoFile::createForRead(const std::string& filename)
{
    VideoFile* file = findImpl([&](VideoFile& candidate) { return candidate.openForRead(filename); });
    if (!file) throw Exception("Could not find something that could read from '%s'", filename.c_str());
    return file;
}

VideoFile* VideoFile::createForRead(const unsigned char* buffer, int bufferLength)
{
    VideoFile* file = findImpl([&](VideoFile& candidate) { return candidate.openForRead(buffer, bufferLength); });
    if (!file) throw Exception("Could not find something that could read from buffer");
    return file;
}

VideoFile* VideoFile::createForWrite(const std::string& filename, const Format& format, ArchiveManager* archive)
{
    VideoFile* file = findImpl([&](VideoFile& candidate) { return candidate.openForWrite(filename, format, archive); });
    if (!file) throw Exception("Could not find something that could write to '%s'", filename.c_str());
    return file;
}
} // namespace AM
