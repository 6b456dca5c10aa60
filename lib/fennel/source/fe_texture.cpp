#include "fe_texture.h"

namespace Fennel
{

Texture::Texture(TextureBase* base) : mBase(base)
{
    if (mBase) mBase->mRefCount++;
}

Texture::Texture(const Texture& other) : Texture(other.mBase) {}

Texture& Texture::operator=(const Texture& other)
{
    // Counted up first, so that a handle may be assigned to itself.
    if (other.mBase) other.mBase->mRefCount++;
    release();
    mBase = other.mBase;
    return *this;
}

Texture::~Texture()
{
    release();
}

void Texture::release()
{
    if (mBase && --mBase->mRefCount == 0) delete mBase;
    mBase = nullptr;
}

} // namespace Fennel
