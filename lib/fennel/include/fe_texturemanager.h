#pragma once

#include "fe_texture.h"

#include "am_image.h"

#include <map>
#include <string>

namespace AM
{
class ArchiveManager;
}

namespace Fennel
{

// Makes textures of images and shares them: a name and a format give one GL texture for as long as somebody holds a
// handle on it. The map does not count; a texture takes itself out when its last handle goes, so the next request
// loads it again. All handles must be gone before the manager is.
class TextureManager
{
public:
    struct TextureKey
    {
        bool operator<(const TextureKey& other) const; // by name, then by format

        std::string name;
        TextureFormat format; // as requested, with its zeros
    };

    // `archiveManager` is not owned and may be null as long as nothing is loaded by file.
    explicit TextureManager(AM::ArchiveManager* archiveManager = nullptr);
    TextureManager(const TextureManager&) = delete;
    TextureManager& operator=(const TextureManager&) = delete;
    ~TextureManager();

    void setArchiveManager(AM::ArchiveManager* archiveManager);

    // Loads an image file from the archives, unless the key is there already. `id`, when not empty, stands for
    // `filename` in the key. Throws AM::Exception for the file and its contents, Fennel::Exception for the texture.
    Texture loadTexture(const std::string& filename, TextureFormat format, const std::string& id);

    // The same for an image that the caller has.
    Texture loadTexture(const std::string& name, AM::Image image, TextureFormat format);

    // The texture under this key, or null.
    TextureBase* getTextureBase(const TextureKey& key);

    // Takes a texture out of the map; one that is not in it changes nothing.
    void remove(const TextureBase* texture);

    // Around a change of the video mode: free the GL objects of all textures, then make them again, in key order.
    void dispatch();
    void restore();

    AM::ArchiveManager* mArchiveManager;          // not owned, may be null
    std::map<TextureKey, TextureBase*> mTextures; // not owned, not counted

private:
    TextureBase* loadHelper(const TextureFormat& format, AM::Image& image);
    Texture enter(const TextureKey& key, AM::Image& image);
};

} // namespace Fennel
