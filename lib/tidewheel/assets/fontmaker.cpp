// Turns the picture of a font (tidewheel_font.txt explains the form) into the bits that the HUD reads:
//     fontmaker PICTURE FONT

#include "gr_exception.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace
{

GR_DECLARE_EXCEPTION(FontException, 512);

const int GLYPH_COUNT = 256;
const int ELSE_GLYPH = GLYPH_COUNT; // stands in for every code without a glyph of its own

// Cells of '.' and '#' for all codes, read from the picture.
class FontPicture
{
public:
    explicit FontPicture(const char* filename) : mFilename(filename), mInput(filename)
    {
        if (!mInput) throw FontException("FontPicture, Could not open the picture (%s)", filename);
        while (nextLine())
        {
            std::istringstream words(mLine);
            std::string word;
            words >> word;
            if (word == "cell")
                readCell(words);
            else if (word == "glyphs")
                readBand(words);
            else
                fail("\"cell\" or \"glyphs\" expected");
        }
        if (mGlyphs.empty()) fail("there are no glyphs");
    }

    // The font file: tag, cell size, then one stream of bits for all codes, most significant bit first.
    std::string getFont() const
    {
        std::string bits;
        for (int code = 0; code < GLYPH_COUNT; ++code)
            bits += mGlyphs[static_cast<std::size_t>(mDrawn[static_cast<std::size_t>(code)] ? code : ELSE_GLYPH)];

        std::string font = "SBF!";
        font += static_cast<char>(mWidth);
        font += static_cast<char>(mHeight);
        for (std::size_t first = 0; first < bits.size(); first += 8)
        {
            int byte = 0;
            for (std::size_t bit = 0; bit < 8; ++bit) byte = byte << 1 | (bits[first + bit] == '#');
            font += static_cast<char>(byte);
        }
        return font;
    }

private:
    [[noreturn]] void fail(const char* what) const
    {
        throw FontException("FontPicture, line %d: %s (%s)", mLineNumber, what, mFilename);
    }

    // The next line that is neither empty nor a comment.
    bool nextLine()
    {
        while (std::getline(mInput, mLine))
        {
            ++mLineNumber;
            if (!mLine.empty() && mLine[0] != '#') return true;
        }
        return false;
    }

    void readCell(std::istringstream& words)
    {
        if (!mGlyphs.empty()) fail("the cell has a size already");
        if (!(words >> mWidth >> mHeight) || mWidth < 1 || mWidth > 255 || mHeight < 1 || mHeight > 255)
            fail("a cell is 1 to 255 pixels wide and high");
        mGlyphs.assign(GLYPH_COUNT + 1, std::string(static_cast<std::size_t>(mWidth * mHeight), '.'));
        mDrawn.assign(GLYPH_COUNT + 1, false);
    }

    void readBand(std::istringstream& words)
    {
        if (mGlyphs.empty()) fail("the size of a cell must come first");
        std::vector<std::size_t> codes;
        std::string word;
        while (words >> word) codes.push_back(static_cast<std::size_t>(readCode(word)));
        for (const std::size_t code : codes) mGlyphs[code].clear();

        const std::size_t cell = static_cast<std::size_t>(mWidth);
        for (int row = 0; row < mHeight; ++row)
        {
            if (!nextLine() || mLine.size() != 1 + codes.size() * (cell + 1)) fail("a row has another length");
            for (std::size_t i = 0; i < codes.size(); ++i)
            {
                const std::string pixels = mLine.substr(1 + i * (cell + 1), cell);
                if (pixels.find_first_not_of(".#") != std::string::npos) fail("pixels are '.' or '#'");
                if (mLine[i * (cell + 1)] != '|') fail("cells stand between bars");
                mGlyphs[codes[i]] += pixels;
            }
        }
    }

    int readCode(const std::string& word)
    {
        int code = ELSE_GLYPH;
        if (word != "else")
        {
            std::istringstream number(word);
            if (!(number >> std::hex >> code) || !number.eof() || code < 0 || code >= GLYPH_COUNT)
                fail("a code is 00 to FF, or \"else\"");
        }
        if (mDrawn[static_cast<std::size_t>(code)]) fail("a code has two glyphs");
        mDrawn[static_cast<std::size_t>(code)] = true;
        return code;
    }

    const char* mFilename;
    std::ifstream mInput;
    std::string mLine;
    int mLineNumber = 0;
    int mWidth = 0;
    int mHeight = 0;
    std::vector<std::string> mGlyphs; // rows of a cell behind each other; the last one is the else glyph
    std::vector<bool> mDrawn;         // the picture has this glyph
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        std::fprintf(stderr, "Usage: fontmaker PICTURE FONT\n");
        return 2;
    }
    try
    {
        const std::string font = FontPicture(argv[1]).getFont();
        std::ofstream output(argv[2], std::ios::binary);
        output.write(font.data(), static_cast<std::streamsize>(font.size()));
        if (!output.flush()) throw FontException("main, Could not write the font (%s)", argv[2]);
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "Error: %s\n", exception.what());
        return 1;
    }
    return 0;
}
