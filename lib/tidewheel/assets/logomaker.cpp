// Draws the logo in the title bar of the HUD, 26 rows on black:
//     logomaker FOLDER    writes tidewheel_logo.png into the folder, whose name ends in a slash

#include "am.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>

namespace
{

const int width = 360;
const int height = 26;
const float pi = 3.14159265f;

struct Colour
{
    float red, green, blue;
};

const Colour ice = {0.93f, 0.97f, 1.0f};
const Colour water = {0.27f, 0.47f, 0.80f};
const Colour amber = {0.93f, 0.73f, 0.20f};

// A black sheet on which strokes with round ends add light. Coordinates in pixels, from the top left.
class Sheet
{
public:
    void line(float x0, float y0, float x1, float y1, float thickness, Colour colour, float strength = 1.0f)
    {
        const float dx = x1 - x0;
        const float dy = y1 - y0;
        const float squared = dx * dx + dy * dy;
        stroke(thickness, colour, strength, [=](float x, float y) {
            const float t = squared > 0.0f ? ((x - x0) * dx + (y - y0) * dy) / squared : 0.0f;
            const float along = std::min(std::max(t, 0.0f), 1.0f);
            return std::hypot(x - x0 - along * dx, y - y0 - along * dy);
        });
    }

    // Counts angles in degrees from the right, against the clock.
    void arc(float cx, float cy, float radius, float from, float to, float thickness, Colour colour)
    {
        stroke(thickness, colour, 1.0f, [=](float x, float y) {
            float angle = std::atan2(cy - y, x - cx) * 180.0f / pi;
            while (angle < from) angle += 360.0f;
            if (angle <= to) return std::fabs(std::hypot(x - cx, y - cy) - radius);
            const auto distance = [=](float end) {
                return std::hypot(x - cx - radius * std::cos(end * pi / 180.0f),
                                  y - cy + radius * std::sin(end * pi / 180.0f));
            };
            return std::min(distance(from), distance(to));
        });
    }

    void copyTo(unsigned char* pixels) const
    {
        for (int i = 0; i < width * height; ++i)
        {
            pixels[i * 4 + 0] = level(mPixels[i].blue);
            pixels[i * 4 + 1] = level(mPixels[i].green);
            pixels[i * 4 + 2] = level(mPixels[i].red);
            pixels[i * 4 + 3] = 255;
        }
    }

private:
    static unsigned char level(float light) { return static_cast<unsigned char>(std::lround(light * 255.0f)); }

    template <class Distance> void stroke(float thickness, Colour colour, float strength, const Distance& distance)
    {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
            {
                const float away = distance(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f);
                const float cover = std::min(std::max(thickness / 2.0f + 0.5f - away, 0.0f), 1.0f) * strength;
                Colour& pixel = mPixels[y * width + x];
                pixel.red = std::max(pixel.red, cover * colour.red);
                pixel.green = std::max(pixel.green, cover * colour.green);
                pixel.blue = std::max(pixel.blue, cover * colour.blue);
            }
    }

    Colour mPixels[width * height] = {};
};

// The letters of the name, of lines and arcs. `x` is the left side, `base` the base line, `s` the height of small
// letters. Each returns where the letter ends.
struct Lettering
{
    Sheet& sheet;
    float base;
    float s;
    float thickness;

