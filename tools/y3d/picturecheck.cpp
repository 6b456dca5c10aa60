#include "picturecheck.h"

#include "am_archivedirectory.h"
#include "am_exception.h"
#include "am_imagemanager.h"

#include <algorithm>
#include <cctype>

namespace
{

std::string extensionOf(const std::string& filename)
{
    const std::size_t dot = filename.rfind('.');
    std::string extension = dot == std::string::npos ? "" : filename.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return extension;
}

} // namespace

std::string faultOfPicture(const std::string& folder, const std::string& filename)
{
    const std::string extension = extensionOf(filename);
    AM::ImageManager images;
    if (extension == "tga" || images.mImageCodecs.count(extension) == 0) return "is neither a .png nor a .jpg file";
    if (folder.empty()) return "";
    try
    {
        AM::ArchiveDirectory archive(folder.back() == '/' ? folder : folder + "/");
        const AM::File file = archive.read(filename);
        if (!file) return "is not in " + folder;
        images.loadImage(filename, file, true);
        return "";
    }
    catch (const AM::Exception& exception)
    {
        return std::string("cannot be read: ") + exception.what();
    }
}
