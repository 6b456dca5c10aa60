// Archive reads in MB/s, and the codecs beside the bare library calls that do the same job.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <jpeglib.h>
#include <png.h>
#include <zip.h>

#include "am.h"

namespace
{
typedef std::vector<unsigned char> Bytes;

const int width = 1024;
const int height = 768;

// A smooth picture with some noise, such as a photograph has; blue, green, red, alpha.
Bytes makePixels()
{
    std::mt19937 random(1);
    Bytes pixels;
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            for (const unsigned value : {x / 4, y / 3, (x + y) / 8, 255u})
                pixels.push_back(static_cast<unsigned char>(value == 255 ? 255 : value + random() % 8));
    return pixels;
}

const Bytes pixels = makePixels();

AM::Image makeImage()
{
    AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, "bench"));
    image->resize(width, height);
    std::memcpy(image->getWriteData(), pixels.data(), pixels.size());
    return image;
}

AM::File makeFile(const std::string& name, const unsigned char* data, std::size_t length)
{
    AM::File file = new AM::FileStructure;
    file->filename = name;
    file->data = new unsigned char[length];
    file->length = static_cast<long>(length);
    std::memcpy(file->data, data, length);
    return file;
}

AM::File makePngFile()
{
    AM::ImageManager manager;
    AM::Image image = makeImage();
    return manager.encodeImage("bench.png", image);
}

AM::File makeJpegFile()
{
    jpeg_compress_struct cinfo = {};
    jpeg_error_mgr error;
    cinfo.err = jpeg_std_error(&error);
    jpeg_create_compress(&cinfo);
    unsigned char* data = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&cinfo, &data, &length);
    cinfo.image_width = width;
    cinfo.image_height = height;
    cinfo.input_components = 4;
    cinfo.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, 90, TRUE);
    jpeg_start_compress(&cinfo, TRUE);
    while (cinfo.next_scanline < height)
    {
        JSAMPROW row = const_cast<JSAMPROW>(&pixels[cinfo.next_scanline * width * 4]);
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    AM::File file = makeFile("bench.jpg", data, length);
    std::free(data);
    return file;
}

void setPixelRate(benchmark::State& state)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * width * height * 4);
}

void decodeWithCodec(benchmark::State& state, AM::File (*makeInput)())
{
    AM::File file = makeInput();
    AM::ImageManager manager;
    for (auto _ : state) benchmark::DoNotOptimize(manager.loadImage(file->filename, file, true)->getData());
    setPixelRate(state);
}

struct Cursor
{
    const unsigned char* next;
};

void decodeWithPng(benchmark::State& state)
{
    AM::File file = makePngFile();
    for (auto _ : state)
    {
        Cursor cursor = {file->data};
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_read_fn(png, &cursor, [](png_structp reader, png_bytep data, png_size_t count) {
            Cursor& input = *static_cast<Cursor*>(png_get_io_ptr(reader));
            std::memcpy(data, input.next, count);
            input.next += count;
        });
        png_read_png(png, info, PNG_TRANSFORM_BGR, nullptr);
        std::unique_ptr<unsigned char[]> block(new unsigned char[width * height * 4]);
        for (int y = 0; y < height; ++y)
            std::memcpy(block.get() + y * width * 4, png_get_rows(png, info)[y], width * 4);
        benchmark::DoNotOptimize(block.get());
        png_destroy_read_struct(&png, &info, nullptr);
    }
    setPixelRate(state);
}

void decodeWithJpeg(benchmark::State& state)
{
    AM::File file = makeJpegFile();
    for (auto _ : state)
    {
        jpeg_decompress_struct cinfo = {};
        jpeg_error_mgr error;
        cinfo.err = jpeg_std_error(&error);
        jpeg_create_decompress(&cinfo);
        jpeg_mem_src(&cinfo, file->data, static_cast<unsigned long>(file->length));
        jpeg_read_header(&cinfo, TRUE);
        jpeg_start_decompress(&cinfo);
        std::unique_ptr<unsigned char[]> block(new unsigned char[width * height * 4]);
        unsigned char* target = block.get();
        Bytes colors(width * 3);
        while (cinfo.output_scanline < height)
        {
            JSAMPROW row = colors.data();
            jpeg_read_scanlines(&cinfo, &row, 1);
            for (int x = 0; x < width; ++x, row += 3, target += 4)
            {
                target[0] = row[2];
                target[1] = row[1];
                target[2] = row[0];
                target[3] = 255;
            }
        }
        benchmark::DoNotOptimize(block.get());
        jpeg_finish_decompress(&cinfo);
        jpeg_destroy_decompress(&cinfo);
    }
    setPixelRate(state);
}

void encodeWithCodec(benchmark::State& state)
{
    AM::ImageManager manager;
    AM::Image image = makeImage();
    for (auto _ : state) benchmark::DoNotOptimize(manager.encodeImage("bench.png", image)->data);
    setPixelRate(state);
}

void encodeWithPng(benchmark::State& state)
{
    for (auto _ : state)
    {
        Bytes output;
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_write_fn(
            png, &output,
            [](png_structp writer, png_bytep data, png_size_t count) {
                Bytes& target = *static_cast<Bytes*>(png_get_io_ptr(writer));
                target.insert(target.end(), data, data + count);
            },
            nullptr);
        png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        png_write_info(png, info);
        png_set_bgr(png);
        for (int y = 0; y < height; ++y) png_write_row(png, &pixels[static_cast<std::size_t>(y) * width * 4]);
        png_write_end(png, info);
        png_destroy_write_struct(&png, &info);
        benchmark::DoNotOptimize(output.data());
    }
    setPixelRate(state);
}

// A folder with the picture's pixels as a plain file and as an entry of a zip file, removed at the end.
struct Folder
{
    Folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "am_benchXXXXXX").string();
        path = std::string(mkdtemp(name.data())) + "/";
        AM::ArchiveManager archive;
        archive.addArchive(path);
        archive.writeFile(makeFile("pixels", pixels.data(), pixels.size()), -1);
        zipFile file = zipOpen((path + "data.zip").c_str(), APPEND_STATUS_CREATE);
        const zip_fileinfo info = {};
        zipOpenNewFileInZip(file, "pixels", &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, Z_DEFAULT_COMPRESSION);
        zipWriteInFileInZip(file, pixels.data(), static_cast<unsigned>(pixels.size()));
        zipCloseFileInZip(file);
        zipClose(file, nullptr);
    }

    ~Folder() { std::filesystem::remove_all(path); }

    std::string path;
};

void readArchive(benchmark::State& state, const char* prefix, const char* name)
{
    Folder folder;
    AM::ArchiveManager archive;
    archive.addArchive(prefix + folder.path + name);
    for (auto _ : state) benchmark::DoNotOptimize(archive.readFile("pixels", -1)->data);
    setPixelRate(state);
}

BENCHMARK_CAPTURE(readArchive, directory, "", "");
BENCHMARK_CAPTURE(readArchive, zip, "zip://", "data.zip");
BENCHMARK_CAPTURE(decodeWithCodec, png, makePngFile)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeWithPng)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(decodeWithCodec, jpeg, makeJpegFile)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeWithJpeg)->Unit(benchmark::kMillisecond);
BENCHMARK(encodeWithCodec)->Unit(benchmark::kMillisecond);
BENCHMARK(encodeWithPng)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
