#pragma once

#include "fe_texturebase.h"

namespace Fennel
{

// A counted handle on a texture, possibly null. A texture dies with its last handle.
class Texture
{
public:
    Texture(TextureBase* base = nullptr);
    Texture(const Texture& other);
    Texture& operator=(const Texture& other);
    ~Texture();

    bool isNull() const { return mBase == nullptr; }

    // The handle must not be null: whoever holds a texture got it from a load that succeeded.
    TextureBase* operator->() const { return mBase; }
    TextureBase& operator*() const { return *mBase; }

private:
    TextureBase* mBase; // shared with the other handles, may be null
};

} // namespace Fennel
