#include "pictures.h"

#include "text.h"
#include "y3d_exception.h"

#include <png.h>

#include <cctype>
#include <cstring>
#include <filesystem>

namespace gltf
{

namespace
{

const std::size_t MAX_PIXELS = std::size_t(1) << 26; // of one picture: 8192 by 8192
const std::size_t MAX_BYTES = std::size_t(1) << 30;  // of all files
const unsigned int IHDR_END = 8 + 8 + 13;            // signature, chunk head, size and kind of the pixels
const unsigned int BIT_DEPTH = 24, COLOR_TYPE = 25;  // places in there

bool isPng(const std::vector<unsigned char>& bytes)
{
    return bytes.size() >= IHDR_END && std::memcmp(bytes.data(), "\x89PNG\r\n\x1a\n", 8) == 0;
}

bool isJpeg(const std::vector<unsigned char>& bytes)
{
    return bytes.size() >= 3 && std::memcmp(bytes.data(), "\xFF\xD8\xFF", 3) == 0;
}

bool isPlainPng(const std::vector<unsigned char>& bytes)
{
    return bytes[BIT_DEPTH] == 8 &&
           (bytes[COLOR_TYPE] == PNG_COLOR_TYPE_RGB || bytes[COLOR_TYPE] == PNG_COLOR_TYPE_RGBA);
}

std::vector<unsigned char> toPlainPng(const std::vector<unsigned char>& bytes)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()))
        throw y3d::Exception("%s", image.message);
    if (std::size_t(image.width) * image.height > MAX_PIXELS)
    {
        png_image_free(&image);
        throw y3d::Exception("is too large");
    }
    image.format = image.format & PNG_FORMAT_FLAG_ALPHA ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    std::vector<unsigned char> pixels(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) throw y3d::Exception("%s", image.message);

    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::vector<unsigned char> file(size);
    if (!png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr))
        throw y3d::Exception("%s", image.message);
    file.resize(size);
    return file;
}

// A name for a file of the show: no folders, no blanks in front, no extension of its own.
std::string stemOf(const std::string& name)
{
    std::string stem = std::filesystem::path(name).filename();
    const std::string extension = std::filesystem::path(stem).extension();
    if (extension == ".png" || extension == ".jpg" || extension == ".jpeg") stem.resize(stem.size() - extension.size());
    for (char& letter : stem)
    {
        const bool isPlain = std::isalnum(static_cast<unsigned char>(letter)) || std::strchr("-_.", letter);
        if (!isPlain) letter = '_';
    }
    return stem == "." || stem == ".." ? "" : stem;
}

} // namespace

const std::string& Pictures::getFile(int image)
{
    const auto known = mFileNames.find(image);
    if (known != mFileNames.end()) return known->second;
    std::string name;
    try
    {
        name = makeFile(image);
    }
    catch (const std::exception& exception)
    {
        const std::string& own = mModel.images[image].name;
        mLosses.tell("picture " + (own.empty() ? std::to_string(image) : quoted(own)) +
                     " is left out: " + exception.what());
    }
    return mFileNames[image] = name;
}

std::string Pictures::makeFile(int index)
{
    std::vector<unsigned char> bytes = readPicture(mModel, index, mFolder);
    if (!isPng(bytes) && !isJpeg(bytes)) throw y3d::Exception("is neither PNG nor JPEG");
    const char* extension = isPng(bytes) ? ".png" : ".jpg";
    if (isPng(bytes) && !isPlainPng(bytes)) bytes = toPlainPng(bytes);
    mNumBytes += bytes.size();
    if (mNumBytes > MAX_BYTES) throw y3d::Exception("all pictures together are too large");

    const tinygltf::Image& image = mModel.images[index];
    const std::string stem = stemOf(image.uri.empty() ? image.name : image.uri);
    const std::string name = mNames.claim(stem, "picture") + extension;
    mFiles.push_back({name, std::move(bytes)});
    return name;
}

} // namespace gltf
