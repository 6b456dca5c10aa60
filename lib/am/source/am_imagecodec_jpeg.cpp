#include "am_imagecodec_jpeg.h"

// jpeglib.h needs the two before it.
#include <cstddef>
#include <cstdio>

#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <csetjmp>
#include <memory>
#include <new>

#include "am_exception.h"
#include "am_image.h"

// An exception must not run through the frames of libjpeg, and a longjmp must not skip a destructor. So the error
// handler leaves libjpeg by longjmp, the two functions that call libjpeg hold nothing but plain values, and the
// exception is thrown behind them.

namespace AM
{
namespace
{
// A picture has at most so many pixels.
const std::size_t MAX_PIXELS = std::size_t(1) << 26;

// Pixels that a byte of the file can stand for: 8 blocks of 64, with one bit for each in the shortest code. Arithmetic
// coding can do better on a blank picture, so a moderate size is always believed.
const std::size_t MAX_PIXELS_PER_BYTE = 512;
const std::size_t MODERATE_SIZE = std::size_t(1) << 22;

// A progressive file may go over its picture again and again with next to no bytes for each time. Real files do so
// about ten times. A large picture gets so many scans that their pixels are not more than those of 100 over one of
// moderate size, but no fewer than real files have.
const std::size_t MAX_SCANS = 100;
const std::size_t MIN_SCANS = 16;

// For what libjpeg keeps of the whole picture: three 16-bit coefficients a pixel in a progressive file, and some more
// at the borders.
const long MAX_MEMORY = long(1) << 29;

// The memory source, and with it all that one decoding needs.
struct MySourceMgr : jpeg_source_mgr
{
    MySourceMgr(const unsigned char* data, std::size_t length, jpeg_decompress_struct& decompressor);
    MySourceMgr(const MySourceMgr&) = delete;
    MySourceMgr& operator=(const MySourceMgr&) = delete;
    ~MySourceMgr() { jpeg_destroy_decompress(&cinfo); }

    // Both give false after an error; the text is then in `message` and the decompressor destroyed.
    bool readHeader();
    bool readRows(unsigned char* block);

