#include "am_testing.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <jpeglib.h>
#include <png.h>
#include <zlib.h>

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "am_testXXXXXX").string();
    mPath = mkdtemp(name.data());
}

TemporaryFolder::~TemporaryFolder()
{
    std::filesystem::remove_all(mPath);
}

void TemporaryFolder::write(const std::string& name, const Bytes& bytes) const
{
    std::ofstream(path() + name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

Bytes toBytes(const std::string& text)
{
    return Bytes(text.begin(), text.end());
}

Bytes toBytes(const AM::File& file)
{
    return Bytes(file->data, file->data + file->length);
}

AM::File toFile(const std::string& name, const Bytes& bytes)
{
    AM::File file = new AM::FileStructure;
    file->filename = name;
    file->data = new unsigned char[bytes.size()];
    file->length = static_cast<long>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), file->data);
    return file;
}

namespace
{
void put(Bytes& target, int count, long long value)
{
    for (int i = 0; i < count; ++i)
        target.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

template <class Text>
void append(Bytes& target, const Text& text)
{
    target.insert(target.end(), text.begin(), text.end());
}

// zlib's stream without its head and its checksum.
Bytes deflateRaw(const Bytes& content)
{
    uLongf length = compressBound(content.size());
    Bytes result(length);
    compress(result.data(), &length, content.data(), content.size());
    return Bytes(result.begin() + 2, result.begin() + static_cast<long>(length) - 4);
}
}

Bytes makeZip(const std::vector<ZipEntry>& entries)
{
    Bytes zip, directory;
    for (const ZipEntry& entry : entries)
    {
        const Bytes payload = entry.method == 8 ? deflateRaw(entry.content) : entry.content;
        const auto claim = [](long long claimed, std::size_t real)
        { return claimed < 0 ? static_cast<long long>(real) : claimed; };
        const uLong checksum = crc32(0, entry.content.data(), static_cast<uInt>(entry.content.size()));
        Bytes common; // what both headers hold
        put(common, 4, 20);
        put(common, 6, entry.method);
        put(common, 4, static_cast<long long>(checksum ^ entry.crcError));
        put(common, 4, claim(entry.compressed, payload.size()));
        put(common, 4, claim(entry.size, entry.content.size()));
        put(common, 4, static_cast<long long>(entry.name.size()));

        put(directory, 6, 0x001402014b50);
        append(directory, common);
        directory.resize(directory.size() + 10); // comment, disk and attributes
        put(directory, 4, static_cast<long long>(zip.size()));
        append(directory, entry.name);

        put(zip, 4, 0x04034b50);
        append(zip, common);
        append(zip, entry.name);
        append(zip, payload);
    }
    const long long start = static_cast<long long>(zip.size());
    const long long count = static_cast<long long>(entries.size());
    append(zip, directory);
    put(zip, 8, 0x06054b50);
    put(zip, 4, count << 16 | count);
    put(zip, 4, static_cast<long long>(directory.size()));
    put(zip, 6, start);
    return zip;
}

Bytes makePng(int width, int height, int colorType, int depth, const Bytes& rows, bool interlaced)
{
    Bytes result;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    const png_rw_ptr write = [](png_structp writer, png_bytep data, png_size_t count)
    { append(*static_cast<Bytes*>(png_get_io_ptr(writer)), Bytes(data, data + count)); };
    png_set_write_fn(png, &result, write, nullptr);
    png_set_IHDR(png, info, static_cast<unsigned>(width), static_cast<unsigned>(height), depth, colorType,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    const png_color black = {0, 0, 0};
    if (colorType == PNG_COLOR_TYPE_PALETTE)
        png_set_PLTE(png, info, &black, 1);
    png_write_info(png, info);
    const std::size_t stride = rows.size() / static_cast<std::size_t>(height);
    std::vector<png_bytep> pointers;
    for (std::size_t start = 0; start < rows.size(); start += stride)
        pointers.push_back(const_cast<png_bytep>(&rows[start]));
    png_write_image(png, pointers.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return result;
}

Bytes makeJpeg(int width, int height, int components, const Bytes& rows, int scans)
{
    jpeg_compress_struct cinfo = {};
    jpeg_error_mgr error;
    cinfo.err = jpeg_std_error(&error);
    jpeg_create_compress(&cinfo);
    unsigned char* data = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&cinfo, &data, &length);
    cinfo.image_width = static_cast<unsigned>(width);
    cinfo.image_height = static_cast<unsigned>(height);
    cinfo.input_components = components;
    cinfo.in_color_space = components == 1 ? JCS_GRAYSCALE : components == 3 ? JCS_RGB : JCS_CMYK;
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, 100, TRUE);
    std::vector<jpeg_scan_info> script;
    for (int k = 0; k < scans; ++k)
        script.push_back({1, {0}, k % 64, k % 64, k < 64 ? 0 : 2 - k / 64, k < 64 ? 1 : 1 - k / 64});
    cinfo.scan_info = scans ? script.data() : nullptr;
    cinfo.num_scans = scans;
    jpeg_start_compress(&cinfo, TRUE);
    for (int y = 0; y < height; ++y)
    {
        JSAMPROW row = const_cast<JSAMPROW>(&rows[static_cast<std::size_t>(y * width * components)]);
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    const Bytes result(data, data + length);
    std::free(data);
    return result;
}
