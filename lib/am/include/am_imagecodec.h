#pragma once

#include <cstddef>
#include <string>

namespace AM
{
class ImageObject;

// Turns the bytes of an image file into pixels and perhaps back.
class ImageCodec
{
public:
    virtual ~ImageCodec() = default;

    // Fills `image` from a file of `length` bytes in memory. Throws AM::Exception and leaves the image without pixels.
    virtual void decodeImage(const unsigned char* pBuf, std::size_t length, ImageObject& image) = 0;

    // Makes a file in a new array, which belongs to the caller. False when that is not possible.
    virtual bool encodeImage(unsigned char**, std::size_t*, ImageObject&) { return false; }

    // The file extension in lower case.
    virtual std::string getFormatString() const = 0;

    virtual bool canWrite() const { return false; }
};
} // namespace AM
