#include "am_imagecodec_png.h"

#include <png.h>

#include <csetjmp>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "am_exception.h"
#include "am_image.h"

// libpng leaves through a longjmp, which must not skip a destructor. So the functions with a setjmp hold nothing but
// plain pointers, and whoever calls them owns the memory.

namespace AM
{
namespace
{
const std::size_t signatureLength = 8;

struct ReadBuffer
{
    const unsigned char* buffer;
    std::size_t length;
    std::size_t tell;
};

struct WriteBuffer
{
    std::vector<unsigned char> buffer;
};

// The order of bytes in a PNG row.
struct RGBA
{
    unsigned char r, g, b, a;
};

void pngReadData(png_structp png, png_bytep data, png_size_t count)
{
    ReadBuffer& input = *static_cast<ReadBuffer*>(png_get_io_ptr(png));
    if (count > input.length - input.tell) png_error(png, "file ends early");
    std::memcpy(data, input.buffer + input.tell, count);
    input.tell += count;
}

bool append(WriteBuffer& output, const unsigned char* data, std::size_t count)
{
    try
    {
        output.buffer.insert(output.buffer.end(), data, data + count);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

void pngWriteData(png_structp png, png_bytep data, png_size_t count)
{
    if (!append(*static_cast<WriteBuffer*>(png_get_io_ptr(png)), data, count)) png_error(png, "not enough memory");
}

void pngWriteFlush(png_structp) {}

// Nothing is printed: the caller throws or returns false.
[[noreturn]] void pngError(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

void pngWarning(png_structp, png_const_charp) {}

// libpng's two structures, destroyed with the object.
struct PngReader
{
    PngReader() = default;
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }

    // Reads the whole file, rows as they are stored. False after any error of libpng.
    bool read(ReadBuffer& input)
    {
        if (setjmp(png_jmpbuf(png))) return false;
        png_set_read_fn(png, &input, pngReadData);
        png_set_sig_bytes(png, signatureLength);
        // Nobody asks for texts, colour profiles and the like, and libpng would believe whatever length they claim.
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
        return true;
    }

    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, pngError, pngWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
};

struct PngWriter
{
    PngWriter() = default;
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter() { png_destroy_write_struct(&png, &info); }

    bool write(WriteBuffer& output, int width, int height, png_bytepp rows)
    {
        if (setjmp(png_jmpbuf(png))) return false;
        png_set_write_fn(png, &output, pngWriteData, pngWriteFlush);
        png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                     PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_write_info(png, info);
        png_write_image(png, rows);
        png_write_end(png, info);
        return true;
    }

    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, pngError, pngWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
};

unsigned long long readBigEndian(const unsigned char* bytes)
{
    return (static_cast<unsigned long long>(bytes[0]) << 24) | (bytes[1] << 16) | (bytes[2] << 8) | bytes[3];
}

// Whether the size that the header claims may be believed. libpng takes memory for all rows before it reads the first
// one, so a picture is refused that is too large or that a file of this length cannot hold: deflate makes at most 1032
// bytes out of one. A file without a proper header is left to libpng.
bool hasPlausibleSize(const unsigned char* file, std::size_t length)
{
    if (length < 26 || std::memcmp(file + 12, "IHDR", 4) != 0) return true;
    const unsigned long long width = readBigEndian(file + 16);
    const unsigned long long height = readBigEndian(file + 20);
    if (width > maxImagePixels || height > maxImagePixels || width * height > maxImagePixels) return false;
    static const unsigned channelsOfType[8] = {1, 1, 3, 1, 2, 1, 4, 1};
    const unsigned long long rowBits = width * channelsOfType[file[25] & 7] * file[24];
    return rowBits / 8 * height / 1032 <= length;
}

// Rows of 3 or 4 bytes a pixel, red first, to the order of the system.
void convertRow(const unsigned char* source, int channels, int width, BGRA* target)
{
    if (channels == 4)
        for (int x = 0; x < width; ++x, source += 4) target[x] = {source[2], source[1], source[0], source[3]};
    else
        for (int x = 0; x < width; ++x, source += 3) target[x] = {source[2], source[1], source[0], 255};
}

int getChannels(int colorType, int depth)
{
    if (colorType == PNG_COLOR_TYPE_RGB && depth == 8) return 3;
    if (colorType == PNG_COLOR_TYPE_RGBA && depth == 8) return 4;
    if (colorType == PNG_COLOR_TYPE_GRAY && depth == 8)
        throw Exception("[AM::loadPNG] No support for grayscale images yet");
    throw Exception("[AM::loadPNG] Bad color format of image (type %d, %d bits per channel)", colorType, depth);
}

std::vector<RGBA> swapColors(const ImageObject& image)
{
    const std::size_t pixels = static_cast<std::size_t>(image.getWidth()) * static_cast<std::size_t>(image.getHeight());
    std::vector<RGBA> colors(pixels);
    const unsigned char* source = image.getData();
    for (std::size_t i = 0; i < pixels; ++i, source += 4) colors[i] = {source[2], source[1], source[0], source[3]};
    return colors;
}
} // namespace

void ImageCodecPNG::decodeImage(const unsigned char* pBuf, std::size_t length, ImageObject& image)
{
    image.setData(0, 0, nullptr);
    if (length < signatureLength || png_sig_cmp(pBuf, 0, signatureLength))
        throw Exception("[AM::loadPNG] Not a png-file! Header is wrong!");

    ReadBuffer input = {pBuf, length, signatureLength};
    PngReader reader;
    if (!reader.png) throw Exception("[AM::loadPNG] Could not setup libpng (pngstruct)!");
    if (!reader.info) throw Exception("[AM::loadPNG] Could not setup libpng (pnginfo)!");
    if (!hasPlausibleSize(pBuf, length) || !reader.read(input))
        throw Exception("[AM::loadPNG] Error when decoding png-file!");

    const int width = static_cast<int>(png_get_image_width(reader.png, reader.info));
    const int height = static_cast<int>(png_get_image_height(reader.png, reader.info));
    const int channels =
        getChannels(png_get_color_type(reader.png, reader.info), png_get_bit_depth(reader.png, reader.info));

    const std::size_t stride = static_cast<std::size_t>(width) * sizeof(BGRA);
    std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[stride * static_cast<std::size_t>(height)]);
    if (!block) throw Exception("[AM::loadPNG] Error when decoding png-file!");
    const png_bytepp rows = png_get_rows(reader.png, reader.info);
    for (int y = 0; y < height; ++y)
        convertRow(rows[y], channels, width,
                   reinterpret_cast<BGRA*>(block.get() + static_cast<std::size_t>(y) * stride));
    image.setData(width, height, block.release());
}

bool ImageCodecPNG::encodeImage(unsigned char** pBuf, std::size_t* length, ImageObject& image)
{
    if (!image.getWriteData()) return false;
    PngWriter writer;
    if (!writer.png || !writer.info) return false;
    try
    {
        std::vector<RGBA> colors = swapColors(image);
        std::vector<png_bytep> rows;
        for (int y = 0; y < image.getHeight(); ++y)
            rows.push_back(&colors[static_cast<std::size_t>(y) * static_cast<std::size_t>(image.getWidth())].r);
        WriteBuffer output;
        if (!writer.write(output, image.getWidth(), image.getHeight(), rows.data())) return false;
        *pBuf = new unsigned char[output.buffer.size()];
        *length = output.buffer.size();
        std::memcpy(*pBuf, output.buffer.data(), output.buffer.size());
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

std::string ImageCodecPNG::getFormatString() const
{
    return "png";
}

bool ImageCodecPNG::canWrite() const
{
    return true;
}
} // namespace AM