    float t(float x) const
    {
        stem(x + 0.25f * s, 1.5f, 0.35f);
        sheet.arc(x + 0.6f * s, base - 0.35f * s, 0.35f * s, 180.0f, 275.0f, thickness, ice);
        sheet.line(x, base - s, x + 0.6f * s, base - s, thickness, ice);
        return x + 0.65f * s;
    }
    float i(float x) const
    {
        stem(x, 1.0f, 0.0f);
        sheet.line(x, base - 1.5f * s, x, base - 1.5f * s, thickness + 0.4f, amber);
        return x;
    }
    float d(float x) const
    {
        sheet.arc(x + 0.5f * s, base - 0.5f * s, 0.5f * s, 0.0f, 360.0f, thickness, ice);
        stem(x + s, 1.6f, 0.0f);
        return x + s;
    }
    float e(float x) const
    {
        sheet.arc(x + 0.5f * s, base - 0.5f * s, 0.5f * s, 0.0f, 315.0f, thickness, ice);
        sheet.line(x, base - 0.5f * s, x + s, base - 0.5f * s, thickness, ice);
        return x + s;
    }
    float w(float x) const
    {
        for (int wave = 0; wave < 2; ++wave)
        {
            stem(x, 1.0f, 0.4f);
            sheet.arc(x + 0.4f * s, base - 0.4f * s, 0.4f * s, 180.0f, 360.0f, thickness, ice);
            x += 0.8f * s;
        }
        stem(x, 1.0f, 0.4f);
        return x;
    }
    float h(float x) const
    {
        stem(x, 1.6f, 0.0f);
        sheet.arc(x + 0.45f * s, base - 0.55f * s, 0.45f * s, 0.0f, 180.0f, thickness, ice);
        stem(x + 0.9f * s, 0.55f, 0.0f);
        return x + 0.9f * s;
    }
    float l(float x) const
    {
        stem(x, 1.6f, 0.0f);
        return x;
    }

private:
    void stem(float x, float top, float bottom) const
    {
        sheet.line(x, base - top * s, x, base - bottom * s, thickness, ice);
    }
};

// A mill wheel: a rim with eight paddles, and a hub.
void drawWheel(Sheet& sheet, float x, float y)
{
    sheet.arc(x, y, 7.5f, 0.0f, 360.0f, 1.6f, ice);
    for (int i = 0; i < 8; ++i)
    {
        const float dx = std::cos((static_cast<float>(i) + 0.5f) * pi / 4.0f);
        const float dy = std::sin((static_cast<float>(i) + 0.5f) * pi / 4.0f);
        sheet.line(x + 3.0f * dx, y + 3.0f * dy, x + 11.0f * dx, y + 11.0f * dy, 1.5f, ice, 0.85f);
    }
    sheet.line(x, y, x, y, 4.2f, amber);
}

// Swell that fades towards `to`.
void drawWaves(Sheet& sheet, float from, float to)
{
    const float direction = to > from ? 1.0f : -1.0f;
    const auto swell = [=](float x) { return std::sin((x - from) * direction * pi / 9.0f); };
    for (float x = from; (to - x) * direction > 0.0f; x += direction)
    {
        const float fade = (to - x) / (to - from);
        for (int row = 0; row < 2; ++row)
        {
            const float y = 14.5f + 5.5f * static_cast<float>(row);
            const float shift = 4.5f * static_cast<float>(row);
            sheet.line(x, y + 1.4f * swell(x + shift), x + direction, y + 1.4f * swell(x + direction + shift), 1.5f,
                       water, fade * fade);
        }
    }
}

void drawLogo(Sheet& sheet)
{
    const float gap = 5.2f;
    const Lettering lettering = {sheet, 21.0f, 10.5f, 2.0f};
    drawWaves(sheet, 92.0f, 4.0f);
    drawWheel(sheet, 112.5f, 13.0f);
    float x = lettering.t(135.0f) + gap;
    x = lettering.i(x) + gap;
    x = lettering.d(x) + gap;
    x = lettering.e(x) + gap;
    x = lettering.w(x) + gap;
    x = lettering.h(x) + gap;
    x = lettering.e(x) + gap;
    x = lettering.e(x) + gap;
    x = lettering.l(x) + gap;
    drawWaves(sheet, x + 6.0f, static_cast<float>(width) - 4.0f);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "Usage: logomaker FOLDER/\n");
        return 2;
    }
    try
    {
        static Sheet sheet;
        drawLogo(sheet);
        AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, ""));
        image->resize(width, height);
        sheet.copyTo(image->getWriteData());

        AM::ArchiveManager archive;
        archive.addArchive(argv[1]);
        if (!archive.writeImage("tidewheel_logo.png", image))
            throw AM::Exception("main, Could not write the logo into a folder (%s)", argv[1]);
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "Error: %s\n", exception.what());
        return 1;
    }
    return 0;
}
