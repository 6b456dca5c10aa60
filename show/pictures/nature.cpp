// The pictures of ice, stone, light.

#include "pictures.h"

#include "landscape.h"

#include <algorithm>
#include <cmath>

namespace Paint
{

namespace
{

// An aurora's curtain: it hangs from a wandering line and fades upwards, with rays and folds in it. `x` runs 8 units
// around the picture, `v` down from 0 to 1, `line` is where the curtain's lower edge lies on average.
Color aurora(float x, float v, float line, uint32_t seed)
{
    const float edge = line + 0.13f * fractal(x * 0.5f, 0.4f, 4, 4, seed);
    const float fold = x + 0.35f * fractal(x, 0.3f + v * 0.25f, 8, 3, seed + 11u);
    const float rays = smooth(-0.35f, 0.75f, fractal(fold * 5.0f, v * 0.5f, 40, 3, seed + 21u));
    const float presence = smooth(-0.35f, 0.35f, fractal(x * 0.5f, 7.4f, 4, 2, seed + 31u));
    const float hang = v < edge ? std::exp((v - edge) * 7.0f) : std::exp((edge - v) * 30.0f);
    const Color high = {0.16f, 0.28f, 0.55f}, low = {0.22f, 0.85f, 0.68f};
    return mix(high, low, smooth(0.25f, 0.0f, edge - v)) * (0.85f * hang * presence * (0.25f + 0.75f * rays));
}

const float SCENERY_AROUND = 8.0f; // units around the scenery, so that left and right edge meet
const int SCENERY_LAYERS = 5;

// Where a layer's crest lies, in rows from the top; layer 0 is the furthest.
float crestOf(int layer, float x)
{
    const float near = float(layer) / float(SCENERY_LAYERS - 1);
    const int period = int(SCENERY_AROUND);
    const uint32_t seed = 60u + 7u * uint32_t(layer);
    const float warp = x + 0.35f * fractal(x, float(layer) + 0.3f, period, 3, seed);
    const float massif =
        smooth(-0.5f, 0.6f, fractal(warp * 0.5f, float(layer) * 3.1f + 0.5f, period / 2, 2, seed + 1u));
    const float peaks = ridges(warp, float(layer) * 3.7f + 0.5f, period, 5, seed + 2u);
    return 215.0f + 255.0f * std::pow(near, 1.1f) - (40.0f + 130.0f * massif) * (1.0f - 0.35f * near) * peaks * peaks;
}

// A layer's colour at a depth below its crest, in rows: snow lit from the left, more air before the far ones, and mist
// that lies in the valley before the next.
Color ridgeFace(int layer, float x, float below)
{
    const float near = float(layer) / float(SCENERY_LAYERS - 1);
    const float slope = crestOf(layer, x + 0.03f) - crestOf(layer, x - 0.03f); // rows: falls to the right if positive
    const float across = x * 4.0f + 0.006f * below, down = below / 110.0f + float(layer) * 9.0f;
    const auto relief = [&](float at) { return ridges(at, down, 32, 4, 80u + uint32_t(layer)); };
    const float lit = smooth(-0.30f, 0.30f, relief(across + 0.05f) - relief(across - 0.05f) - 0.010f * slope);
    const Color air = mix(mix(GLACIER, ICE, 0.45f), mix(DEPTH, GLACIER, 0.30f), std::sqrt(near));
    const Color shade = mix(mix(DEPTH, air, 0.60f), ABYSS, near), light = mix(mix(ICE, SNOW, 0.3f), GLACIER, near);
    Color face = mix(shade, light, lit * (0.75f - 0.25f * near));
    face = mix(face, air, 0.55f * (1.0f - near));
    face = face + ICE * (0.12f * std::exp(-below / 2.0f)); // the crest against what is behind
    return mix(face, air, smooth(0.0f, 105.0f, below) * (0.92f - 0.35f * near));
}

} // namespace

// Layers of ridges in haze under an aurora, a last warmth behind them; drawn for a pan: the effect
// shows a part of the width at a time, and of the height the upper rows only.
Canvas ballScenery()
{
    const int width = LANDSCAPE_WIDTH, height = LANDSCAPE_HEIGHT, shown = LANDSCAPE_SHOWN_HEIGHT;
    Canvas canvas(width, height, ABYSS, 1.0f);
    for (int x = 0; x < width; x++)
    {
        const float px = float(x) / float(width) * SCENERY_AROUND;
        float crests[SCENERY_LAYERS];
        for (int layer = 0; layer < SCENERY_LAYERS; layer++) crests[layer] = crestOf(layer, px);
        const float warmth = smooth(-0.3f, 0.5f, fractal(px * 0.5f, 2.2f, 4, 2, 76u)); // where the sun went down
        for (int y = 0; y < height; y++)
        {
            const float v = float(y) / float(shown);
            Color color = mix(ABYSS, DEPTH, smooth(0.0f, 0.5f, v)) + GLACIER * (0.45f * smooth(0.18f, 0.5f, v));
            color = color + EMBER * (0.75f * warmth * smooth(0.20f, 0.48f, v));
            color = color + aurora(px, v, 0.20f, 71u);
            const float star = noise(float(x) * 0.91f, float(y) * 0.91f, 4096, 73u);
            color = color + SNOW * (smooth(0.80f, 0.93f, star) * 0.7f * smooth(0.4f, 0.1f, v));
            // The nearest of the layers that reach up to here.
            for (int layer = SCENERY_LAYERS - 1; layer >= 0; layer--)
                if (float(y) >= crests[layer])
                {
                    color = ridgeFace(layer, px, float(y) - crests[layer]);
                    color = color + EMBER * (0.10f * warmth * (1.0f - float(layer) / SCENERY_LAYERS));
                    break;
                }
            canvas.at(x, y).color = color;
        }
    }
    return canvas;
}

// A hot middle, a soft body, and four faint points.
Canvas sunSpark()
{
    const int size = 128;
    Canvas canvas(size, size, EMBER, 0.0f);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++)
        {
            const float u = (float(x) + 0.5f) / size * 2.0f - 1.0f, v = (float(y) + 0.5f) / size * 2.0f - 1.0f;
            const float distance = std::hypot(u, v);
            const float rim = smooth(1.0f, 0.55f, distance);
            const float body = std::exp(-distance * distance * 9.0f);
            const float points = std::exp(-std::fabs(u * v) * 180.0f) * std::exp(-distance * 3.2f);
            Pixel& pixel = canvas.at(x, y);
            pixel.alpha = std::min(1.0f, (0.8f * body + 0.55f * points) * rim);
            pixel.color = mix({0.85f, 0.16f, 0.05f}, mix(EMBER, {1.0f, 0.9f, 0.7f}, smooth(0.35f, 0.0f, distance)),
                              smooth(0.9f, 0.15f, distance));
        }
    return canvas;
}

