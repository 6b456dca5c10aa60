#pragma once

#include <string>

namespace AM
{
class ImageManager;

// One pixel. This order holds for every picture of the system; rows follow each other without padding, the top row
// first, and a picture without alpha has alpha 255.
struct BGRA
{
    unsigned char b, g, r, a;
};

// The largest picture there can be, whatever a file claims. Decoding takes up to ten bytes of memory for each pixel.
const unsigned long long MAX_IMAGE_PIXELS = 1ull << 27;

// A block of pixels with its size and name. One that a manager caches is shared, and so read-only.
class ImageObject
{
public:
    // Starts without pixels, whatever the size and data given: resize or setData bring them.
    ImageObject(int width, int height, const unsigned char* data, const ImageManager* loader, const std::string& id);
    ImageObject(const ImageObject&) = delete;
    ImageObject& operator=(const ImageObject&) = delete;
    ~ImageObject();

    ImageManager* getManager() const { return mLoader; }
    void setManager(ImageManager* manager) { mLoader = manager; }

    // The name. That of a managed image is its key in the cache and has to stay.
    const std::string& getId() const { return mId; }
    void setId(const std::string& id) { mId = id; }

    int getWidth() const { return mImageWidth; }
    int getHeight() const { return mImageHeight; }

    // The pixels themselves, width * height * 4 bytes; null when there are none.
    const unsigned char* getData() const { return mImageData; }

    // The same for writing. Throws AM::Exception for a managed image.
    unsigned char* getWriteData();

    // Frees the pixels and makes room for new ones, which are not cleared. No room for a width or height of 0. Throws
    // AM::Exception, and leaves no pixels, for a negative size, more than MAX_IMAGE_PIXELS, or a lack of memory.
    void resize(int width, int height);

    // Replaces the pixels by `data`, which comes from array new and belongs to the image from here on.
    void setData(int width, int height, unsigned char* data);

    std::string mId;
    ImageManager* mLoader; // not owned; null for an image that belongs to its users alone
    int mImageWidth = 0;
    int mImageHeight = 0;
    unsigned char* mImageData = nullptr; // owned, from array new
};

// What all handles of one image share. The last reference deletes the image and the counter.
class ImageRefCounter
{
public:
    explicit ImageRefCounter(ImageObject* object);

    // The arguments are not looked at. Each gives the count that is left.
    int addRef(ImageObject*);
    int getRef(ImageObject*) const;

    // When only the reference of the manager's cache is left, the manager drops that one as well.
    int decRef(ImageObject*);

    ImageObject* mObject; // owned
    int mRef = 0;
};

// The reference-counted handle in which every image travels.
class Image
{
public:
    Image(ImageObject* object = nullptr);
    Image(const Image& other);
    Image& operator=(const Image& other);
    Image& operator=(ImageObject* object);
    ~Image();

    // Lets go of what was held and owns `object` from here on; null gives a null image.
    void assign(ImageObject* object);
    void release();

    bool isNull() const { return !mObjectRef; }

    // Both throw AM::Exception on a null image.
    ImageObject* operator->() const;
    ImageObject& operator*() const;

    ImageRefCounter* mObjectRef = nullptr; // shared; null for a null image
};
} // namespace AM
