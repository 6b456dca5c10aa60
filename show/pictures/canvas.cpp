#include "canvas.h"

#include "../hash.h"

#include <cairo.h>
#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace Paint
{

Color mix(const Color& from, const Color& to, float share)
{
    return from * (1.0f - share) + to * share;
}

Canvas::Canvas(int width, int height, const Color& color, float alpha)
    : mWidth(width), mHeight(height), mPixels(std::size_t(width) * std::size_t(height), Pixel{color, alpha})
{
}

std::vector<uint8_t> Canvas::bytes(bool withAlpha) const
{
    const auto byte = [](float value) { return uint8_t(std::lround(255.0f * std::clamp(value, 0.0f, 1.0f))); };
    std::vector<uint8_t> out;
    out.reserve(mPixels.size() * (withAlpha ? 4 : 3));
    for (const Pixel& pixel : mPixels)
    {
        out.insert(out.end(), {byte(pixel.color.r), byte(pixel.color.g), byte(pixel.color.b)});
        if (withAlpha) out.push_back(byte(pixel.alpha));
    }
    return out;
}

void Canvas::writePng(const std::string& filename, bool withAlpha) const
{
    const std::vector<uint8_t> data = bytes(withAlpha);
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = png_uint_32(mWidth);
    image.height = png_uint_32(mHeight);
    image.format = withAlpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    if (!png_image_write_to_file(&image, filename.c_str(), 0, data.data(), 0, nullptr))
        throw std::runtime_error(filename + ": " + image.message);
}

void Canvas::writeJpeg(const std::string& filename, int quality) const
{
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(filename.c_str(), "wb"), std::fclose);
    if (!file) throw std::runtime_error(filename + ": cannot be written");
    std::vector<uint8_t> data = bytes(false);
    jpeg_error_mgr errors;
    jpeg_compress_struct jpeg;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    jpeg_stdio_dest(&jpeg, file.get());
    jpeg.image_width = JDIMENSION(mWidth);
    jpeg.image_height = JDIMENSION(mHeight);
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, quality, TRUE);
    jpeg_start_compress(&jpeg, TRUE);
    for (int y = 0; y < mHeight; y++)
    {
        JSAMPROW row = &data[std::size_t(y) * std::size_t(mWidth) * 3];
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
}

namespace
{

// One pass of a running mean over a row or column of `count` values that lie `step` apart.
void runningMean(float* values, int count, std::size_t step, int radius, std::vector<float>& copy)
{
    copy.resize(std::size_t(count));
    for (int i = 0; i < count; i++) copy[std::size_t(i)] = values[std::size_t(i) * step];
    double sum = 0.0;
    for (int i = -radius; i <= radius; i++) sum += copy[std::size_t(std::clamp(i, 0, count - 1))];
    for (int i = 0; i < count; i++)
    {
        values[std::size_t(i) * step] = float(sum / (2 * radius + 1));
        sum += copy[std::size_t(std::clamp(i + radius + 1, 0, count - 1))];
        sum -= copy[std::size_t(std::clamp(i - radius, 0, count - 1))];
    }
}

} // namespace

void Mask::blur(int radiusX, int radiusY)
{
    std::vector<float> copy;
    for (int pass = 0; pass < 3; pass++)
    {
        if (radiusX > 0)
            for (int y = 0; y < mHeight; y++) runningMean(&at(0, y), mWidth, 1, radiusX, copy);
        if (radiusY > 0)
            for (int x = 0; x < mWidth; x++) runningMean(&at(x, 0), mHeight, std::size_t(mWidth), radiusY, copy);
    }
}

