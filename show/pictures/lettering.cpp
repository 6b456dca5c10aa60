// The pictures that are type.

#include "pictures.h"

#include "font_picture.h"
#include "greeting_names.h"

#include <algorithm>
#include <cmath>

namespace Paint
{

namespace
{

// Lays `color` with the mask's coverage times `strength` over the canvas (straight alpha).
void lay(Canvas& canvas, const Mask& mask, const Color& color, float strength)
{
    for (int y = 0; y < canvas.height(); y++)
        for (int x = 0; x < canvas.width(); x++)
        {
            const float over = std::min(1.0f, mask.at(x, y) * strength);
            if (over <= 0.0f) continue;
            Pixel& pixel = canvas.at(x, y);
            const float alpha = over + pixel.alpha * (1.0f - over);
            pixel.color = (color * over + pixel.color * (pixel.alpha * (1.0f - over))) * (1.0f / alpha);
            pixel.alpha = alpha;
        }
}

// Adds light.
void glow(Canvas& canvas, const Mask& mask, const Color& color, float strength)
{
    for (int y = 0; y < canvas.height(); y++)
        for (int x = 0; x < canvas.width(); x++)
            canvas.at(x, y).color = canvas.at(x, y).color + color * (mask.at(x, y) * strength);
}

void disc(Mask& mask, float cx, float cy, float radius)
{
    for (int y = 0; y < mask.height(); y++)
        for (int x = 0; x < mask.width(); x++)
        {
            const float distance = std::hypot(float(x) + 0.5f - cx, float(y) + 0.5f - cy);
            mask.at(x, y) = std::max(mask.at(x, y), smooth(radius + 0.7f, radius - 0.7f, distance));
        }
}

void bar(Mask& mask, int left, int right, int top, int bottom, float value)
{
    for (int y = top; y < bottom; y++)
        for (int x = left; x < right; x++) mask.at(x, y) = std::max(mask.at(x, y), value);
}

const int LOGO_WIDTH = 1536;
const int LOGO_HEIGHT = 512;

// The name, a hairline under it with room for the year, and the heart that hangs where the line breaks.
void logoShapes(Mask& letters, Mask& line, Mask& heart)
{
    const double baseline = 292.0;
    const double width = setType(letters, {"Jura Light", 214.0, 22.0, 1.0}, "sandrift", LOGO_WIDTH / 2.0, baseline);
    const int left = int(LOGO_WIDTH / 2.0 - width / 2.0) + 8, right = int(LOGO_WIDTH / 2.0 + width / 2.0) - 8;
    bar(line, left, LOGO_WIDTH / 2 - 34, 352, 354, 1.0f);
    bar(line, LOGO_WIDTH / 2 + 34, right, 352, 354, 1.0f);
    disc(heart, LOGO_WIDTH / 2.0f, 353.0f, 7.5f);
}

} // namespace

Canvas logo()
{
    Canvas canvas(LOGO_WIDTH, LOGO_HEIGHT, ICE, 0.0f);
    Mask letters(LOGO_WIDTH, LOGO_HEIGHT), line(LOGO_WIDTH, LOGO_HEIGHT), heart(LOGO_WIDTH, LOGO_HEIGHT);
    logoShapes(letters, line, heart);

    Mask halo = letters;
    halo.blur(13, 13);
    lay(canvas, halo, GLACIER, 0.85f);
    Mask small = letters;
    small.blur(3, 3);
    lay(canvas, small, ICE, 0.5f);
    lay(canvas, letters, SNOW, 1.0f);
    lay(canvas, line, ICE, 0.8f);

    Mask warmth = heart;
    warmth.blur(14, 14);
    lay(canvas, warmth, EMBER, 2.6f);
    lay(canvas, heart, mix(EMBER, SNOW, 0.35f), 1.0f);
    return canvas;
}

// What is left of the logo in the ice: long sideways streaks, hollow letters, slices out of place.
Canvas logoGhost()
{
    Canvas canvas(LOGO_WIDTH, LOGO_HEIGHT, ICE, 0.0f);
    Mask letters(LOGO_WIDTH, LOGO_HEIGHT), line(LOGO_WIDTH, LOGO_HEIGHT), heart(LOGO_WIDTH, LOGO_HEIGHT);
    logoShapes(letters, line, heart);

    // Horizontal slices slip to the sides.
    Mask slipped(LOGO_WIDTH, LOGO_HEIGHT);
    for (int y = 0; y < LOGO_HEIGHT; y++)
    {
        const float slice = std::floor(float(y) / 17.0f);
        const int shift =
            int(95.0f * noise(slice * 0.83f + 0.3f, 0.5f, 4096, 5u) * std::fabs(noise(slice * 0.31f, 3.5f, 4096, 9u)));
        for (int x = 0; x < LOGO_WIDTH; x++)
        {
            const int from = x - shift;
            if (from >= 0 && from < LOGO_WIDTH && y % 17 != 0) slipped.at(x, y) = letters.at(from, y);
        }
    }
    // Hollow: what the letters lose when their middle is taken out.
    Mask inside = slipped;
    inside.blur(3, 3);
    Mask hollow(LOGO_WIDTH, LOGO_HEIGHT);
    for (int y = 0; y < LOGO_HEIGHT; y++)
        for (int x = 0; x < LOGO_WIDTH; x++)
            hollow.at(x, y) = slipped.at(x, y) * (1.0f - 0.75f * smooth(0.45f, 0.85f, inside.at(x, y)));
    Mask streaks = slipped;
    streaks.blur(64, 1);
    lay(canvas, streaks, GLACIER, 1.5f);
    lay(canvas, hollow, ICE, 0.75f);
    line.blur(40, 1);
    lay(canvas, line, GLACIER, 1.0f);
    return canvas;
}

// The show's name on a band of light that breaks like a ridge line; shown additively, so black is nothing.
Canvas banner()
{
    const int width = 2048, height = 512;
    Canvas canvas(width, height, {0.0f, 0.0f, 0.0f}, 1.0f);
    Mask letters(width, height);
    setType(letters, {"Jura Light", 132.0, 22.0, 1.0}, "our glacier heart cold", width / 2.0, 300.0);

    // Two ridge lines that mirror each other around the type, bright at their crest and fading away from it.
    Mask ridge(width, height);
    for (int x = 0; x < width; x++)
    {
        const float fade = smooth(0.0f, 260.0f, float(x)) * smooth(float(width), float(width) - 260.0f, float(x));
        const float crest = 92.0f - 64.0f * ridges(float(x) / 256.0f, 0.3f, 8, 5, 21u);
        const float trough = 402.0f + 64.0f * ridges(float(x) / 256.0f, 5.3f, 8, 5, 22u);
        for (int y = 0; y < height; y++)
        {
            const float above = float(y) - crest, below = trough - float(y);
            const float upper = above < 0.0f ? 0.0f : std::exp(-above / 26.0f) * smooth(0.0f, 2.0f, above);
            const float lower = below < 0.0f ? 0.0f : std::exp(-below / 26.0f) * smooth(0.0f, 2.0f, below);
            ridge.at(x, y) = (upper + lower) * fade;
        }
    }
    glow(canvas, ridge, GLACIER, 1.1f);

    Mask halo = letters;
    halo.blur(18, 18);
    glow(canvas, halo, GLACIER, 1.2f);
    glow(canvas, letters, mix(ICE, SNOW, 0.6f), 1.0f);
    return canvas;
}

// White on clear, so that the effect's own colour shows. Each name keeps clear of the rows above and below.
Canvas greetings()
{
    const int width = 2048, row = 32, height = GREETING_ROWS * row;
    Mask letters(width, height);
    for (int i = 0; i < GREETING_ROWS; i++)
        setType(letters, {"Jura SemiBold", 23.0, 2.5, 1.0}, GREETING_NAMES[i], width / 2.0, i * row + 22.0);
    Canvas canvas(width, height, {1.0f, 1.0f, 1.0f}, 0.0f);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) canvas.at(x, y).alpha = letters.at(x, y);
    return canvas;
}

