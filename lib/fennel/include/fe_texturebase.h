#pragma once

#include "fe_refcounter.h"

namespace Fennel
{

class TextureManager;

// What a texture is asked for with. Callers leave the three sizes at 0: a texture takes the size of its image.
struct TextureFormat
{
    static const int TEXTURE1D = 1;     // a 1D texture is allowed, for an image of height 1
    static const int TEXTURE2D = 2;     // a 2D texture is allowed; wins where both are
    static const int RENDERTARGET = 16; // not available, refused
    static const int MIPMAP = 32;       // build all levels on upload

    // By width, height, depth and type, in this order.
    bool operator<(const TextureFormat& other) const;

    int width = 0;
    int height = 0;
    int depth = 0;
    int type = 0; // bits of the constants above
};

// A texture as its users see it; Fennel::Texture is the handle on one.
class TextureBase : public RefCounter
{
public:
    // `manager` may be null; else it is told when the texture dies. Not owned.
    TextureBase(TextureManager* manager, const TextureFormat& format);
    ~TextureBase() override;

    virtual void bind() const = 0;
    virtual void unbind() const = 0;
    virtual void makeRenderTarget() {}
    virtual void unmakeRenderTarget() {}

    // By this number render jobs put users of one texture side by side.
    virtual int getSortableID() const = 0;

    // Makes the GL object again after dispatch().
    virtual void restore() = 0;

    // Frees the GL object and keeps all that is needed to make it again.
    virtual void dispatch() = 0;

    TextureFormat mFormat;    // as it is: with the image's size and depth 1
    TextureManager* mManager; // not owned, may be null
};

} // namespace Fennel
