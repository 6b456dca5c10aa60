#pragma once

#include "effect_helpers.h"

#include "am.h"

#include <cstring>
#include <vector>

// Grey stand-ins for the pictures of all effects, found under their names as long as the result is held.
inline std::vector<Fennel::Texture> makeBenchPictures(Fennel::TextureManager& manager)
{
    std::vector<Fennel::Texture> pictures;
    Fennel::TextureFormat format;
    format.type = Fennel::TextureFormat::TEXTURE2D | Fennel::TextureFormat::MIPMAP;
    for (const char* name :
         {PictureFiles::LANDSCAPE, PictureFiles::ENVIRONMENT, PictureFiles::FONT, PictureFiles::GREETINGS,
          PictureFiles::OVERLAY, PictureFiles::LOGO, PictureFiles::LOGO_GHOST, PictureFiles::BANNER, PictureFiles::SUN})
    {
        AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, name));
        image->resize(1024, 512);
        std::memset(image->getWriteData(), 128, 1024 * 512 * 4);
        pictures.push_back(manager.loadTexture(name, image, format));
    }
    return pictures;
}
