#include <algorithm>
#include <memory>
#include <random>
#include <tuple>

#include "am_imagecodec_jpeg.h"
#include "am_imagecodec_png.h"
#include "am_testing.h"

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
template <class Codec> Decoded decode(const Bytes& file)
{
    std::unique_ptr<unsigned char[]> block(new unsigned char[file.size()]);
    std::copy(file.begin(), file.end(), block.get());
    AM::ImageObject image(0, 0, nullptr, nullptr, "");
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
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(7 * i + 1);
    return bytes;
}

// No prefix is a picture; with a damaged byte the file is a picture or an exception.
template <class Decode> void tryDamage(const Bytes& file, Decode decodeFile)
{
    for (std::size_t i = 0; i < file.size(); ++i)
    {
        EXPECT_NE("", decodeFile(cut(file, i)).error) << i;
        for (const unsigned char value : {0x00, 0x7f, 0xff}) decodeFile(replaceBytes(file, i, {value}));
    }
}
} // namespace

TEST(ImageCodecPNG, turnsRowsIntoBlueGreenRedAlpha)
{
    const Decoded rgb = decodePng(makePng(2, 3, 2, 8, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}));
    EXPECT_EQ((Bytes{3, 2, 1, 255, 6, 5, 4, 255, 9, 8, 7, 255, 12, 11, 10, 255, 15, 14, 13, 255, 18, 17, 16, 255}),
              rgb.pixels);
    EXPECT_EQ(2, rgb.width);
    EXPECT_EQ(3, rgb.height);
    EXPECT_EQ((Bytes{3, 2, 1, 0, 7, 6, 5, 8}), decodePng(makePng(1, 2, 6, 8, {1, 2, 3, 0, 5, 6, 7, 8})).pixels);
}

TEST(ImageCodecPNG, writesWhatItReads)
{
    AM::ImageObject image(0, 0, nullptr, nullptr, "");
    image.resize(5, 3);
    const Bytes pixels = countUp(60);
    std::copy(pixels.begin(), pixels.end(), image.getWriteData());
    AM::ImageCodecPNG codec;
    unsigned char* data = nullptr;
    std::size_t length = 0;
    ASSERT_TRUE(codec.encodeImage(&data, &length, image));
    const Bytes file(data, data + length);
    delete[] data;
    EXPECT_EQ((Bytes{8, 6, 0, 0, 0}), Bytes(file.begin() + 24, file.begin() + 29)); // 8-bit RGBA, not interlaced
    EXPECT_EQ(pixels, decodePng(file).pixels);

    image.resize(0, 0);
    EXPECT_FALSE(codec.encodeImage(&data, &length, image));
}

