#pragma once

// A picture in floating point and what the show's painters need: noise, type, soft shapes, and the two file formats.

#include <cstdint>
#include <string>
#include <vector>

namespace Paint
{

struct Color
{
    float r, g, b;

    Color operator*(float f) const { return {r * f, g * f, b * f}; }
    Color operator+(const Color& o) const { return {r + o.r, g + o.g, b + o.b}; }
};

Color mix(const Color& from, const Color& to, float share);

// The palette of the whole show: depth, ice, and one warm colour for the heart.
const Color ABYSS = {0.012f, 0.030f, 0.052f};
const Color DEPTH = {0.035f, 0.105f, 0.170f};
const Color GLACIER = {0.150f, 0.390f, 0.520f};
const Color ICE = {0.500f, 0.780f, 0.880f};
const Color SNOW = {0.910f, 0.970f, 0.995f};
const Color EMBER = {1.000f, 0.420f, 0.140f};

// Straight (not premultiplied) colour with alpha, rows from the top.
struct Pixel
{
    Color color;
    float alpha;
};

class Canvas
{
public:
    Canvas(int width, int height, const Color& color, float alpha);

    int width() const { return mWidth; }
    int height() const { return mHeight; }
    Pixel& at(int x, int y) { return mPixels[std::size_t(y) * std::size_t(mWidth) + std::size_t(x)]; }
    const Pixel& at(int x, int y) const { return mPixels[std::size_t(y) * std::size_t(mWidth) + std::size_t(x)]; }

    // 8 bits a channel, RGBA or RGB. Throws std::runtime_error that names the file.
    void writePng(const std::string& filename, bool withAlpha) const;
    void writeJpeg(const std::string& filename, int quality) const;

private:
    std::vector<uint8_t> bytes(bool withAlpha) const;

    int mWidth;
    int mHeight;
    std::vector<Pixel> mPixels;
};

// Coverage of a shape, 0 to 1 a texel.
class Mask
{
public:
    Mask(int width, int height) : mWidth(width), mHeight(height), mValues(std::size_t(width) * std::size_t(height)) {}

    int width() const { return mWidth; }
    int height() const { return mHeight; }
    float& at(int x, int y) { return mValues[std::size_t(y) * std::size_t(mWidth) + std::size_t(x)]; }
    float at(int x, int y) const { return mValues[std::size_t(y) * std::size_t(mWidth) + std::size_t(x)]; }

    // Box blur, three times over each axis: nearly a Gaussian of that radius in texels.
    void blur(int radiusX, int radiusY);

private:
    int mWidth;
    int mHeight;
    std::vector<float> mValues;
};

// How a line of type is set.
struct Type
{
    const char* family;
    double size;           // in texels
    double tracking = 0.0; // added between letters, in texels
    double stretch = 1.0;  // horizontal
};

// Draws `text` into the mask with its middle at `centre` and its baseline at `baseline`; returns its width. Throws
// std::runtime_error if the family is not installed.
double setType(Mask& mask, const Type& type, const std::string& text, double centre, double baseline);

// Smooth noise from -1 to 1 over a lattice of unit cells; repeats after `period` cells on each axis.
float noise(float x, float y, int period, uint32_t seed);
// Octaves of it, each at half the size and half the strength: about -1 to 1.
float fractal(float x, float y, int period, int octaves, uint32_t seed);
// The same, folded at 0 so that it forms sharp ridges: 0 to 1, 1 on the ridge.
float ridges(float x, float y, int period, int octaves, uint32_t seed);
// Distance to the nearest and the second nearest of one random point per cell, in cells.
void cells(float x, float y, int period, uint32_t seed, float& nearest, float& second);

float smooth(float from, float to, float value); // 0 below `from`, 1 above `to`, an S between; from may exceed to

} // namespace Paint