// One row of letters, ten texels a column. A letter is shown as a square although it has 9 by 14 texels, so that it
// is set narrow here; and it is drawn eight times as large and taken down, for even strokes at this size.
Canvas glyphRow()
{
    static const std::string letters = FONT_LETTERS;
    const int width = FONT_WIDTH, height = FONT_HEIGHT, column = FONT_COLUMN, glyph = FONT_COLUMN - 1, fine = 8;
    const Type type = {"Jura SemiBold", 13.6 * fine, 0.0, 0.80};
    Canvas canvas(width, height, {1.0f, 1.0f, 1.0f}, 0.0f);
    for (std::size_t i = 0; i < letters.size(); i++)
    {
        const std::string letter(1, letters[i]);
        Mask large(glyph * fine, height * fine);
        Mask trial(2 * glyph * fine, height * fine);
        const double natural = setType(trial, type, letter, glyph * fine, 11.0 * fine);
        Type fitted = type;
        fitted.stretch *= std::min(1.0, (glyph + 0.2) * fine / natural); // m and w would not fit
        setType(large, fitted, letter, glyph * fine / 2.0, 11.0 * fine);
        for (int y = 0; y < height; y++)
            for (int x = 0; x < glyph; x++)
            {
                float sum = 0.0f;
                for (int v = 0; v < fine; v++)
                    for (int u = 0; u < fine; u++) sum += large.at(x * fine + u, y * fine + v);
                const float coverage = sum / float(fine * fine);
                canvas.at(int(i) * column + x, y).alpha = std::min(1.0f, coverage * 1.35f);
            }
    }
    return canvas;
}