double setType(Mask& mask, const Type& type, const std::string& text, double centre, double baseline)
{
    const std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> surface(
        cairo_image_surface_create(CAIRO_FORMAT_A8, mask.width(), mask.height()), cairo_surface_destroy);
    const std::unique_ptr<cairo_t, void (*)(cairo_t*)> cairo(cairo_create(surface.get()), cairo_destroy);
    cairo_select_font_face(cairo.get(), type.family, CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_matrix_t matrix;
    cairo_matrix_init_scale(&matrix, type.size * type.stretch, type.size);
    cairo_set_font_matrix(cairo.get(), &matrix);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_set_font_options(cairo.get(), options);
    cairo_font_options_destroy(options);

    // Letter by letter, for the tracking; UTF-8 continuation bytes stay with their letter.
    std::vector<std::string> letters;
    for (char c : text)
    {
        if ((c & 0xC0) == 0x80 && !letters.empty())
            letters.back() += c;
        else
            letters.emplace_back(1, c);
    }
    std::vector<double> advances;
    double width = 0.0;
    for (const std::string& letter : letters)
    {
        cairo_text_extents_t extents;
        cairo_text_extents(cairo.get(), letter.c_str(), &extents);
        advances.push_back(extents.x_advance + type.tracking);
        width += advances.back();
    }
    width -= type.tracking;
    double x = centre - width / 2.0;
    for (std::size_t i = 0; i < letters.size(); i++)
    {
        cairo_move_to(cairo.get(), x, baseline);
        cairo_show_text(cairo.get(), letters[i].c_str());
        x += advances[i];
    }
    if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(std::string("setting type: ") + cairo_status_to_string(cairo_status(cairo.get())));

    cairo_surface_flush(surface.get());
    const unsigned char* data = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int row = 0; row < mask.height(); row++)
        for (int column = 0; column < mask.width(); column++)
            mask.at(column, row) = std::max(mask.at(column, row), float(data[row * stride + column]) / 255.0f);
    return width;
}

namespace
{

uint32_t hash(int x, int y, uint32_t seed)
{
    return Show::scramble(uint32_t(x) * 0x9E3779B1u ^ uint32_t(y) * 0x85EBCA77u ^ seed * 0xC2B2AE3Du);
}

int wrap(int value, int period)
{
    return ((value % period) + period) % period;
}

} // namespace

// Gradient noise: at each lattice point a direction, in between the blend of what the four corners' slopes give.
float noise(float x, float y, int period, uint32_t seed)
{
    const float fx = std::floor(x), fy = std::floor(y);
    const float u = x - fx, v = y - fy;
    const auto corner = [&](int dx, int dy) {
        const float angle = 6.2831853f * Show::unit(hash(wrap(int(fx) + dx, period), wrap(int(fy) + dy, period), seed));
        return std::cos(angle) * (u - float(dx)) + std::sin(angle) * (v - float(dy));
    };
    const auto fade = [](float t) { return t * t * t * (t * (t * 6.0f - 15.0f) + 10.0f); };
    const float su = fade(u), sv = fade(v);
    const float top = corner(0, 0) * (1.0f - su) + corner(1, 0) * su;
    const float bottom = corner(0, 1) * (1.0f - su) + corner(1, 1) * su;
    return 1.5f * (top * (1.0f - sv) + bottom * sv);
}

float fractal(float x, float y, int period, int octaves, uint32_t seed)
{
    float sum = 0.0f, strength = 0.5f;
    for (int i = 0; i < octaves; i++)
    {
        sum += strength * noise(x, y, period, seed + uint32_t(i));
        x *= 2.0f;
        y *= 2.0f;
        period *= 2;
        strength *= 0.5f;
    }
    return sum;
}

float ridges(float x, float y, int period, int octaves, uint32_t seed)
{
    float sum = 0.0f, strength = 0.5f, total = 0.0f;
    for (int i = 0; i < octaves; i++)
    {
        const float ridge = 1.0f - std::fabs(noise(x, y, period, seed + uint32_t(i)));
        sum += strength * ridge * ridge;
        total += strength;
        x *= 2.0f;
        y *= 2.0f;
        period *= 2;
        strength *= 0.5f;
    }
    return sum / total;
}

void cells(float x, float y, int period, uint32_t seed, float& nearest, float& second)
{
    const int cx = int(std::floor(x)), cy = int(std::floor(y));
    nearest = second = 10.0f;
    for (int dy = -1; dy <= 1; dy++)
        for (int dx = -1; dx <= 1; dx++)
        {
            const int px = wrap(cx + dx, period), py = wrap(cy + dy, period);
            const float ox = float(cx + dx) + Show::unit(hash(px, py, seed)) - x;
            const float oy = float(cy + dy) + Show::unit(hash(px, py, seed + 77u)) - y;
            const float distance = std::sqrt(ox * ox + oy * oy);
            if (distance < nearest)
            {
                second = nearest;
                nearest = distance;
            }
            else if (distance < second)
                second = distance;
        }
}

float smooth(float from, float to, float value)
{
    const float t = std::clamp((value - from) / (to - from), 0.0f, 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

} // namespace Paint
