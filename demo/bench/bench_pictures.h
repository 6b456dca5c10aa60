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
    for (const char* name : {"ballbg.jpg", "env.png", "font.png", "greets.png", "overlay.png", "sandrift.png",
                             "sandrift_ghost.png", "scenese.png", "sun.png"})
    {
        AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, name));
        image->resize(1024, 512);
        std::memset(image->getWriteData(), 128, 1024 * 512 * 4);
        pictures.push_back(manager.loadTexture(name, image, format));
    }
    return pictures;
}
