#pragma once

#include "tw_events.h"

#include <cstdint>
#include <string>

namespace AM
{
class ArchiveManager;
}

namespace Tidewheel
{

// A canvas in main memory that a display device lays over the finished frame: boxes, circles and bitmap text, drawn by
// the processor, with no call into OpenGL. What is drawn stays until it is painted over.
//
// A pixel is 0xAARRGGBB; alpha takes effect when the device blends the canvas over the show. Rows count from the top.
//
// The canvas has a scrolling area, the rows mClipTop up to but not mClipBottom, which shows a part of a longer list.
// Operations with `scroll` take rows of that list: mScroll is subtracted, and what leaves the area is cut off. Without
// `scroll` they take rows of the canvas. Columns are not cut: what passes the right edge goes on in the next row, so
// the caller stays within the width. Whatever the arguments, nothing outside the buffer is touched.
class HUDBase
{
public:
    // Reads "tidewheel.font" from `archive`, which must live as long as the canvas. Throws a Tidewheel::Exception if
    // the font is missing or is none.
    explicit HUDBase(AM::ArchiveManager& archive);
    HUDBase(const HUDBase&) = delete;
    HUDBase& operator=(const HUDBase&) = delete;
    virtual ~HUDBase();

    // Paints the canvas from the state of the display.
    virtual void redraw() = 0;

    // Takes the events of a frame, in order. Here: redraws if there are any.
    virtual void processEvents(Events& events);

    // Gives the canvas a new size in pixels, cleared to 0, all of whose rows scroll.
    void resize(int width, int height);

    // Mixes two colours channel by channel: `a` at t = 0, `b` at t = 1.
    std::uint32_t gradient(std::uint32_t a, std::uint32_t b, float t) const;

    // Sets the bits of `colour` in the pixel, beside those that are set already.
    void drawPixel(int x, int y, std::uint32_t colour, bool scroll);

    // Writes one line of text (ISO 8859-1), its cells' top left corner at (x, y). Pixels from `maxWidth` on are left
    // out, so that a long text ends in a cut letter; 0 sets no limit. Text that does not lie wholly in the scrolling
    // area is not drawn. Returns the width of the text in pixels, 0 if it was not drawn.
    int drawText(const std::string& text, int x, int y, std::uint32_t colour, int maxWidth, bool scroll);

    // Fills a disc around (x, y). It never scrolls.
    void drawCircle(int x, int y, int diameter, std::uint32_t colour, bool scroll);

    // Fills a box, replacing what stands there. One that covers both ends of the scrolling area is not drawn.
    void drawBox(int x, int y, int width, int height, std::uint32_t colour, bool scroll);

    int mWidth;
    int mHeight;
    std::uint32_t* mData;         // owned; mWidth * mHeight pixels, row by row from the top
    bool mDirty;                  // changed since the last upload; the device clears it
    bool mVisible;                // on screen; the runtime toggles it
    int mClipTop;                 // first row of the scrolling area
    int mClipBottom;              // the row after its last
    AM::ArchiveManager* mArchive; // not owned
    int mScroll;                  // rows by which the scrolling area has moved up
    unsigned char mCharWidth;     // cell of a glyph
    unsigned char mCharHeight;
    unsigned char* mFont;        // owned; 256 glyphs, a byte for each pixel of the cell, 0 or 1
    unsigned char* mCharAdvance; // owned; 256 widths: how far the pen moves behind each character

private:
    void loadFont();
    void fillSpan(long long first, long long count, std::uint32_t colour);
};

} // namespace Tidewheel