// A chrome ball's view of an ice cave: cold light from above, dark walls with bright seams, embers below.
Canvas environment()
{
    const int size = 512;
    Canvas canvas(size, size, ABYSS, 1.0f);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++)
        {
            const float u = (float(x) + 0.5f) / size * 2.0f - 1.0f, v = (float(y) + 0.5f) / size * 2.0f - 1.0f;
            const float distance = std::min(1.0f, std::hypot(u, v));
            // The direction that a mirror ball shows at this place; y runs down in the picture.
            const float up = -v;
            const float stretch = 1.0f + 2.2f * distance * distance; // things crowd towards the rim
            const float px = u * stretch + 4.0f, py = v * stretch + 4.0f;

            Color color = mix(DEPTH * 0.8f, ABYSS, smooth(-0.2f, -0.9f, up));
            color = color + GLACIER * (0.75f * smooth(-0.1f, 0.9f, up));
            const float seams = ridges(px * 1.6f, py * 1.1f, 1024, 5, 90u);
            color = color + ICE * (0.75f * smooth(0.72f, 0.98f, seams) * smooth(-0.6f, 0.4f, up));
            // The opening overhead: a bright, slightly torn window.
            const float torn = std::hypot(u * 1.25f, v + 0.52f) + 0.09f * fractal(px * 2.0f, py * 2.0f, 1024, 4, 91u);
            color = mix(color, SNOW, smooth(0.30f, 0.16f, torn));
            color = color + ICE * (0.55f * std::exp(-torn * 3.6f));
            // Embers underneath.
            const float warm = std::hypot(u * 0.9f, v - 0.62f);
            color = color + EMBER * (0.85f * std::exp(-warm * warm * 9.0f));
            // A cold rim, so that the blob stands out from dark ground.
            color = color + ICE * (0.85f * smooth(0.80f, 0.99f, distance));
            canvas.at(x, y).color = color;
        }
    return canvas;
}

