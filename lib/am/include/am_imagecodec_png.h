#pragma once

#include "am_imagecodec.h"

namespace AM
{
// Reads 8-bit RGB and RGBA pictures, writes RGBA.
class ImageCodecPNG : public ImageCodec
{
public:
    void decodeImage(const unsigned char* pBuf, std::size_t length, ImageObject& image) override;

    // Throws AM::Exception for a managed image, since the pixels are taken through getWriteData.
    bool encodeImage(unsigned char** pBuf, std::size_t* length, ImageObject& image) override;

    std::string getFormatString() const override;
    bool canWrite() const override;
};
} // namespace AM
