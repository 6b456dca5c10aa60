#include "am_testing.h"

using AM::Image;
using AM::ImageManager;
using AM::ImageObject;

namespace
{
const Bytes onePixel = readSample("one_pixel.png");
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

TEST(Image, countsItsHandlesAndHasRoomForItsPixels)
{
    Image first(makeImage(3, 2)), second(first), third;
    first->getWriteData()[3 * 2 * 4 - 1] = 1;
    third = first;
    Image& self = third;
    third = self;
    third = second;
    EXPECT_EQ(3, first.mObjectRef->getRef(nullptr));
    second.release();
    second.release();
    third = makeImage(2, 1);
    third = &*third;
    EXPECT_EQ(1, first.mObjectRef->mRef);
    EXPECT_EQ(2, third->getWidth());
    third.assign(nullptr);
    EXPECT_EQ("Image::operator->() - Attempt to dereference (NULL)ImageObject!", getError([&] { third->getWidth(); }));
    EXPECT_EQ("Image::operator*() Attempt to dereference (NULL)ImageObject!", getError([&] { (*third).getWidth(); }));

    first->resize(0, 7);
    EXPECT_EQ(nullptr, first->getData());
    EXPECT_EQ(7, first->getHeight());
    EXPECT_EQ("ImageObject::resize, Bad size (-1x2)", getError([&] { first->resize(-1, 2); }));
    EXPECT_EQ("ImageObject::resize, Not enough memory (70000x70000)", getError([&] { first->resize(70000, 70000); }));
    EXPECT_EQ(0, first->getWidth() + first->getHeight());
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

TEST(ArchiveManager, writesAndReadsImagesAndTellsWhatItCannot)
{
    TemporaryFolder folder;
    AM::ArchiveManager manager;
    manager.addArchive(folder.path);
    for (const char* name : {"a.png", "a.jpg", "a.TGA", "a.jpeg", "nodot"}) folder.write(name, onePixel);
    const auto tryLoading = [&](const char* name) { return getError([&] { manager.loadImage(name, -1, false); }); };
    EXPECT_EQ("AM::ImageManager::loadImage, No decoder found for nodot", tryLoading("nodot"));
    EXPECT_EQ("AM::ImageManager::loadImage, No decoder found for a.jpeg", tryLoading("a.jpeg"));
    EXPECT_EQ("[AM::ImageCodec] TGA-reader is not done yet!", tryLoading("a.TGA"));
    EXPECT_EQ("Internal jpeglib error; Not a JPEG file: starts with 0x89 0x50", tryLoading("a.jpg"));
    EXPECT_EQ("AM::loadImage, File not found (b.png)", tryLoading("b.png"));
    EXPECT_TRUE(manager.mImageManager->mImageCache.empty());

    Image image = manager.loadImage("a.png", -1, true), cached = manager.loadImage("a.png", -1, false), null;
    for (const char* name : {"a.jpg", "a.tga", "a.gif", "a", "missing/b.png"})
        EXPECT_FALSE(manager.writeImage(name, image)) << name;
    EXPECT_TRUE(manager.writeImage("b.PNG", image));
    EXPECT_EQ(20, manager.loadImage("b.PNG", -1, false)->getData()[1]);
    EXPECT_EQ("Image::operator*() Attempt to dereference (NULL)ImageObject!",
              getError([&] { manager.writeImage("b.png", null); }));
    EXPECT_EQ(notAllowed, getError([&] { manager.writeImage("b.png", cached); }));
}
