#include "am_imagemanager.h"

#include <algorithm>
#include <cctype>
#include <memory>

#include "am_exception.h"
#include "am_imagecodec_jpeg.h"
#include "am_imagecodec_png.h"
#include "am_imagecodec_tga.h"

namespace AM
{
ImageManager::ImageManager()
{
    addCodec(new ImageCodecPNG);
    addCodec(new ImageCodecJPEG);
    addCodec(new ImageCodecTGA);
}

ImageManager::~ImageManager()
{
    for (const auto& entry : mImageCodecs) delete entry.second;
    mImageCodecs.clear();
    empty();
}

void ImageManager::addCodec(ImageCodec* codec)
{
    mImageCodecs[codec->getFormatString()] = codec;
}

Image ImageManager::loadImage(const std::string& fileId, File fileData, bool uniqueAccess)
{
    if (!uniqueAccess)
    {
        Image cached = getImage(fileId);
        if (!cached.isNull()) return cached;
    }

    std::unique_ptr<ImageObject> object(new ImageObject(0, 0, nullptr, uniqueAccess ? nullptr : this, fileId));
    ImageCodec* codec = getCodec(getExtension(fileId));
    if (!codec) throw Exception("AM::ImageManager::loadImage, No decoder found for %s", fileId.c_str());
    if (fileData.isNull()) throw Exception("AM::loadImage, File not found (%s)", fileId.c_str());
    codec->decodeImage(fileData->data, static_cast<std::size_t>(fileData->length), *object);

    Image image(object.release());
    if (!uniqueAccess) mImageCache[fileId] = image;
    return image;
}

Image ImageManager::getImage(const std::string& fileId) const
{
    const auto entry = mImageCache.find(fileId);
    return entry == mImageCache.end() ? Image() : entry->second;
}

int ImageManager::removeImage(const std::string& imageFileId)
{
    const auto entry = mImageCache.find(imageFileId);
    if (entry == mImageCache.end())
        throw Exception("AM::ImageManager::removeImage, Image %s not found!", imageFileId.c_str());
    // With other handles about, their image stops being managed: it must not look for this entry at its end.
    if (entry->second.mObjectRef->getRef(nullptr) > 1) entry->second->setManager(nullptr);
    mImageCache.erase(entry);
    return 0;
}

File ImageManager::encodeImage(const std::string& filename, Image& image)
{
    ImageCodec* codec = getCodec(getExtension(filename));
    if (!codec || !codec->canWrite()) return File();

    ImageObject& object = *image;
    File file = new FileStructure;
    file->filename = filename;
    std::size_t length = 0;
    if (!codec->encodeImage(&file->data, &length, object)) return File();
    file->length = static_cast<long>(length);
    return file;
}

std::string ImageManager::getExtension(const std::string& name) const
{
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos ? std::string() : name.substr(dot + 1);
}

ImageCodec* ImageManager::getCodec(const std::string& extension)
{
    std::string key = extension;
    std::transform(key.begin(), key.end(), key.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    const auto entry = mImageCodecs.find(key);
    return entry == mImageCodecs.end() ? nullptr : entry->second;
}

// The images no longer point at this manager, so that they can outlive it.
void ImageManager::empty()
{
    for (const auto& entry : mImageCache) entry.second->setManager(nullptr);
    mImageCache.clear();
}
} // namespace AM
