#include <memory>

#include "am_testing.h"
#include "am_videofile_imagedumper.h"

using AM::VideoFile;

namespace
{
const VideoFile::Format format = {2, 1, 25, 2};
}

TEST(VideoFile, takesPngNamesAloneAndCutsThemAtTheLastDot)
{
    AM::ArchiveManager archive;
    const unsigned char byte = 0;
    EXPECT_EQ("Could not find something that could read from 'a.png'",
              getError([] { VideoFile::createForRead("a.png"); }));
    EXPECT_EQ("Could not find something that could read from buffer",
              getError([&] { VideoFile::createForRead(&byte, 1); }));
    EXPECT_NE("", getError([] { VideoFile::createForWrite("dump.png", format, nullptr); }));
    for (const char* name : {"dump.PNG", "", "png", "a.png."})
        EXPECT_EQ("Could not find something that could write to '" + std::string(name) + "'",
                  getError([&] { VideoFile::createForWrite(name, format, &archive); }));
    for (const auto& [name, base] : {std::pair("a.b.png", "a.b"), {"xpng", "xpng"}, {".png", ".png"}})
    {
        AM::VideoFileImageDumper dumper;
        EXPECT_TRUE(dumper.openForWrite(name, format, &archive));
        EXPECT_EQ(base, dumper.mFilename);
        EXPECT_EQ(2, dumper.getFormat().frameRateBase);
    }
}

TEST(VideoFileImageDumper, writesEachFrameAsItIsThen)
{
    TemporaryFolder folder;
    AM::ArchiveManager archive;
    archive.addArchive(folder.path);
    std::unique_ptr<VideoFile> video(VideoFile::createForWrite("dump.png", format, &archive));
    AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, ""));
    image->resize(2, 1);
    video->attach(image);
    video->attach(image);
    EXPECT_EQ(2, image.mObjectRef->mRef);
    // The second frame finds its name taken by a folder: it is dropped, its number used up.
    std::filesystem::create_directory(folder.path + "dump.0000000001.png");
    for (const unsigned char frame : {0, 1, 2})
    {
        std::fill_n(image->getWriteData(), 8, frame);
        video->writeFrame();
    }
    for (const unsigned char frame : {0, 2})
    {
        AM::Image written = archive.loadImage("dump.000000000" + std::to_string(frame) + ".png", -1, true);
        EXPECT_EQ(Bytes(8, frame), Bytes(written->getData(), written->getData() + 8));
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path + "dump.0000000003.png"));
    video.reset();
    EXPECT_EQ(1, image.mObjectRef->mRef);
}