TEST(ImageCodecPNG, refusesOtherFormatsAndBadFiles)
{
    const std::string badFormat = "[AM::loadPNG] Bad color format of image ";
    const Bytes good = makePng(2, 2, 6, 8, countUp(16));
    Bytes text = cut(good, good.size() - 12); // a text that claims 2 GB, in place of the end
    text.insert(text.end(), {0x7f, 0xff, 0xff, 0xff, 't', 'E', 'X', 't', 'a', 0, 'b'});
    // libpng reads on past such a chunk.
    const auto putAhead = [](Bytes file) {
        const Bytes chunk = {0, 0, 0, 0, 'p', 'r', 'V', 't', 0xa6, 0x87, 0x8c, 0x49};
        file.insert(file.begin() + 8, chunk.begin(), chunk.end());
        return file;
    };
    Bytes noise(1 << 17);
    std::minstd_rand random;
    for (unsigned char& byte : noise) byte = static_cast<unsigned char>(random() >> 8);
    const std::vector<std::tuple<const char*, Bytes, std::string>> cases = {
        {"chunk ahead", putAhead(good), ""},
        {"chunk ahead, huge", putAhead(makePng(9000, 9000, 6, 8, countUp(16))), pngError},
        {"row too long", makePng(1, 1, 6, 8, countUp(99)), ""},
        {"endless row", makePng(1, 1, 6, 8, noise), pngError},
        {"no chunk", cut(good, 8), pngError},
        {"empty", Bytes(), pngHeader},
        {"seven bytes", cut(good, 7), pngHeader},
        {"other signature", replaceBytes(good, 1, {'Q'}), pngHeader},
        {"grey", makePng(2, 2, 0, 8, countUp(4)), "[AM::loadPNG] No support for grayscale images yet"},
        {"1 bit", makePng(2, 2, 0, 1, countUp(2)), badFormat + "(type 0, 1 bits per channel)"},
        {"palette", makePng(2, 2, 3, 8, Bytes(4)), badFormat + "(type 3, 8 bits per channel)"},
        {"grey, alpha", makePng(2, 2, 4, 8, countUp(8)), badFormat + "(type 4, 8 bits per channel)"},
        {"16 bits", makePng(2, 2, 6, 16, countUp(32)), badFormat + "(type 6, 16 bits per channel)"},
        {"too few rows", makePng(2, 3, 6, 8, countUp(16)), pngError},
        {"huge width", makePng(0x7fffffff, 1, 6, 8, countUp(16)), pngError},
        {"huge square", makePng(60000, 60000, 6, 8, countUp(16)), pngError},
        {"more than its bytes hold", makePng(5000, 5000, 6, 8, countUp(16)), pngError},
        {"huge text", text, pngError},
    };
    for (const auto& [name, file, error] : cases) EXPECT_EQ(error, decodePng(file).error) << name;
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
        for (std::size_t i = 0; i < result.pixels.size(); i += 4)
        {
            const unsigned char* color = &rows[i / 4 * static_cast<std::size_t>(components)];
            for (int component = 0; component < 3; ++component)
                EXPECT_NEAR(color[components == 1 ? 0 : component], result.pixels[i + 2 - component], 4) << i;
            EXPECT_EQ(255, result.pixels[i + 3]);
        }
    }
}

TEST(ImageCodecJPEG, refusesWhatIsDamagedOrTooMuch)
{
    const Bytes good = makeJpeg(8, 8, 1, countUp(64));
    const Bytes frame = {0xff, 0xc0, 0, 11, 8}; // the size comes behind it
    const auto found = std::search(good.begin(), good.end(), frame.begin(), frame.end());
    const auto claim = [&](const Bytes& size) {
        return replaceBytes(good, static_cast<std::size_t>(found - good.begin()) + 5, size);
    };
    const std::vector<std::tuple<const char*, Bytes, std::string>> cases = {
        {"empty", Bytes(), "Premature end of JPEG file"},
        {"text", toBytes("no picture"), "Not a JPEG file: starts with 0x6e 0x6f"},
        {"segment behind the end", {0xff, 0xd8, 0xff, 0xe5, 0xff, 0xff, 1, 2, 3}, "Premature end of JPEG file"},
        {"end marker missing", cut(good, good.size() - 2), "Premature end of JPEG file"},
        {"huge", claim({0xff, 0xdc, 0xff, 0xdc}), "Picture too large (65500x65500)"},
        {"more than its bytes hold", claim({0x10, 0, 0x10, 0}), "Picture too large (4096x4096)"},
        {"larger", claim({0x08, 0, 0x08, 0}), "Corrupt JPEG data: premature end of data segment"},
        {"cmyk", makeJpeg(8, 8, 4, countUp(256)), "Unsupported color conversion request"},
        {"scans", makeJpeg(8, 8, 1, countUp(64), 128), "More than 100 scans"},
    };
    for (const auto& [name, file, error] : cases)
        EXPECT_EQ("Internal jpeglib error; " + error, decodeJpeg(file).error) << name;
}

TEST(ImageCodecs, surviveEveryPrefixAndEveryDamagedByte)
{
    tryDamage(makePng(9, 7, 6, 8, countUp(9 * 7 * 4)), decodePng);
    tryDamage(makeJpeg(16, 16, 3, countUp(768)), decodeJpeg);
    tryDamage(makeJpeg(17, 8, 1, countUp(136), 64), decodeJpeg);
}
