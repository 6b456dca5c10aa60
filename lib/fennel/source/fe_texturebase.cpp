#include "fe_texturebase.h"

#include "fe_texturemanager.h"

#include <tuple>

namespace Fennel
{

bool TextureFormat::operator<(const TextureFormat& other) const
{
    return std::tie(width, height, depth, type) < std::tie(other.width, other.height, other.depth, other.type);
}

TextureBase::TextureBase(TextureManager* manager, const TextureFormat& format) : mFormat(format), mManager(manager) {}

TextureBase::~TextureBase()
{
    if (mManager) mManager->remove(this);
}

} // namespace Fennel
