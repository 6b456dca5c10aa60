// Frames a second of the offline dump, at 800 by 600, beside its two floors: reading the frame from OpenGL alone, and
// libpng's encoder alone. What the dump takes beyond their sum is its own: swapping rows and colours, alpha, the file.
// Needs a display, such as that of xvfb-run.

#include "tw_device_sdl3d.h"
#include "tw_glinclude.h"

#include "am.h"
#include "am_videofile.h"

#include <benchmark/benchmark.h>
#include <png.h>

#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace
{

const int width = 800;
const int height = 600;

// A smooth background with a crowd of translucent triangles over it.
void drawPicture()
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glEnable(GL_BLEND);
    glBegin(GL_QUADS);
    glColor4f(0.0f, 0.1f, 0.3f, 1.0f);
    glVertex2f(-1.0f, 1.0f);
    glColor4f(0.3f, 0.1f, 0.2f, 1.0f);
    glVertex2f(1.0f, 1.0f);
    glColor4f(0.9f, 0.6f, 0.2f, 1.0f);
    glVertex2f(1.0f, -1.0f);
    glColor4f(0.1f, 0.5f, 0.4f, 1.0f);
    glVertex2f(-1.0f, -1.0f);
    glEnd();

    std::srand(1);
    const auto unit = [] { return static_cast<float>(std::rand()) / static_cast<float>(RAND_MAX); };
    glBegin(GL_TRIANGLES);
    for (int i = 0; i < 300; i++)
    {
        const float x = 2.2f * unit() - 1.1f;
        const float y = 2.2f * unit() - 1.1f;
        for (int corner = 0; corner < 3; corner++)
        {
            glColor4f(unit(), unit(), unit(), 0.3f);
            glVertex2f(x + 0.3f * unit(), y + 0.3f * unit());
        }
    }
    glEnd();
}

// One window for all, with the picture on screen.
Tidewheel::DeviceSDL3D& window()
{
    static Tidewheel::DeviceSDL3D device;
    if (!device.mOpen)
    {
        device.open("benchmark", width, height, false);
        device.beginFrame();
        drawPicture();
        device.endFrame();
    }
    return device;
}

AM::Image makeImage()
{
    AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, ""));
    image->resize(width, height);
    return image;
}

void appendBytes(png_structp png, png_bytep data, png_size_t count)
{
    std::vector<unsigned char>& bytes = *static_cast<std::vector<unsigned char>*>(png_get_io_ptr(png));
    bytes.insert(bytes.end(), data, data + count);
}

void readPixels(benchmark::State& state)
{
    window();
    std::vector<unsigned char> pixels(width * height * 4);
    for (auto _ : state)
    {
        glReadPixels(0, 0, width, height, GL_BGRA, GL_UNSIGNED_BYTE, pixels.data());
        benchmark::DoNotOptimize(pixels.data());
    }
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void encode(benchmark::State& state)
{
    AM::Image image = makeImage();
    window().getScreenShot(image);
    std::vector<png_bytep> rows;
    for (int y = 0; y < height; y++) rows.push_back(image->getWriteData() + y * width * 4);

    for (auto _ : state)
    {
        std::vector<unsigned char> bytes;
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_write_fn(png, &bytes, appendBytes, nullptr);
        png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        png_write_info(png, info);
        png_write_image(png, rows.data());
        png_write_end(png, info);
        png_destroy_write_struct(&png, &info);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void dump(benchmark::State& state)
{
    std::string folder = (std::filesystem::temp_directory_path() / "dump-XXXXXX").string();
    if (!mkdtemp(folder.data()))
    {
        state.SkipWithError("no temporary folder");
        return;
    }

    Tidewheel::DeviceSDL3D& device = window();
    AM::ArchiveManager archives;
    archives.addArchive(folder + "/");
    const AM::VideoFile::Format format = {width, height, 25, 1};
    std::unique_ptr<AM::VideoFile> video(AM::VideoFile::createForWrite("frame.png", format, &archives));
    AM::Image image = makeImage();
    video->attach(image);
    for (auto _ : state)
    {
        device.getScreenShot(image);
        video->writeFrame();
    }
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    std::filesystem::remove_all(folder);
}

BENCHMARK(readPixels)->Name("dump/floor/glReadPixels")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(encode)->Name("dump/floor/libpng")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(dump)->Name("dump/frame")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
