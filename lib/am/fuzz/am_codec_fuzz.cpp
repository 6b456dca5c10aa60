// Image files of either format: a picture or an AM::Exception, never anything else. The first byte chooses.

#include <cstddef>
#include <cstdint>

#include "am_exception.h"
#include "am_image.h"
#include "am_imagecodec_jpeg.h"
#include "am_imagecodec_png.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    AM::ImageObject image(0, 0, nullptr, nullptr, "fuzz");
    AM::ImageCodecPNG png;
    AM::ImageCodecJPEG jpeg;
    AM::ImageCodec& codec = size > 0 && data[0] & 1 ? static_cast<AM::ImageCodec&>(png) : jpeg;
    try
    {
        if (size > 0) codec.decodeImage(data + 1, size - 1, image);
    }
    catch (const AM::Exception&)
    {
    }
    return 0;
}
