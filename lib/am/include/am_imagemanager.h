#pragma once

#include <map>
#include <string>

#include "am_file.h"
#include "am_image.h"

namespace AM
{
class ImageCodec;

// The cache of decoded images by file name, and the owner of the codecs. The cache does not keep an image alive: an
// entry goes with the last handle that somebody outside holds. Images may outlive their manager.
class ImageManager
{
public:
    ImageManager();
    ImageManager(const ImageManager&) = delete;
    ImageManager& operator=(const ImageManager&) = delete;
    ~ImageManager();

    // The cached image of that name, else the decoded content of fileData; the extension of fileId alone chooses the
    // codec. With uniqueAccess the image is a private, writable one that the cache neither gives nor gets. Throws
    // AM::Exception when there is no codec or the file cannot be decoded; the cache is then as it was.
    Image loadImage(const std::string& fileId, File fileData, bool uniqueAccess);

    // The cached image, or a null image.
    Image getImage(const std::string& fileId) const;

    // Drops the cache entry and returns 0; handles that are still held become private images. Throws AM::Exception
    // for an unknown name.
    int removeImage(const std::string& imageFileId);

    // The image as a file, in the format of the extension of `filename`; a null File when there is no codec that can
    // write it. Throws AM::Exception for a null image or a managed one.
    File encodeImage(const std::string& filename, Image& image);

    std::map<std::string, Image> mImageCache;
    std::map<std::string, ImageCodec*> mImageCodecs; // owned, by lower-case extension

private:
    std::string getExtension(const std::string& name) const;
    ImageCodec* getCodec(const std::string& extension);
    void addCodec(ImageCodec* codec);
    void empty();
};
} // namespace AM
