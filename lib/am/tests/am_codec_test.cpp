#include <algorithm>
#include <cstdlib>
#include <memory>

#include "am_imagecodec_jpeg.h"
#include "am_imagecodec_png.h"
#include "am_testing.h"

using AM::ImageObject;

namespace
{
const char* const pngHeader = "[AM::loadPNG] Not a png-file! Header is wrong!";
const char* const pngError = "[AM::loadPNG] Error when decoding png-file!";

struct Decoded
{
    std::string error;
    int width, height;
    Bytes pixels;
};

// From a block of exactly the file's size, so that a byte read too far is a crash under the sanitizer.
template <class Codec>
Decoded decode(const Bytes& file)
{
    std::unique_ptr<unsigned char[]> block(new unsigned char[file.size()]);
    std::copy(file.begin(), file.end(), block.get());
    ImageObject image(0, 0, nullptr, nullptr, "");
    image.resize(1, 1); // to be replaced, or gone after an error
    Decoded result;
    result.error = getError([&] { Codec().decodeImage(block.get(), file.size(), image); });
    result.width = image.getWidth();
    result.height = image.getHeight();
    if (image.getData())
        result.pixels.assign(image.getData(), image.getData() + image.getWidth() * image.getHeight() * 4);
    EXPECT_EQ(result.error.empty(), !result.pixels.empty());
    return result;
}

const auto decodePng = decode<AM::ImageCodecPNG>;
const auto decodeJpeg = decode<AM::ImageCodecJPEG>;

// Distinct bytes, so that no swap of channels, columns or rows goes unseen.
Bytes countUp(std::size_t count)
{
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<unsigned char>(7 * i + 1);
    return bytes;
}

Bytes replaceBytes(Bytes file, std::size_t position, const Bytes& bytes)
{
    std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<long>(position));
    return file;
}

Bytes cut(const Bytes& file, std::size_t length)
{
    return Bytes(file.begin(), file.begin() + static_cast<long>(length));
}

// Every byte of the file damaged in several ways; each must end in a picture or an exception.
template <class Decode>
void damageEveryByte(const Bytes& file, Decode decodeFile)
{
    for (std::size_t i = 0; i < file.size(); ++i)
        for (const unsigned char value : {0x00, 0x7f, 0xff})
            decodeFile(replaceBytes(file, i, {value}));
}
}

TEST(ImageCodecPNG, turnsRowsIntoBlueGreenRedAlpha)
{
    const Bytes rgb = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18};
    const Bytes expected = {3, 2, 1, 255, 6, 5, 4, 255, 9, 8, 7, 255, 12, 11, 10, 255, 15, 14, 13, 255, 18, 17, 16, 255};
    for (const bool interlaced : {false, true})
    {
        const Decoded result = decodePng(makePng(3, 2, 2, 8, rgb, interlaced));
        EXPECT_EQ(expected, result.pixels);
        EXPECT_EQ(3, result.width);
        EXPECT_EQ(2, result.height);
    }
    EXPECT_EQ((Bytes{3, 2, 1, 0, 7, 6, 5, 8}), decodePng(makePng(1, 2, 6, 8, {1, 2, 3, 0, 5, 6, 7, 8})).pixels);
}

TEST(ImageCodecPNG, writesWhatItReads)
{
    ImageObject image(0, 0, nullptr, nullptr, "");
    image.resize(5, 3);
    const Bytes pixels = countUp(60);
    std::copy(pixels.begin(), pixels.end(), image.getWriteData());
    AM::ImageCodecPNG codec;
    unsigned char* data = nullptr;
    std::size_t length = 0;
    ASSERT_TRUE(codec.encodeImage(&data, &length, image));
    const Bytes file(data, data + length);
    delete[] data;
    EXPECT_EQ(6, file[25]);
    EXPECT_EQ(pixels, decodePng(file).pixels);

    image.resize(0, 0);
    EXPECT_FALSE(codec.encodeImage(&data, &length, image));
}

TEST(ImageCodecPNG, refusesOtherFormatsAndBadFiles)
{
    const Bytes good = makePng(2, 2, 6, 8, countUp(16));
    const Bytes gigapixels = {0x7f, 0xff, 0xff, 0xff};
    // A true checksum for a header that claims 60000 by 60000 pixels.
    const Bytes square = {0, 0, 0xea, 0x60, 0, 0, 0xea, 0x60, 8, 6, 0, 0, 0, 0x80, 0xd2, 0x75, 0x42};
    // A text that claims 2 GB, in place of the file's end.
    Bytes text = cut(good, good.size() - 12);
    text.insert(text.end(), {0x7f, 0xff, 0xff, 0xff, 't', 'E', 'X', 't', 'a', 0, 'b'});
    struct { const char* name; Bytes file; std::string error; } const cases[] = {
        {"empty", Bytes(), pngHeader},
        {"seven bytes", cut(good, 7), pngHeader},
        {"other signature", replaceBytes(good, 1, {'Q'}), pngHeader},
        {"signature alone", cut(good, 8), pngError},
        {"grey", makePng(2, 2, 0, 8, countUp(4)), "[AM::loadPNG] No support for grayscale images yet"},
        {"1 bit", makePng(2, 2, 0, 1, countUp(2)), "[AM::loadPNG] Bad color format of image (type 0, 1 bits per channel)"},
        {"palette", makePng(2, 2, 3, 8, Bytes(4)), "[AM::loadPNG] Bad color format of image (type 3, 8 bits per channel)"},
        {"grey, alpha", makePng(2, 2, 4, 8, countUp(8)), "[AM::loadPNG] Bad color format of image (type 4, 8 bits per channel)"},
        {"16 bits", makePng(2, 2, 6, 16, countUp(32)), "[AM::loadPNG] Bad color format of image (type 6, 16 bits per channel)"},
        {"huge width", replaceBytes(good, 16, gigapixels), pngError},
        {"huge height", replaceBytes(good, 20, gigapixels), pngError},
        {"huge square", replaceBytes(good, 16, square), pngError},
        {"huge text", text, pngError},
    };
    for (const auto& test : cases)
        EXPECT_EQ(test.error, decodePng(test.file).error) << test.name;
}

