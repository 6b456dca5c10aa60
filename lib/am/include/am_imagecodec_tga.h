#pragma once

#include "am_imagecodec.h"

namespace AM
{
// Knows the extension, so that a .tga file gets a message of its own, but cannot read it.
class ImageCodecTGA : public ImageCodec
{
public:
    void decodeImage(const unsigned char* pBuf, std::size_t length, ImageObject& image) override;
    std::string getFormatString() const override;
};
} // namespace AM
