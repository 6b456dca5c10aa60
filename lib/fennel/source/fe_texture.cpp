#include "fe_texture.h"

#include <utility>

namespace Fennel
{

Texture::Texture(TextureBase* base) : mBase(base)
{
    if (mBase) mBase->mRefCount++;
}

Texture::Texture(const Texture& other) : Texture(other.mBase) {}

Texture& Texture::operator=(const Texture& other)
{
    Texture shared(other);
    std::swap(mBase, shared.mBase);
    return *this;
}

Texture::~Texture()
{
    if (mBase && --mBase->mRefCount == 0) delete mBase;
}

} // namespace Fennel