TEST(ImageCodecPNG, survivesEveryPrefixAndEveryDamagedByte)
{
    const Bytes file = makePng(9, 7, 6, 8, countUp(9 * 7 * 4), true);
    for (std::size_t length = 0; length < file.size(); ++length)
        EXPECT_EQ(length < 8 ? pngHeader : pngError, decodePng(cut(file, length)).error) << length;
    damageEveryByte(file, decodePng);
}

TEST(ImageCodecJPEG, turnsColorsAndGreyIntoBlueGreenRed)
{
    // No whole number of blocks; darker to the left, to the bottom, and from red over green to blue.
    for (const int components : {1, 3})
    {
        Bytes rows;
        for (int i = 0; i < 17 * 9; ++i)
            for (int component = 0; component < components; ++component)
                rows.push_back(static_cast<unsigned char>(100 + 8 * (i % 17) - 5 * (i / 17) - 20 * component));
        const Decoded result = decodeJpeg(makeJpeg(17, 9, components, rows));
        ASSERT_EQ(17u * 9 * 4, result.pixels.size());
        for (std::size_t i = 0; i < result.pixels.size(); ++i)
        {
            const int component = components == 1 ? 0 : 2 - static_cast<int>(i % 4);
            const int expected = rows[i / 4 * static_cast<std::size_t>(components) + static_cast<std::size_t>(std::max(component, 0))];
            EXPECT_NEAR(i % 4 == 3 ? 255 : expected, result.pixels[i], i % 4 == 3 ? 0 : 4) << i;
        }
    }
}

TEST(ImageCodecJPEG, refusesWhatIsDamagedOrTooMuch)
{
    const Bytes good = makeJpeg(8, 8, 1, countUp(64));
    const unsigned char frame[] = {0xff, 0xc0, 0, 11, 8, 0, 8, 0, 8};
    const std::size_t size = static_cast<std::size_t>(std::search(good.begin(), good.end(), frame, frame + 9) - good.begin()) + 5;
    ASSERT_LT(size, good.size());
    const Bytes farSegment = {0xff, 0xd8, 0xff, 0xe5, 0xff, 0xff, 1, 2, 3}; // skips behind the end
    struct { const char* name; Bytes file; const char* error; } const cases[] = {
        {"empty", Bytes(), "Premature end of JPEG file"},
        {"text", toBytes("no picture"), "Not a JPEG file: starts with 0x6e 0x6f"},
        {"far segment", farSegment, "Premature end of JPEG file"},
        {"end marker missing", cut(good, good.size() - 2), "Premature end of JPEG file"},
        {"half", cut(good, good.size() - 10), "Premature end of JPEG file"},
        {"huge", replaceBytes(good, size, {0xff, 0xdc, 0xff, 0xdc}), "Picture too large (65500x65500)"},
        {"too large for its bytes", replaceBytes(good, size, {0x10, 0, 0x10, 0}), "Picture too large (4096x4096)"},
        {"larger", replaceBytes(good, size, {0x08, 0, 0x08, 0}), "Corrupt JPEG data: premature end of data segment"},
        {"cmyk", makeJpeg(8, 8, 4, countUp(256)), "Unsupported color conversion request"},
        {"scans", makeJpeg(8, 8, 1, countUp(64), 128), "More than 100 scans"},
    };
    for (const auto& test : cases)
        EXPECT_EQ(std::string("Internal jpeglib error; ") + test.error, decodeJpeg(test.file).error) << test.name;
    EXPECT_EQ("", decodeJpeg(makeJpeg(8, 8, 1, countUp(64), 64)).error);
}

TEST(ImageCodecJPEG, survivesEveryPrefixAndEveryDamagedByte)
{
    for (const Bytes& file : {makeJpeg(16, 16, 3, countUp(768)), makeJpeg(17, 8, 1, countUp(136), 64)})
    {
        for (std::size_t length = 0; length < file.size(); ++length)
            EXPECT_NE("", decodeJpeg(cut(file, length)).error) << length;
        damageEveryByte(file, decodeJpeg);
    }
}
