#include "am_testing.h"

using AM::Image;
using AM::ImageManager;
using AM::ImageObject;

namespace
{
const Bytes onePixel = makePng(1, 1, 2, 8, {10, 20, 30});
const char* const notAllowed = "ImageObbject::getWriteData, Access not allowed!";

Image load(ImageManager& manager, const std::string& name, bool uniqueAccess = false)
{
    return manager.loadImage(name, toFile(name, onePixel), uniqueAccess);
}

ImageObject* makeImage(int width, int height)
{
    ImageObject* object = new ImageObject(0, 0, nullptr, nullptr, "hand");
    object->resize(width, height);
    return object;
}
} // namespace

TEST(Image, countsItsHandles)
{
    Image first(makeImage(1, 1)), second(first), third;
    third = first;
    Image& self = third;
    third = self;
    third = second;
    EXPECT_EQ(3, first.mObjectRef->getRef(nullptr));
    second.release();
    second.release();
    third = makeImage(2, 1);
    EXPECT_EQ(1, first.mObjectRef->mRef);
    EXPECT_EQ(2, third->getWidth());
    third.assign(nullptr);
    EXPECT_EQ("Image::operator->() - Attempt to dereference (NULL)ImageObject!", getError([&] { third->getWidth(); }));
    EXPECT_EQ("Image::operator*() Attempt to dereference (NULL)ImageObject!", getError([&] { (*third).getWidth(); }));
}

TEST(ImageObject, hasRoomForItsPixelsAndNoMore)
{
    Image image(makeImage(3, 2));
    image->getWriteData()[3 * 2 * 4 - 1] = 1;
    image->setData(1, 1, new unsigned char[4]());
    image->resize(0, 7);
    EXPECT_EQ(nullptr, image->getData());
    EXPECT_EQ(7, image->getHeight());
    EXPECT_EQ("ImageObject::resize, Bad size (-1x2)", getError([&] { image->resize(-1, 2); }));
    EXPECT_EQ("ImageObject::resize, Not enough memory (70000x70000)", getError([&] { image->resize(70000, 70000); }));
    EXPECT_EQ(0, image->getHeight());
}

TEST(ImageManager, sharesAnImageUntilTheLastOutsideHandleGoes)
{
    ImageManager manager;
    Image first = load(manager, "a.png");
    Image second = manager.loadImage("a.png", AM::File(), false); // the cache asks for no file
    EXPECT_EQ(&*first, &*second);
    EXPECT_EQ(3, first.mObjectRef->mRef);
    EXPECT_EQ(notAllowed, getError([&] { first->getWriteData(); }));
    first.release();
    EXPECT_FALSE(manager.getImage("a.png").isNull());
    second.release();
    EXPECT_TRUE(manager.mImageCache.empty());
    EXPECT_TRUE(manager.getImage("a.png").isNull());
    EXPECT_EQ("AM::ImageManager::removeImage, Image a.png not found!", getError([&] { manager.removeImage("a.png"); }));
}

TEST(ImageManager, givesPrivateImagesAndLetsOthersOutliveIt)
{
    Image removed, outliving, own;
    {
        ImageManager manager;
        outliving = load(manager, "X.PNG");
        removed = load(manager, "x.png");
        own = load(manager, "x.png", true);
        EXPECT_EQ(2u, manager.mImageCache.size());
        Image copy = removed;
        EXPECT_EQ(0, manager.removeImage("x.png"));
    }
    for (const Image& image : {removed, outliving, own})
    {
        EXPECT_EQ(2, image.mObjectRef->mRef); // with the one in the list
        EXPECT_EQ(30, image->getWriteData()[0]);
    }
}

TEST(ImageManager, tellsWhatItCannotLoadAndKeepsNothingOfIt)
{
    const std::string noDecoder = "AM::ImageManager::loadImage, No decoder found for ";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"nodot", noDecoder + "nodot"},
        {"a.jpeg", noDecoder + "a.jpeg"},
        {"a.TGA", "[AM::ImageCodec] TGA-reader is not done yet!"},
        {"a.jpg", "Internal jpeglib error; Not a JPEG file: starts with 0x89 0x50"}};
    ImageManager manager;
    for (const auto& entry : cases) EXPECT_EQ(entry.second, getError([&] { load(manager, entry.first); }));
    EXPECT_TRUE(manager.mImageCache.empty());
}

TEST(ArchiveManager, writesImagesThatMayBeWrittenAndReadsThem)
{
    TemporaryFolder folder;
    AM::ArchiveManager manager;
    manager.addArchive(folder.path);
    folder.write("a.png", onePixel);
    Image image = manager.loadImage("a.png", -1, true), cached = manager.loadImage("a.png", -1, false), null;
    for (const char* name : {"a.jpg", "a.tga", "a.gif", "a", "missing/b.png"})
        EXPECT_FALSE(manager.writeImage(name, image)) << name;
    EXPECT_TRUE(manager.writeImage("b.PNG", image));
    EXPECT_EQ(20, manager.loadImage("b.PNG", -1, false)->getData()[1]);
    EXPECT_EQ("Image::operator*() Attempt to dereference (NULL)ImageObject!",
              getError([&] { manager.writeImage("b.png", null); }));
    EXPECT_EQ(notAllowed, getError([&] { manager.writeImage("b.png", cached); }));
    std::filesystem::remove(folder.path + "a.png");
    EXPECT_EQ("AM::loadImage, File not found (a.png)", getError([&] { manager.loadImage("a.png", -1, false); }));
}
