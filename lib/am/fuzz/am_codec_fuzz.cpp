// Image files of either format: a picture or an AM::Exception, never anything else. A PNG file is known by its first
// byte, everything else is taken for a JPEG.

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "am_exception.h"
#include "am_image.h"
#include "am_imagecodec_jpeg.h"
#include "am_imagecodec_png.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace
{
typedef std::vector<std::uint8_t> Bytes;

// A chunk of a PNG, or a marker of a JPEG with its segment. The compressed data of a JPEG is a piece of the type RAW.
struct Piece
{
    std::string type;
    Bytes data;
};

const std::string RAW;
const std::size_t SIGNATURE_LENGTH = 8;

const std::vector<std::string> CHUNKS = {"IHDR", "PLTE", "IDAT", "IEND", "tRNS", "gAMA", "sBIT",
                                         "tEXt", "zTXt", "iCCP", "acTL", "prVt", "CrIt"};
const std::vector<std::string> MARKERS = {"\xc0", "\xc1", "\xc2", "\xc4", "\xc9", "\xca", "\xcc", "\xd0", "\xd8",
                                          "\xd9", "\xda", "\xdb", "\xdc", "\xdd", "\xe0", "\xee", "\xfe", "\x01"};

bool isPng(const std::uint8_t* data, std::size_t size)
{
    return size > 0 && data[0] == 0x89;
}

std::size_t readBigEndian(const std::uint8_t* bytes, int count)
{
    std::size_t value = 0;
    for (int i = 0; i < count; ++i) value = value << 8 | bytes[i];
    return value;
}

void putBigEndian(Bytes& target, std::size_t value, int count)
{
    while (count-- > 0) target.push_back(static_cast<std::uint8_t>(value >> (8 * count)));
}

// A length that goes behind the end ends there.
std::vector<Piece> splitPng(const std::uint8_t* data, std::size_t size)
{
    std::vector<Piece> pieces;
    for (std::size_t place = SIGNATURE_LENGTH; place + 12 <= size;)
    {
        const std::size_t length = std::min(readBigEndian(data + place, 4), size - place - 12);
        const std::uint8_t* content = data + place + 8;
        pieces.push_back({std::string(content - 4, content), Bytes(content, content + length)});
        place += 12 + length;
    }
    return pieces;
}

bool hasSegment(std::uint8_t marker)
{
    return marker >= 0xc0 && (marker < 0xd0 || marker > 0xd9);
}

std::vector<Piece> splitJpeg(const std::uint8_t* data, std::size_t size)
{
    std::vector<Piece> pieces;
    for (std::size_t place = 0; place + 1 < size;)
    {
        const std::uint8_t marker = data[place + 1];
        if (data[place] != 0xff || marker == 0 || marker == 0xff)
        {
            if (pieces.empty() || pieces.back().type != RAW) pieces.push_back({RAW, Bytes()});
            pieces.back().data.push_back(data[place++]);
            if (data[place - 1] == 0xff) pieces.back().data.push_back(data[place++]);
            continue;
        }
        Piece piece = {std::string(1, static_cast<char>(marker)), Bytes()};
        place += 2;
        if (hasSegment(marker) && place + 2 <= size)
        {
            const std::size_t length = std::max<std::size_t>(2, readBigEndian(data + place, 2));
            const std::size_t end = std::min(place + length, size);
            piece.data.assign(data + place + 2, data + end);
            place = end;
        }
        pieces.push_back(piece);
    }
    return pieces;
}

// With true lengths and checksums.
Bytes join(bool png, const std::vector<Piece>& pieces)
{
    Bytes file;
    if (png) file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    for (const Piece& piece : pieces)
    {
        if (png) putBigEndian(file, piece.data.size(), 4);
        const std::size_t start = file.size();
        if (!png && piece.type != RAW) file.push_back(0xff);
        file.insert(file.end(), piece.type.begin(), piece.type.end());
        if (!png && piece.type != RAW && hasSegment(static_cast<std::uint8_t>(piece.type[0])))
            putBigEndian(file, piece.data.size() + 2, 2);
        file.insert(file.end(), piece.data.begin(), piece.data.end());
        if (png) putBigEndian(file, crc32(0, &file[start], static_cast<uInt>(file.size() - start)), 4);
    }
    return file;
}

void mutate(Bytes& bytes)
{
    const std::size_t size = bytes.size();
    bytes.resize(size + 64);
    bytes.resize(LLVMFuzzerMutate(bytes.data(), size, bytes.size()));
}

// Changes the rows of a PNG behind their compression, which goes into a number of chunks.
void mutateRows(std::vector<Piece>& pieces, std::minstd_rand& random)
{
    Bytes packed, rows(1 << 16);
    const auto isData = [](const Piece& piece) { return piece.type == "IDAT"; };
    for (const Piece& piece : pieces)
        if (isData(piece)) packed.insert(packed.end(), piece.data.begin(), piece.data.end());
    uLongf length = rows.size();
    uncompress(rows.data(), &length, packed.data(), packed.size());
    rows.resize(std::min<std::size_t>(length, rows.size()));
    mutate(rows);
    length = compressBound(rows.size());
    packed.resize(length);
    compress2(packed.data(), &length, rows.data(), rows.size(), static_cast<int>(random() % 10));
    packed.resize(length);

    const auto first = std::find_if(pieces.begin(), pieces.end(), isData);
    const std::size_t place = static_cast<std::size_t>(first - pieces.begin());
    pieces.erase(std::remove_if(first, pieces.end(), isData), pieces.end());
    const std::size_t half = random() % 2 ? packed.size() : random() % (packed.size() + 1);
    const auto middle = packed.begin() + static_cast<std::ptrdiff_t>(half);
    const auto target = pieces.insert(pieces.begin() + static_cast<std::ptrdiff_t>(place),
                                      Piece{"IDAT", Bytes(packed.begin(), middle)});
    if (middle != packed.end()) pieces.insert(target + 1, Piece{"IDAT", Bytes(middle, packed.end())});
}

void mutatePieces(bool png, std::vector<Piece>& pieces, std::minstd_rand& random)
{
    const std::size_t one = random() % pieces.size(), other = random() % pieces.size();
    const std::vector<std::string>& types = png ? CHUNKS : MARKERS;
    switch (random() % 8)
    {
    case 0:
        pieces.insert(pieces.begin() + static_cast<std::ptrdiff_t>(other), Piece(pieces[one]));
        break;
    case 1:
        pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(one));
        break;
    case 2:
        std::swap(pieces[one], pieces[other]);
        break;
    case 3:
        pieces[one].type = types[random() % types.size()];
        break;
    case 4:
    case 5:
        if (png)
        {
            mutateRows(pieces, random);
            break;
        }
        [[fallthrough]];
    default:
        mutate(pieces[one].data);
    }
}
} // namespace

// A guess seldom has a true checksum, or a length that fits: most files are changed inside their pieces.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed)
{
    std::minstd_rand random(seed);
    const bool png = isPng(data, size);
    std::vector<Piece> pieces = png ? splitPng(data, size) : splitJpeg(data, size);
    if (pieces.empty() || random() % 16 == 0) return LLVMFuzzerMutate(data, size, maxSize);
    mutatePieces(png, pieces, random);
    const Bytes file = join(png, pieces);
    if (file.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
    std::copy(file.begin(), file.end(), data);
    return file.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    AM::ImageObject image(0, 0, nullptr, nullptr, "fuzz");
    AM::ImageCodecPNG png;
    AM::ImageCodecJPEG jpeg;
    AM::ImageCodec& codec = isPng(data, size) ? static_cast<AM::ImageCodec&>(png) : jpeg;
    try
    {
        codec.decodeImage(data, size, image);
    }
    catch (const AM::Exception&)
    {
    }
    return 0;
}
