#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#include "am_imagecodec_jpeg.h"
#include "am_imagecodec_png.h"
#include "am_testing.h"

namespace
{
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

void putBigEndian(unsigned char* target, uLong value)
{
    for (int i = 0; i < 4; ++i) target[i] = static_cast<unsigned char>(value >> (24 - 8 * i));
}

const auto decodePng = decode<AM::ImageCodecPNG>;
const auto decodeJpeg = decode<AM::ImageCodecJPEG>;

// No prefix is a picture; with a damaged byte the file is a picture or an exception.
template <class Decode> void tryDamage(const Bytes& file, Decode decodeFile)
{
    for (std::size_t i = 0; i < file.size(); ++i)
    {
        EXPECT_NE("", decodeFile(cut(file, i)).error) << i;
        for (const unsigned char value : {0x00, 0x7f, 0xff}) decodeFile(replaceByte(file, i, value));
    }
}
} // namespace

TEST(ImageCodecPNG, turnsRowsIntoBlueGreenRedAlpha)
{
    const Decoded rgb = decodePng(readSample("rgb.png"));
    EXPECT_EQ((Bytes{3, 2, 1, 255, 6, 5, 4, 255, 9, 8, 7, 255, 12, 11, 10, 255, 15, 14, 13, 255, 18, 17, 16, 255}),
              rgb.pixels);
    EXPECT_EQ(2, rgb.width);
    EXPECT_EQ(3, rgb.height);
    EXPECT_EQ((Bytes{3, 2, 1, 0, 7, 6, 5, 8}), decodePng(readSample("rgba.png")).pixels);
}

TEST(ImageCodecPNG, writesWhatItReads)
{
    AM::ImageObject image(0, 0, nullptr, nullptr, "");
    image.resize(5, 3);
    // Distinct bytes, so that no swap of channels, columns or rows goes unseen.
    for (int i = 0; i < 60; ++i) image.getWriteData()[i] = static_cast<unsigned char>(7 * i + 1);
    const Bytes pixels(image.getData(), image.getData() + 60);
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
    const std::string header = "Not a png-file! Header is wrong!", error = "Error when decoding png-file!";
    const std::vector<std::pair<const char*, std::string>> cases = {
        {"signature", header},
        {"wrong_signature", header},
        {"grey", "No support for grayscale images yet"},
        {"grey_1", "Bad color format of image (type 0, 1 bits per channel)"},
        {"palette", "Bad color format of image (type 3, 2 bits per channel)"},
        {"grey_alpha", "Bad color format of image (type 4, 8 bits per channel)"},
        {"rgb_16", "Bad color format of image (type 2, 16 bits per channel)"},
        {"rgba_16", "Bad color format of image (type 6, 16 bits per channel)"},
        {"too_few_rows", error},
        {"too_wide", error},
        {"too_high", error},
        {"huge", error},
        {"huge_behind_chunk", error},
        {"huge_text", error},
        {"more_than_it_holds", error},
        {"chunk_too_long", error},
        {"no_header", error},
        {"cut", error},
    };
    for (const auto& [name, text] : cases)
        EXPECT_EQ("[AM::loadPNG] " + text, decodePng(readSample(std::string(name) + ".png")).error) << name;
    for (const char* name : {"chunks_around.png", "too_many_rows.png", "blank.png"})
        EXPECT_EQ("", decodePng(readSample(name)).error) << name;
}

// What stands behind the last row is unpacked for nothing, so there may not be much of it.
TEST(ImageCodecPNG, endsSoonBehindTheLastRow)
{
    const Bytes good = readSample("rgba.png");
    for (const uLong length : {40000u, 200000u})
    {
        Bytes rows(length);
        std::minstd_rand random;
        std::generate(rows.begin() + 10, rows.end(), [&] { return static_cast<unsigned char>(random() >> 8); });
        uLong size = compressBound(length);
        Bytes chunk(8 + size);
        std::memcpy(&chunk[4], "IDAT", 4);
        compress(&chunk[8], &size, rows.data(), length);
        chunk.resize(8 + size);
        putBigEndian(&chunk[0], size);
        chunk.resize(12 + size);
        putBigEndian(&chunk[8 + size], crc32(0, &chunk[4], static_cast<uInt>(4 + size)));
        Bytes file = cut(good, 33);
        file.insert(file.end(), chunk.begin(), chunk.end());
        file.insert(file.end(), good.end() - 12, good.end());
        EXPECT_EQ(length == 40000, decodePng(file).error.empty());
    }
}

TEST(ImageCodecJPEG, turnsColorsAndGreyIntoBlueGreenRed)
{
    // No whole number of blocks; darker to the left, to the bottom, and from red over green to blue.
    for (const char* name : {"grey.jpg", "color_444.jpg"})
    {
        const Decoded result = decodeJpeg(readSample(name));
        ASSERT_EQ(17u * 9 * 4, result.pixels.size());
        for (int i = 0; i < 17 * 9 * 4; ++i)
        {
            const int darker = *name == 'g' ? 0 : 20 * (2 - i % 4), color = 100 + 8 * (i / 4 % 17) - 5 * (i / 4 / 17);
            EXPECT_NEAR(i % 4 == 3 ? 255 : color - darker, result.pixels[static_cast<std::size_t>(i)], 4) << i;
        }
    }
}

TEST(ImageCodecJPEG, refusesWhatIsDamagedOrTooMuch)
{
    const std::vector<std::pair<const char*, std::string>> cases = {
        {"text", "Not a JPEG file: starts with 0x6e 0x6f"},
        {"segment_behind_end", "Premature end of JPEG file"},
        {"cut", "Premature end of JPEG file"},
        {"huge", "Picture too large (65500x65500)"},
        {"more_than_it_holds", "Picture too large (4096x4096)"},
        {"believed", "Corrupt JPEG data: premature end of data segment"},
        {"cmyk", "Unsupported color conversion request"},
        {"many_scans", "More than 100 scans"},
    };
    for (const auto& [name, error] : cases)
        EXPECT_EQ("Internal jpeglib error; " + error, decodeJpeg(readSample(std::string(name) + ".jpg")).error);
    EXPECT_EQ("", decodeJpeg(readSample("comment.jpg")).error);
}

TEST(ImageCodecs, surviveEveryPrefixAndEveryDamagedByte)
{
    for (const char* name : {"rgba_filters.png", "rgb_interlaced.png"}) tryDamage(readSample(name), decodePng);
    for (const char* name : {"color_420.jpg", "progressive_grey.jpg"}) tryDamage(readSample(name), decodeJpeg);
}
