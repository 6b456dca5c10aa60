#include "am_videofile.h"

#include <memory>
#include <vector>

#include "am_exception.h"
#include "am_videofile_imagedumper.h"

namespace AM
{
namespace
{
VideoFile* makeImageDumper()
{
    return new VideoFileImageDumper;
}

// The makers of all implementations, in the order in which they are tried from the last to the first.
std::vector<VideoFile* (*)()>& makers()
{
    static std::vector<VideoFile* (*)()> list = {makeImageDumper};
    return list;
}

// The first implementation whose `open` succeeds, else null.
template <class Open> VideoFile* findImpl(Open open)
{
    for (auto make = makers().rbegin(); make != makers().rend(); ++make)
    {
        std::unique_ptr<VideoFile> file((*make)());
        if (open(*file)) return file.release();
    }
    return nullptr;
}
} // namespace

bool VideoFile::offer(VideoFile* (*make)())
{
    makers().push_back(make);
    return true;
}

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
