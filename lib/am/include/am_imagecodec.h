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
    virtual ~ImageCodec();

    // Fills `image` from a file of `length` bytes in memory. Throws AM::Exception and leaves the image without pixels.
    virtual void decodeImage(const unsigned char* pBuf, std::size_t length, ImageObject& image) = 0;

    // Makes a file in a new array, which belongs to the caller. False when that is not possible.
    virtual bool encodeImage(unsigned char** pBuf, std::size_t* length, ImageObject& image);

    // The file extension in lower case.
    virtual std::string getFormatString() const = 0;

    virtual bool canWrite() const;
};

// The largest picture that a file may claim. A decoder needs up to ten bytes of memory for each pixel.
const unsigned long long maxImagePixels = 1ull << 27;
}
