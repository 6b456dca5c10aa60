#include "tw_hudbase.h"

#include "tw_exception.h"

#include "am.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace Tidewheel
{

namespace
{

const char* const FONT_FILENAME = "tidewheel.font";
const long FONT_HEADER_LENGTH = 6; // tag, cell width, cell height
const int GLYPH_COUNT = 256;
const int BLANK_CODE = 32;

} // namespace

HUDBase::HUDBase(AM::ArchiveManager& archive)
    : mWidth(512), mHeight(512), mData(nullptr), mDirty(true), mVisible(false), mClipTop(0), mClipBottom(512),
      mArchive(&archive), mScroll(0), mCharWidth(0), mCharHeight(0), mFont(nullptr), mCharAdvance(nullptr)
{
    loadFont();
    resize(mWidth, 512);
}

HUDBase::~HUDBase()
{
    delete[] mData;
    delete[] mFont;
    delete[] mCharAdvance;
}

// The file: a tag, the cell's size, and one continuous stream of bits for the cells of all 256 codes, rows from the
// top, in a row from the left, the most significant bit of a byte first. Widths are not stored: they follow from the
// ink.
void HUDBase::loadFont()
{
    const AM::File file = mArchive->readFile(FONT_FILENAME, -1);
    if (file.isNull()) throw Exception("[Tidewheel] Could not find 'tidewheel.font'!");
    const unsigned char* data = file->data;
    if (file->length < 4 || std::memcmp(data, "SBF!", 4) != 0)
        throw Exception("Font not an Sandrift Binary Font -!-\n");

    const long glyphPixels = file->length >= FONT_HEADER_LENGTH ? data[4] * data[5] : 0;
    const long expected = FONT_HEADER_LENGTH + GLYPH_COUNT / 8 * glyphPixels;
    if (file->length < expected)
        throw Exception("HUDBase::loadFont, File is too short (%s): expected %ld bytes, got %ld", FONT_FILENAME,
                        expected, file->length);

    mCharWidth = data[4];
    mCharHeight = data[5];
    mFont = new unsigned char[static_cast<std::size_t>(GLYPH_COUNT * glyphPixels)];
    for (long bit = 0; bit < GLYPH_COUNT * glyphPixels; ++bit)
        mFont[bit] = (data[FONT_HEADER_LENGTH + bit / 8] >> (7 - bit % 8)) & 1;

    mCharAdvance = new unsigned char[GLYPH_COUNT];
    for (int character = 0; character < GLYPH_COUNT; ++character)
    {
        int inkWidth = 0;
        for (long pixel = 0; pixel < glyphPixels; ++pixel)
            if (mFont[character * glyphPixels + pixel])
                inkWidth = std::max(inkWidth, static_cast<int>(pixel % mCharWidth) + 1);
        // Two columns of air; the widest cells there can be would pass the byte.
        mCharAdvance[character] = static_cast<unsigned char>(inkWidth ? std::min(inkWidth + 2, UCHAR_MAX) : 0);
    }
    mCharAdvance[BLANK_CODE] = 4;
}

void HUDBase::resize(int width, int height)
{
    assert(width >= 0 && height >= 0);
    delete[] mData;
    mData = nullptr;
    mHeight = mClipBottom = height;
    mWidth = width;
    mClipTop = 0;
    mData = new std::uint32_t[static_cast<std::size_t>(width) * static_cast<std::size_t>(height)]();
}

void HUDBase::processEvents(Events& events)
{
    if (events.count > 0) redraw();
}

std::uint32_t HUDBase::gradient(std::uint32_t a, std::uint32_t b, float t) const
{
    std::uint32_t colour = 0;
    for (int shift = 0; shift < 32; shift += 8)
    {
        const float from = static_cast<float>((a >> shift) & 0xFF);
        const float to = static_cast<float>((b >> shift) & 0xFF);
        // A t outside 0 to 1 must not spill into the next channel.
        const float channel = std::min(std::max((1.0f - t) * from + t * to, 0.0f), 255.0f);
        colour |= static_cast<std::uint32_t>(channel) << shift;
    }
    return colour;
}

void HUDBase::drawPixel(int x, int y, std::uint32_t colour, bool scroll)
{
    long long row = y;
    if (scroll)
    {
        row -= mScroll;
        if (row >= mClipBottom || row < mClipTop) return;
    }
    const long long index = row * mWidth + x;
    if (index >= 0 && index < static_cast<long long>(mWidth) * mHeight) mData[index] |= colour;
}

int HUDBase::drawText(const std::string& text, int x, int y, std::uint32_t colour, int maxWidth, bool scroll)
{
    long long top = y;
    if (scroll)
    {
        top -= mScroll;
        if (top + mCharHeight >= mClipBottom || top < mClipTop - 1) return 0;
    }

    const long long size = static_cast<long long>(mWidth) * mHeight;
    const std::size_t glyphPixels = static_cast<std::size_t>(mCharWidth) * mCharHeight;
    int pen = 0;
    for (const char character : text)
    {
        if (pen > INT_MAX - UCHAR_MAX) break;
        const std::size_t code = static_cast<unsigned char>(character);
        const int columns = maxWidth != 0 ? std::min<int>(mCharWidth, std::max(maxWidth - pen, 0)) : mCharWidth;
        const unsigned char* ink = mFont + code * glyphPixels;
        for (int row = 0; columns > 0 && row < mCharHeight; ++row, ink += mCharWidth)
        {
            const long long first = (top + row) * mWidth + x + pen;
            for (int column = 0; column < columns; ++column)
                if (ink[column] && first + column >= 0 && first + column < size) mData[first + column] = colour;
        }
        pen += mCharAdvance[code];
    }
    return pen;
}

void HUDBase::drawCircle(int x, int y, int diameter, std::uint32_t colour, bool)
{
    const int r = diameter / 2;
    for (int dy = -r; dy < r; ++dy)
        for (int dx = -r; dx < r; ++dx)
        {
            const float across = static_cast<float>(dx) / static_cast<float>(r);
            const float down = static_cast<float>(dy) / static_cast<float>(r);
            if (std::sqrt(down * down + across * across) < 1.0f)
                fillSpan((static_cast<long long>(y) + dy) * mWidth + x + dx, 1, colour);
        }
}

void HUDBase::drawBox(int x, int y, int width, int height, std::uint32_t colour, bool scroll)
{
    long long top = y;
    long long rows = height;
    if (scroll)
    {
        top -= mScroll;
        if (top + rows >= mClipBottom && top < mClipTop) return;
        if (top + rows >= mClipBottom) rows = mClipBottom - top;
        if (top < mClipTop)
        {
            rows -= mClipTop - top;
            top = mClipTop;
        }
    }
    for (long long row = top; row < top + rows; ++row) fillSpan(row * mWidth + x, width, colour);
}

// Fills `count` pixels from index `first` on, as far as they lie in the buffer.
void HUDBase::fillSpan(long long first, long long count, std::uint32_t colour)
{
    const long long begin = std::max<long long>(first, 0);
    const long long end = std::min(first + count, static_cast<long long>(mWidth) * mHeight);
    if (begin < end) std::fill(mData + begin, mData + end, colour);
}

} // namespace Tidewheel
