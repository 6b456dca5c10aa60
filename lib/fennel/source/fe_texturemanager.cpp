#include "fe_texturemanager.h"

#include "fe_exception.h"
#include "fe_texturebase_standard.h"

#include "am.h"

#include <cassert>

namespace Fennel
{

bool TextureManager::TextureKey::operator<(const TextureKey& other) const
{
    if (name != other.name) return name < other.name;
    return format < other.format;
}

TextureManager::TextureManager(AM::ArchiveManager* archiveManager) : mArchiveManager(archiveManager) {}

TextureManager::~TextureManager()
{
    assert(mTextures.size()==0);
}

void TextureManager::setArchiveManager(AM::ArchiveManager* archiveManager)
{
    mArchiveManager = archiveManager;
}

Texture TextureManager::loadTexture(const std::string& filename, TextureFormat format, const std::string& id)
{
    const TextureKey key = {id.empty() ? filename : id, format};
    assert(mArchiveManager);
    if (TextureBase* known = getTextureBase(key)) return Texture(known);

    AM::Image image = mArchiveManager->loadImage(filename, -1, false);
    return enter(key, image);
}

Texture TextureManager::loadTexture(const std::string& name, AM::Image image, TextureFormat format)
{
    const TextureKey key = {name, format};
    if (TextureBase* known = getTextureBase(key)) return Texture(known);
    return enter(key, image);
}

// The handle is there before the entry: should the map fail to grow, the texture goes with the handle.
Texture TextureManager::enter(const TextureKey& key, AM::Image& image)
{
    Texture texture(loadHelper(key.format, image));
    mTextures[key] = &*texture;
    return texture;
}

TextureBase* TextureManager::loadHelper(const TextureFormat& format, AM::Image& image)
{
    if (format.type & TextureFormat::RENDERTARGET)
        throw Exception("Could not creat render-target, proper extensions not found!");
    return new TextureBaseStandard(this, format, image);
}

TextureBase* TextureManager::getTextureBase(const TextureKey& key)
{
    const auto entry = mTextures.find(key);
    return entry == mTextures.end() ? nullptr : entry->second;
}

void TextureManager::remove(const TextureBase* texture)
{
    for (auto entry = mTextures.begin(); entry != mTextures.end(); ++entry)
    {
        if (entry->second == texture)
        {
            mTextures.erase(entry);
            return;
        }
    }
}

void TextureManager::dispatch()
{
    for (auto& entry : mTextures) entry.second->dispatch();
}

void TextureManager::restore()
{
    for (auto& entry : mTextures) entry.second->restore();
}

} // namespace Fennel