    const unsigned char* buffer;
    std::size_t bufferLength;
    jpeg_error_mgr jerr;
    jpeg_decompress_struct& cinfo;
    jpeg_progress_mgr progress = {};
    std::jmp_buf leave;
    char message[JMSG_LENGTH_MAX];
};

MySourceMgr& getSource(j_common_ptr cinfo)
{
    return *static_cast<MySourceMgr*>(cinfo->client_data);
}

[[noreturn]] void leaveLibrary(j_common_ptr cinfo)
{
    MySourceMgr& source = getSource(cinfo);
    jpeg_destroy(cinfo);
    std::longjmp(source.leave, 1);
}

// libjpeg's warnings come here as well.
void outputMessage(j_common_ptr cinfo)
{
    cinfo->err->format_message(cinfo, getSource(cinfo).message);
    leaveLibrary(cinfo);
}

void errorExit(j_common_ptr cinfo)
{
    cinfo->err->output_message(cinfo);
}

void monitorProgress(j_common_ptr cinfo)
{
    MySourceMgr& source = getSource(cinfo);
    const std::size_t pixels = static_cast<std::size_t>(source.cinfo.image_width) * source.cinfo.image_height;
    const std::size_t scans =
        std::min(std::max(MAX_SCANS * MODERATE_SIZE / std::max<std::size_t>(pixels, 1), MIN_SCANS), MAX_SCANS);
    if (source.cinfo.input_scan_number <= static_cast<int>(scans)) return;
    std::snprintf(source.message, sizeof source.message, "More than %zu scans", scans);
    leaveLibrary(cinfo);
}

void doNothing(j_decompress_ptr) {}

// The whole file was there from the start, so it has ended early. libjpeg's own sources warn in this case and go on
// with an end marker.
boolean fillInputBuffer(j_decompress_ptr cinfo)
{
    static const JOCTET endOfImage[2] = {0xff, JPEG_EOI};
    WARNMS(cinfo, JWRN_JPEG_EOF);
    cinfo->src->next_input_byte = endOfImage;
    cinfo->src->bytes_in_buffer = sizeof endOfImage;
    return TRUE;
}

void skipInputData(j_decompress_ptr cinfo, long count)
{
    jpeg_source_mgr& source = *cinfo->src;
    if (count <= 0) return;
    const std::size_t left = source.bytes_in_buffer;
    const std::size_t skipped = static_cast<std::size_t>(count) < left ? static_cast<std::size_t>(count) : left;
    source.next_input_byte += skipped;
    source.bytes_in_buffer -= skipped;
}

MySourceMgr::MySourceMgr(const unsigned char* data, std::size_t length, jpeg_decompress_struct& decompressor)
    : jpeg_source_mgr(), buffer(data), bufferLength(length), cinfo(decompressor)
{
    next_input_byte = buffer;
    bytes_in_buffer = bufferLength;
    init_source = doNothing;
    fill_input_buffer = fillInputBuffer;
    skip_input_data = skipInputData;
    resync_to_restart = jpeg_resync_to_restart;
    term_source = doNothing;

    cinfo.err = jpeg_std_error(&jerr);
    cinfo.client_data = this;
    jerr.error_exit = errorExit;
    jerr.output_message = outputMessage;
    progress.progress_monitor = monitorProgress;
    message[0] = '\0';
}

bool MySourceMgr::readHeader()
{
    if (setjmp(leave)) return false;
    jpeg_CreateDecompress(&cinfo, JPEG_LIB_VERSION, sizeof cinfo);
    cinfo.src = this;
    cinfo.progress = &progress;
    cinfo.mem->max_memory_to_use = MAX_MEMORY;
    jpeg_read_header(&cinfo, TRUE);
    cinfo.out_color_space = JCS_RGB;
    cinfo.out_color_components = 3;
    return true;
}

bool MySourceMgr::readRows(unsigned char* block)
{
    if (setjmp(leave)) return false;
    jpeg_start_decompress(&cinfo);
    const std::size_t stride = static_cast<std::size_t>(cinfo.output_width) * 3;
    while (cinfo.output_scanline < cinfo.output_height)
    {
        JSAMPROW row = block + cinfo.output_scanline * stride;
        jpeg_read_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_decompress(&cinfo);
    return true;
}
} // namespace

void ImageCodecJPEG::decodeImage(const unsigned char* pBuf, std::size_t length, ImageObject& image)
{
    image.setData(0, 0, nullptr);
    jpeg_decompress_struct cinfo = {};
    MySourceMgr source(pBuf, length, cinfo);
    if (!source.readHeader()) throw Exception("Internal jpeglib error; %s", source.message);

    const unsigned width = cinfo.image_width;
    const unsigned height = cinfo.image_height;
    const std::size_t pixels = static_cast<std::size_t>(width) * height;
    std::unique_ptr<unsigned char[]> block;
    if (pixels <= MAX_PIXELS && (pixels <= MODERATE_SIZE || pixels / MAX_PIXELS_PER_BYTE <= length))
        block.reset(new (std::nothrow) unsigned char[pixels * 3]);
    if (!block) throw Exception("Internal jpeglib error; Picture too large (%ux%u)", width, height);
    if (!source.readRows(block.get())) throw Exception("Internal jpeglib error; %s", source.message);

    image.resize(static_cast<int>(width), static_cast<int>(height));
    const unsigned char* color = block.get();
    BGRA* target = reinterpret_cast<BGRA*>(image.mImageData);
    for (std::size_t i = 0; i < pixels; ++i, color += 3) target[i] = {color[2], color[1], color[0], 255};
}

std::string ImageCodecJPEG::getFormatString() const
{
    return "jpg";
}
} // namespace AM
