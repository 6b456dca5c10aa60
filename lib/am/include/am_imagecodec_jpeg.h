#pragma once

#include "am_imagecodec.h"

namespace AM
{
// Reads whatever libjpeg can turn into RGB. What it only warns of, such as a file that ends early, is an error here.
class ImageCodecJPEG : public ImageCodec
{
public:
    void decodeImage(const unsigned char* pBuf, std::size_t length, ImageObject& image) override;
    std::string getFormatString() const override;
};
} // namespace AM