Canvas iceSurface()
{
    const int size = 512;
    Canvas canvas(size, size, ICE, 1.0f);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++)
        {
            const float px = float(x) / size * 4.0f, py = float(y) / size * 4.0f;
            const float warpX = px + 0.28f * fractal(px, py, 4, 4, 101u);
            const float warpY = py + 0.28f * fractal(px, py, 4, 4, 107u);
            const float cloud = 0.5f + 0.5f * fractal(warpX, warpY, 4, 5, 102u);
            float nearest, second;
            cells(warpX * 2.0f, warpY * 1.0f, 8, 103u, nearest, second);
            const float crack = smooth(0.07f, 0.0f, second - nearest);
            const float veins = smooth(0.80f, 0.98f, ridges(warpX, warpY, 4, 5, 104u));
            const float strata = 0.5f + 0.5f * std::sin((py + 0.3f * cloud) * 6.2831853f * 3.0f);
            Color color =
                mix(GLACIER * 0.75f, mix(GLACIER, ICE, 0.75f), smooth(0.2f, 0.8f, cloud) * 0.75f + 0.25f * strata);
            color = mix(color, SNOW, 0.55f * veins);
            color = mix(color, SNOW, 0.65f * crack);
            const float bubbles = smooth(0.62f, 0.9f, noise(px * 32.0f, py * 32.0f, 128, 105u));
            canvas.at(x, y).color = mix(color, SNOW, 0.30f * bubbles);
        }
    return canvas;
}

// Seen from high up: long drifts across the wind, glints as wide as they must be not to flicker.
Canvas snowSurface()
{
    const int size = 512;
    Canvas canvas(size, size, SNOW, 1.0f);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++)
        {
            const float px = float(x) / size * 4.0f, py = float(y) / size * 4.0f;
            const float bend = 0.5f * fractal(px, py, 4, 3, 113u);
            const float drift = 0.5f + 0.5f * fractal(px + bend, (py + bend) * 4.0f, 16, 4, 111u);
            const float crest = smooth(0.72f, 0.95f, ridges(px + bend, (py + bend) * 3.0f, 12, 3, 114u));
            const float broad = 0.5f + 0.6f * fractal(px, py, 4, 2, 115u);
            const Color color =
                mix(mix(GLACIER, ICE, 0.75f), mix(ICE, SNOW, 0.6f), smooth(0.2f, 0.8f, 0.55f * drift + 0.45f * broad));
            canvas.at(x, y).color = mix(color, SNOW, 0.6f * crest * smooth(0.2f, 0.7f, broad));
        }
    return canvas;
}

// Rock ribs that come through snow, running down the picture.
Canvas ridgeSurface()
{
    const int size = 512;
    Canvas canvas(size, size, SNOW, 1.0f);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++)
        {
            const float px = float(x) / size * 8.0f, py = float(y) / size * 4.0f;
            const float warp = px + 0.5f * fractal(px, py, 8, 3, 116u);
            const float ribs = ridges(warp, py * 0.5f, 8, 5, 117u);
            const float patches = fractal(warp * 0.5f, py, 4, 4, 118u);
            const float rock = smooth(0.42f, 0.80f, ribs + 0.45f * patches);
            const Color stone =
                mix(DEPTH, GLACIER * 0.8f, smooth(-0.4f, 0.5f, fractal(px * 3.0f, py * 2.0f, 24, 4, 119u)));
            const Color white = mix(ICE, SNOW, 0.5f + 0.6f * fractal(px, py, 8, 4, 120u));
            canvas.at(x, y).color = mix(white, stone, rock * 0.75f);
        }
    return canvas;
}

