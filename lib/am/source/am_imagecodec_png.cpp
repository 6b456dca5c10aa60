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
const std::size_t SIGNATURE_LENGTH = 8;

// The largest picture: in pixels of a side, since libpng takes a block of memory for each row and handles it seven
// times in an interlaced one, and in bytes as the rows are stored.
const unsigned MAX_SIDE = 1 << 16;
const unsigned long long MAX_ROW_BYTES = 1ull << 28;

// Deflate makes at most so many bytes out of one.
const unsigned MAX_DEFLATION = 1032;

// The compressed bytes that may follow behind the last row. An encoder's checksum takes four, but libpng unpacks
// whatever comes, to see whether the picture ends there.
const std::size_t MAX_BYTES_BEHIND = 1 << 16;

// For what libpng keeps of a file besides the picture. Nobody asks for any of it.
const unsigned MAX_CHUNK_MEMORY = 1 << 20;

const png_uint_32 IDAT_CHUNK = 0x49444154;

struct ReadBuffer
{
    const unsigned char* buffer;
    std::size_t length;
    std::size_t tell;
    png_uint_32 width, height;   // of the picture
    std::size_t bytesBehind = 0; // compressed ones, read since the last row was complete
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
    // Rows are counted anew in each of the seven passes of an interlaced picture.
    const bool isComplete = png_get_current_row_number(png) >= input.height || png_get_current_pass_number(png) >= 7;
    if (isComplete && png_get_io_chunk_type(png) == IDAT_CHUNK) input.bytesBehind += count;
    if (input.bytesBehind > MAX_BYTES_BEHIND) png_error(png, "too much behind the last row");
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

    // Reads the whole file, rows as they are stored, of a picture no larger than `input` says. False after any error of
    // libpng.
    bool read(ReadBuffer& input)
    {
        if (setjmp(png_jmpbuf(png))) return false;
        png_set_read_fn(png, &input, pngReadData);
        png_set_sig_bytes(png, SIGNATURE_LENGTH);
        png_set_user_limits(png, input.width, input.height);
        png_set_chunk_malloc_max(png, MAX_CHUNK_MEMORY);
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

png_uint_32 readBigEndian(const unsigned char* bytes)
{
    return static_cast<png_uint_32>(bytes[0]) << 24 | static_cast<png_uint_32>(bytes[1]) << 16 |
           static_cast<png_uint_32>(bytes[2]) << 8 | bytes[3];
}

// The 13 bytes with the size and the format, null if there are none. libpng takes other chunks ahead of them.
const unsigned char* findHeader(const unsigned char* file, std::size_t length)
{
    const std::size_t aroundData = 12; // length, type and checksum
    for (std::size_t place = SIGNATURE_LENGTH; length - place >= aroundData + 13;)
    {
        const unsigned char* chunk = file + place;
        if (std::memcmp(chunk + 4, "IHDR", 4) == 0) return chunk + 8;
        const std::size_t size = readBigEndian(chunk);
        if (size > length - place - aroundData) break;
        place += aroundData + size;
    }
    return nullptr;
}

// Whether the size that the header claims may be believed. libpng takes memory for all rows before it reads the first
// one, so a picture is refused that is too large or that a file of this length cannot hold.
bool hasPlausibleSize(const unsigned char* header, std::size_t length)
{
    const unsigned long long width = readBigEndian(header);
    const unsigned long long height = readBigEndian(header + 4);
    if (width > MAX_SIDE || height > MAX_SIDE || width * height > MAX_IMAGE_PIXELS) return false;
    static const unsigned channelsOfType[8] = {1, 1, 3, 1, 2, 1, 4, 1};
    const unsigned long long bytes = width * channelsOfType[header[9] & 7] * header[8] / 8 * height;
    return bytes <= MAX_ROW_BYTES && bytes / MAX_DEFLATION <= length;
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
    if (length < SIGNATURE_LENGTH || png_sig_cmp(pBuf, 0, SIGNATURE_LENGTH))
        throw Exception("[AM::loadPNG] Not a png-file! Header is wrong!");

    const unsigned char* header = findHeader(pBuf, length);
    if (!header || !hasPlausibleSize(header, length)) throw Exception("[AM::loadPNG] Error when decoding png-file!");
    ReadBuffer input = {pBuf, length, SIGNATURE_LENGTH, readBigEndian(header), readBigEndian(header + 4)};
    PngReader reader;
    if (!reader.png) throw Exception("[AM::loadPNG] Could not setup libpng (pngstruct)!");
    if (!reader.info) throw Exception("[AM::loadPNG] Could not setup libpng (pnginfo)!");
    if (!reader.read(input)) throw Exception("[AM::loadPNG] Error when decoding png-file!");

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
