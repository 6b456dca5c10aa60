#include "am_imagecodec_tga.h"

#include "am_exception.h"

namespace AM
{
void ImageCodecTGA::decodeImage(const unsigned char*, std::size_t, ImageObject&)
{
    throw Exception("[AM::ImageCodec] TGA-reader is not done yet!");
}

std::string ImageCodecTGA::getFormatString() const
{
    return "tga";
}
} // namespace AM
