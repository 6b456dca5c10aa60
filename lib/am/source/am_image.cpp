#include "am_image.h"

#include <cstddef>
#include <new>

#include "am_exception.h"
#include "am_imagemanager.h"

namespace AM
{
ImageObject::ImageObject(int, int, const unsigned char*, const ImageManager* loader, const std::string& id)
    : mId(id), mLoader(const_cast<ImageManager*>(loader))
{
}

ImageObject::~ImageObject()
{
    setData(0, 0, nullptr);
}

unsigned char* ImageObject::getWriteData()
{
    if (mLoader) throw Exception("ImageObbject::getWriteData, Access not allowed!");
    return mImageData;
}

void ImageObject::resize(int width, int height)
{
    setData(0, 0, nullptr);
    if (width < 0 || height < 0) throw Exception("ImageObject::resize, Bad size (%dx%d)", width, height);
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    unsigned char* data = nullptr;
    if (pixels > 0)
    {
        if (pixels <= MAX_IMAGE_PIXELS) data = new (std::nothrow) unsigned char[pixels * sizeof(BGRA)];
        if (!data) throw Exception("ImageObject::resize, Not enough memory (%dx%d)", width, height);
    }
    setData(width, height, data);
}

void ImageObject::setData(int width, int height, unsigned char* data)
{
    mImageWidth = 0;
    mImageHeight = 0;
    delete[] mImageData;
    mImageData = data;
    mImageWidth = width;
    mImageHeight = height;
}

ImageRefCounter::ImageRefCounter(ImageObject* object) : mObject(object) {}

int ImageRefCounter::addRef(ImageObject*)
{
    return ++mRef;
}

int ImageRefCounter::getRef(ImageObject*) const
{
    return mRef;
}

int ImageRefCounter::decRef(ImageObject*)
{
    if (mRef > 0) --mRef;
    if (!mObject) return 0;
    if (mObject->getManager() && mRef == 1)
    {
        // Drops the cache's own reference, and with it the object and this counter. The name must outlive both.
        const std::string id = mObject->getId();
        mObject->getManager()->removeImage(id);
        return 0;
    }
    if (mRef != 0) return mRef;
    delete mObject;
    delete this;
    return 0;
}

Image::Image(ImageObject* object)
{
    assign(object);
}

Image::Image(const Image& other) : mObjectRef(other.mObjectRef)
{
    if (mObjectRef) mObjectRef->addRef(nullptr);
}

Image& Image::operator=(const Image& other)
{
    if (mObjectRef == other.mObjectRef) return *this;
    // The reference is taken first: releasing may destroy what `other` lies in.
    ImageRefCounter* counter = other.mObjectRef;
    if (counter) counter->addRef(nullptr);
    release();
    mObjectRef = counter;
    return *this;
}

Image& Image::operator=(ImageObject* object)
{
    assign(object);
    return *this;
}

Image::~Image()
{
    release();
}

void Image::assign(ImageObject* object)
{
    if (object && mObjectRef && mObjectRef->mObject == object) return;
    release();
    if (!object) return;
    try
    {
        mObjectRef = new ImageRefCounter(object);
    }
    catch (...)
    {
        delete object;
        throw;
    }
    mObjectRef->addRef(nullptr);
}

void Image::release()
{
    if (!mObjectRef) return;
    ImageRefCounter* counter = mObjectRef;
    mObjectRef = nullptr;
    counter->decRef(nullptr);
}

ImageObject* Image::operator->() const
{
    if (!mObjectRef) throw Exception("Image::operator->() - Attempt to dereference (NULL)ImageObject!");
    return mObjectRef->mObject;
}

ImageObject& Image::operator*() const
{
    if (!mObjectRef) throw Exception("Image::operator*() Attempt to dereference (NULL)ImageObject!");
    return *mObjectRef->mObject;
}
} // namespace AM