namespace
{

// Distance, in texels, to the nearest joint of a running bond of `columns` by `rows` stones; and which stone it is.
float bond(int x, int y, int size, int columns, int rows, int& stone)
{
    const float height = float(size) / float(rows), width = float(size) / float(columns);
    const int row = int(float(y) / height);
    const float shifted = std::fmod(float(x) + (row & 1) * width / 2.0f, float(size));
    const int column = int(shifted / width);
    stone = row * columns + column;
    const float inX = shifted - float(column) * width, inY = float(y) - float(row) * height;
    return std::min(std::min(inX, width - inX), std::min(inY, height - inY));
}

} // namespace

namespace
{

// Large dressed blocks with soft joints, rime on them; x and y from 0 to 1 over the picture.
Color masonry(int x, int y, int size, int columns, int rows)
{
    const float px = float(x) / size * 8.0f, py = float(y) / size * 8.0f;
    int stone;
    const float joint = bond(x, y, size, columns, rows, stone) + 5.0f * fractal(px * 2.0f, py * 2.0f, 16, 3, 121u);
    const float tone = 0.85f + 0.35f * noise(float(stone) * 0.37f + 0.5f, 0.5f, 4096, 122u);
    const float grain = fractal(px, py, 8, 4, 123u);
    const Color block = mix({0.22f, 0.27f, 0.33f}, {0.36f, 0.43f, 0.50f}, 0.5f + 0.7f * grain) * tone;
    const float edge = smooth(13.0f, 0.0f, joint);
    const float rime = smooth(0.15f, 0.6f, fractal(px * 0.5f, py * 0.5f, 4, 4, 124u) + 0.2f * edge);
    return mix(mix(block, ABYSS, edge * 0.6f), ICE, rime * 0.35f);
}

// How far inside a lancet a place is, of the picture of its glass, where u runs from -1 to 1 and v from 0 to 4;
// negative outside. Pointed arch: two arcs whose centres lie on the springing line.
float insideLancet(float u, float v)
{
    const float arch = v < 1.6f ? 1.75f - std::hypot(std::fabs(u) + 0.85f, 1.6f - v) : 0.90f - std::fabs(u);
    return std::min(arch, 3.92f - v);
}

// What falls through a lancet: cold panes, and the warm rose in its head.
Color lancetLight(float u, float v)
{
    const Color cold =
        mix(mix(GLACIER, ICE, 0.6f), {0.20f, 0.32f, 0.85f}, 0.5f + 0.5f * noise(u * 2.5f + 4.0f, v * 1.6f, 64, 143u));
    return mix(cold, EMBER * 1.6f, smooth(0.62f, 0.32f, std::hypot(u, v - 1.15f)));
}

} // namespace

Canvas stoneSurface()
{
    const int size = 512;
    Canvas canvas(size, size, DEPTH, 1.0f);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++) canvas.at(x, y).color = masonry(x, y, size, 2, 4);
    return canvas;
}

