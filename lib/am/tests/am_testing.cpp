#include "am_testing.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <jpeglib.h>
#include <zlib.h>

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "am_testXXXXXX").string();
    path = mkdtemp(name.data()) + std::string("/");
}

void TemporaryFolder::write(const std::string& name, const Bytes& bytes) const
{
    std::filesystem::remove(path + name); // faster than writing over it
    std::ofstream(path + name, std::ios::binary)
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

Bytes cut(const Bytes& file, std::size_t length)
{
    return Bytes(file.begin(), file.begin() + static_cast<long>(length));
}

Bytes replaceBytes(Bytes file, std::size_t position, const Bytes& bytes)
{
    std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<long>(position));
    return file;
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
// A number of that many bytes, the lowest first.
void put(Bytes& target, int count, unsigned long long value)
{
    for (int i = 0; i < count; ++i) target.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

template <class Text> void append(Bytes& target, const Text& text)
{
    target.insert(target.end(), text.begin(), text.end());
}

Bytes compressBytes(const Bytes& content)
{
    uLongf length = compressBound(content.size());
    Bytes result(length);
    compress(result.data(), &length, content.data(), content.size());
    result.resize(length);
    return result;
}

std::uint32_t checksum(const Bytes& bytes)
{
    return static_cast<std::uint32_t>(crc32(0, bytes.data(), static_cast<uInt>(bytes.size())));
}

void putPngChunk(Bytes& png, const std::string& type, const Bytes& data)
{
    Bytes checked = toBytes(type);
    append(checked, data);
    put(png, 4, __builtin_bswap32(static_cast<std::uint32_t>(data.size())));
    append(png, checked);
    put(png, 4, __builtin_bswap32(checksum(checked)));
}
} // namespace

Bytes makeZip(const std::vector<ZipEntry>& entries)
{
    Bytes zip, directory;
    for (const ZipEntry& entry : entries)
    {
        Bytes payload = entry.content;
        if (entry.method == 8) // zlib's stream without its head and its checksum
        {
            payload = compressBytes(payload);
            payload = Bytes(payload.begin() + 2, payload.end() - 4);
        }
        Bytes common; // what both headers hold
        put(common, 4, 20);
        put(common, 6, static_cast<unsigned>(entry.method));
        put(common, 4, checksum(entry.content) ^ entry.crcError);
        put(common, 4, entry.compressed < 0 ? payload.size() : static_cast<std::size_t>(entry.compressed));
        put(common, 4, entry.size < 0 ? entry.content.size() : static_cast<std::size_t>(entry.size));
        put(common, 4, entry.name.size());

        put(directory, 6, 0x001402014b50);
        append(directory, common);
        put(directory, 8, 0); // comment, disk and attributes
        put(directory, 2, 0);
        put(directory, 4, zip.size());
        append(directory, entry.name);

        put(zip, 4, 0x04034b50);
        append(zip, common);
        append(zip, entry.name);
        append(zip, payload);
    }
    const std::size_t start = zip.size();
    append(zip, directory);
    put(zip, 8, 0x06054b50);
    put(zip, 4, entries.size() << 16 | entries.size());
    put(zip, 4, directory.size());
    put(zip, 6, start);
    return zip;
}

Bytes makePng(int width, int height, int colorType, int depth, const Bytes& rows)
{
    Bytes header, lines, png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    put(header, 4, __builtin_bswap32(static_cast<std::uint32_t>(width)));
    put(header, 4, __builtin_bswap32(static_cast<std::uint32_t>(height)));
    append(header, Bytes{static_cast<unsigned char>(depth), static_cast<unsigned char>(colorType), 0, 0, 0});
    putPngChunk(png, "IHDR", header);
    if (colorType == 3) putPngChunk(png, "PLTE", {1, 2, 3});
    const std::size_t stride = std::max<std::size_t>(1, rows.size() / static_cast<std::size_t>(height));
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        if (i % stride == 0) lines.push_back(0); // no filter
        lines.push_back(rows[i]);
    }
    putPngChunk(png, "IDAT", compressBytes(lines));
    putPngChunk(png, "IEND", Bytes());
    return png;
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
    std::vector<jpeg_scan_info> script; // each coefficient without its last bit, then the last bits
    for (int k = 0; k < scans; ++k) script.push_back({1, {0}, k % 64, k % 64, k / 64, 1 - k / 64});
    cinfo.scan_info = scans ? script.data() : nullptr;
    cinfo.num_scans = scans;
    jpeg_start_compress(&cinfo, TRUE);
    while (cinfo.next_scanline < cinfo.image_height)
    {
        const unsigned stride = cinfo.image_width * static_cast<unsigned>(components);
        JSAMPROW row = const_cast<JSAMPROW>(&rows[cinfo.next_scanline * stride]);
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    const Bytes result(data, data + length);
    std::free(data);
    return result;
}