// Lies over finished pictures: corners that darken and freeze over, and the show's name, small, at the lower edge.
Canvas overlay()
{
    const int width = 1024, height = 1024; // stretched to the window's 4:3
    Canvas canvas(width, height, ABYSS, 0.0f);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
        {
            const float u = (float(x) + 0.5f) / width * 2.0f - 1.0f, v = (float(y) + 0.5f) / height * 2.0f - 1.0f;
            const float px = (float(x) + 0.5f) / width * 4.0f, py = (float(y) + 0.5f) / height * 3.0f;
            // How near the edge: 0 in the middle, 1 at the sides, more in the corners.
            const float edge = std::pow(std::pow(std::fabs(u), 5.0f) + std::pow(std::fabs(v), 5.0f), 0.2f);

            Pixel& pixel = canvas.at(x, y);
            pixel.alpha = 0.82f * smooth(0.62f, 1.18f, edge);

            // Frost grows inwards along feathers: thin ridges, dense at the rim.
            const float warpX = px + 0.22f * fractal(px * 1.7f, py * 1.7f, 1024, 4, 41u);
            const float warpY = py + 0.22f * fractal(px * 1.7f, py * 1.7f, 1024, 4, 47u);
            const float feathers = ridges(warpX * 3.2f, warpY * 3.2f, 1024, 5, 43u);
            float nearest, second;
            cells(warpX * 5.0f, warpY * 5.0f, 1024, 51u, nearest, second);
            const float crack = smooth(0.10f, 0.0f, second - nearest);
            const float reach = edge + 0.22f * fractal(px * 2.3f, py * 2.3f, 1024, 3, 44u);
            const float frost = smooth(0.84f, 1.12f, reach) * (0.75f * smooth(0.66f, 0.95f, feathers) + 0.45f * crack);
            pixel.color = mix(pixel.color, mix(ICE, SNOW, 0.3f), std::min(1.0f, frost * 1.5f));
            pixel.alpha = std::min(1.0f, pixel.alpha * (1.0f - 0.25f * frost) + 0.55f * frost);
        }

    return canvas;
}

} // namespace Paint