// The aisle's wall over one bay, 12 metres wide and 17 high, with the light on it: a glow around the window, shade
// under the vault, at the foot and beside the columns.
Canvas aisleSurface()
{
    const int size = 512;
    Canvas canvas(size, size, DEPTH, 1.0f);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++)
        {
            const float across = std::fabs((float(x) + 0.5f) / size * 12.0f - 6.0f);
            const float up = 17.0f - (float(y) + 0.5f) / size * 17.0f;
            const float u = across / 2.3f, v = 4.0f - (up - 3.2f) / 2.3f;
            const float away = std::max(0.0f, -insideLancet(u, v));
            float light =
                0.16f + 0.95f * std::exp(-away * 1.3f) + 0.35f * smooth(3.2f, 0.5f, up) * smooth(4.0f, 1.0f, across);
            light *= smooth(-0.8f, 2.2f, up) * smooth(15.5f, 10.5f, up) * smooth(6.6f, 3.6f, across);
            const Color tint = mix({1.0f, 1.0f, 1.0f}, {0.75f, 1.0f, 1.2f}, std::exp(-away));
            Color color = masonry(x, y, size, 4, 8) * (0.10f + light * 1.25f);
            color = {color.r * tint.r, color.g * tint.g, color.b * tint.b};
            const float warm = std::exp(-2.2f * std::max(0.0f, std::hypot(u, v - 1.15f) - 0.5f));
            canvas.at(x, y).color = color + EMBER * (0.16f * warm);
        }
    return canvas;
}

// The wall behind the choir, 34 metres wide and high: the glow of the rose, warm in its middle and cold further out,
// and of the three lancets below it; shade in the corners.
Canvas choirSurface()
{
    const int size = 1024;
    Canvas canvas(size, size, DEPTH, 1.0f);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++)
        {
            const float across = (float(x) + 0.5f) / size * 34.0f - 17.0f,
                        up = 34.0f - (float(y) + 0.5f) / size * 34.0f;
            const float toRose = std::max(0.0f, std::hypot(across, up - 22.2f) - 5.4f);
            float toLancet = 100.0f; // metres
            for (int i = -1; i <= 1; i++)
            {
                const float half = i ? 1.7f : 2.0f, height = i ? 9.5f : 11.7f;
                const float u = (across - 4.9f * float(i)) / half, v = 4.0f - 4.0f * (up - 3.5f) / height;
                toLancet = std::min(toLancet, half * std::max(0.0f, -insideLancet(u, v)));
            }
            const float light = 0.30f + 0.75f * std::exp(-toLancet * 0.9f);
            const float corner =
                smooth(17.5f, 9.0f, std::fabs(across)) * smooth(-1.0f, 4.0f, up) * smooth(33.0f, 27.0f, up);
            const Color stone = masonry(x, y, size, 12, 18);
            const Color shine = Color{0.85f, 1.0f, 1.15f} * (light * (0.25f + 0.75f * corner)) +
                                EMBER * (1.3f * std::exp(-toRose * 0.75f));
            canvas.at(x, y).color = {stone.r * shine.r, stone.g * shine.g, stone.b * shine.b};
        }
    return canvas;
}

// The floor of one bay across the church, 34 metres by 12: polished slabs, shade at walls and columns, and what falls
// through the windows of the left side, those of the aisle and, further in, those above it.
Canvas floorSurface()
{
    const int width = 1024, height = 512;
    Canvas canvas(width, height, DEPTH, 1.0f);
    struct Pool
    {
        float foot, head, half; // metres from the middle of the nave where it begins and ends; half its width
        float strength;
    };
    const Pool POOLS[] = {{-15.5f, -3.0f, 2.1f, 0.95f}, {1.5f, 8.6f, 1.5f, 0.55f}};
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
        {
            const float across = (float(x) + 0.5f) / width * 34.0f - 17.0f, along = (float(y) + 0.5f) / height * 12.0f;
            const float px = float(x) / width * 8.0f, py = float(y) / height * 4.0f;
            const int slabWidth = width / 12, slabHeight = height / 4; // metres: not quite 3 by 3
            const int column = std::min(11, x / slabWidth), row = y / slabHeight;
            const int inX = x - column * slabWidth, inY = y % slabHeight;
            const int end = column == 11 ? width - 11 * slabWidth : slabWidth;
            const float joint = float(std::min(std::min(inX, end - 1 - inX), std::min(inY, slabHeight - 1 - inY)));
            const bool dark = ((column + row) & 1) != 0;
            const float vein =
                smooth(0.82f, 1.0f, ridges(px + 0.3f * fractal(px, py, 8, 4, 131u), py * 2.0f, 8, 4, 132u));
            const float cloud = fractal(px * 2.0f, py * 2.0f, 16, 4, 133u);
            Color color = dark ? mix(ABYSS, DEPTH, 0.75f + 0.6f * cloud) : mix(DEPTH, GLACIER, 0.50f + 0.5f * cloud);
            color = mix(color, ICE, vein * (dark ? 0.15f : 0.30f));
            color = mix(color, ABYSS, smooth(4.0f, 0.0f, joint) * 0.6f);

            const float toColumn = std::hypot(std::fabs(across) - 9.0f, std::min(along, 12.0f - along));
            float shade = smooth(1.2f, 4.0f, toColumn) * 0.7f + 0.3f;
            shade *= 0.35f + 0.65f * smooth(17.2f, 13.0f, std::fabs(across));
            color = color * (shade * 0.75f);
            for (const Pool& pool : POOLS)
            {
                const float u = (along - 6.0f) / pool.half;
                const float v = 4.0f - 4.0f * (across - pool.foot) / (pool.head - pool.foot);
                if (v < -1.0f || v > 5.0f) continue;
                const float soft = 0.10f + 0.05f * (4.0f - v); // further from its window it is less sharp
                const float inside = smooth(-soft, soft, insideLancet(u, v));
                const float mullion = std::hypot(u, v - 1.15f) < 0.46f ? 1.0f : smooth(0.0f, 0.16f, std::fabs(u));
                float nearest, second;
                cells(u * 2.6f + 8.0f, v * 2.6f, 64, 141u, nearest, second);
                const float lead = 0.55f + 0.45f * smooth(0.0f, 0.25f, second - nearest);
                const Color light = lancetLight(u, v) * (pool.strength * inside * lead * (0.35f + 0.65f * mullion));
                color = color +
                        Color{light.r * (0.25f + color.r), light.g * (0.25f + color.g), light.b * (0.25f + color.b)};
                color = color + lancetLight(u, v) * (0.10f * pool.strength * smooth(-0.9f, 0.2f, insideLancet(u, v)));
            }
            canvas.at(x, y).color = color;
        }
    return canvas;
}

// A lancet of leaded panes: cold colours, with one warm rose in its head. Shown without shading, as light of its own.
Canvas windowGlass()
{
    const int width = 256, height = 512;
    Canvas canvas(width, height, ABYSS, 1.0f);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
        {
            const float u = (float(x) + 0.5f) / width * 2.0f - 1.0f; // -1 to 1
            const float v = (float(y) + 0.5f) / width * 2.0f;        // 0 to 4, downwards
            const float frame = insideLancet(u, v);

            const float rose = std::hypot(u, v - 1.15f);
            float nearest, second;
            cells(u * 2.6f + 8.0f, v * 2.6f, 64, 141u, nearest, second);
            float lead = second - nearest;
            const float shade = noise(nearest * 3.0f + u * 1.3f, v * 1.1f, 64, 142u);
            Color glass = mix(GLACIER, ICE, 0.45f + 0.5f * shade);
            glass = mix(glass, {0.20f, 0.30f, 0.75f}, 0.35f + 0.35f * noise(u * 2.0f + 3.0f, v * 1.4f, 64, 143u));
            if (rose < 0.46f)
            {
                const float petal = std::fabs(std::sin(4.0f * std::atan2(v - 1.15f, u)));
                lead = std::min(0.20f * petal, 0.46f - rose);
                lead = rose < 0.15f ? 0.15f - rose : std::min(lead, rose - 0.15f);
                glass = mix(EMBER, {1.0f, 0.75f, 0.35f}, smooth(0.40f, 0.0f, rose));
            }
            const float mullion = rose < 0.5f ? 1.0f : std::fabs(u);
            lead = std::min(lead, std::min(mullion * 1.4f, 1.0f));
            const float pane = smooth(0.02f, 0.07f, lead) * smooth(0.02f, 0.06f, frame);
            const float light = 0.75f + 0.35f * fractal(u * 3.0f + 4.0f, v * 3.0f, 64, 4, 144u);
            canvas.at(x, y).color = mix(ABYSS * 0.7f, glass * light, pane);
        }
    return canvas;
}

// A wheel of twelve petals around a warm heart.
Canvas roseWindow()
{
    const int size = 512;
    Canvas canvas(size, size, ABYSS, 1.0f);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++)
        {
            const float u = (float(x) + 0.5f) / size * 2.0f - 1.0f, v = (float(y) + 0.5f) / size * 2.0f - 1.0f;
            const float radius = std::hypot(u, v), angle = std::atan2(v, u);
            const float turn = angle / 6.2831853f * 12.0f + 6.0f;
            const float petal =
                std::fabs(turn - std::floor(turn) - 0.5f) * 2.0f; // 0 in the middle of a petal, 1 at its edge
            const float inner = std::fabs(turn * 2.0f - std::floor(turn * 2.0f) - 0.5f) * 2.0f;

            float lead = 0.95f - radius;
            Color glass = DEPTH;
            const float tint = 0.5f + 0.5f * noise(u * 5.0f + 8.0f, v * 5.0f + 8.0f, 64, 151u);
            if (radius < 0.20f)
            {
                lead = std::min(0.20f - radius, 0.35f);
                glass = mix(EMBER, {1.0f, 0.85f, 0.55f}, smooth(0.2f, 0.0f, radius));
            }
            else if (radius < 0.62f)
            {
                lead = std::min({(1.0f - petal) * radius * 0.26f, radius - 0.20f, 0.62f - radius});
                glass = mix(mix(EMBER, {0.85f, 0.15f, 0.20f}, tint), ICE, smooth(0.28f, 0.58f, radius));
            }
            else if (radius < 0.95f)
            {
                const float circle = 0.145f - std::hypot(radius - 0.785f, (petal * 0.5f) * radius * 0.5236f);
                lead =
                    circle > 0.0f ? circle : std::min({-circle, 0.95f - radius, radius - 0.62f, (1.0f - inner * 0.2f)});
                glass = circle > 0.0f ? mix(ICE, SNOW, 0.5f * tint) : mix({0.12f, 0.22f, 0.62f}, GLACIER, tint);
            }
            const float pane = smooth(0.008f, 0.024f, lead);
            const float light = 0.85f + 0.3f * fractal(u * 6.0f + 8.0f, v * 6.0f + 8.0f, 64, 4, 152u);
            canvas.at(x, y).color = radius < 0.95f ? mix(ABYSS * 0.7f, glass * light, pane) : ABYSS * 0.6f;
        }
    return canvas;
}

Canvas flameBody()
{
    const int width = 64, height = 128;
    Canvas canvas(width, height, EMBER, 1.0f);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
        {
            const float px = float(x) / width * 4.0f, v = float(y) / height;
            const float heat = v + 0.22f * fractal(px, v * 3.0f, 4, 4, 171u);
            Color color = mix({0.55f, 0.06f, 0.02f}, EMBER, smooth(0.05f, 0.45f, heat));
            canvas.at(x, y).color = mix(color, {1.0f, 0.92f, 0.70f}, smooth(0.42f, 0.85f, heat));
        }
    return canvas;
}

// From the zenith in the first row to the horizon in the last: stars, an aurora, a cold glow.
Canvas skyDome()
{
    const int size = 1024, height = 512;
    Canvas canvas(size, height, ABYSS, 1.0f);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < size; x++)
        {
            const float px = float(x) / size * 8.0f, v = float(y) / height;
            Color color = mix(ABYSS * 0.6f, DEPTH * 0.9f, smooth(0.15f, 0.95f, v));
            color = color + GLACIER * (0.55f * smooth(0.72f, 0.98f, v));
            color = color + aurora(px, v, 0.62f, 161u) + aurora(px + 2.7f, v, 0.76f, 261u) * 0.7f;
            const float star = noise(px * 26.0f, v * 104.0f, 208, 163u);
            color = color + SNOW * (smooth(0.80f, 0.92f, star) * 0.8f * smooth(0.9f, 0.5f, v));
            canvas.at(x, y).color = color;
        }
    return canvas;
}

} // namespace Paint
