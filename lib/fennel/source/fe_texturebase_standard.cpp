#include "fe_texturebase_standard.h"

#include "fe_exception.h"

#include <cassert>

namespace Fennel
{

TextureBaseStandard::TextureBaseStandard(TextureManager* manager, const TextureFormat& format, AM::Image image)
    : TextureBase(manager, format)
{
    mFormat.width = image->getWidth();
    mFormat.height = image->getHeight();
    mFormat.depth = 1;

    try
    {
        createTexture();
        loadImage(image);
    }
    catch (...)
    {
        if (mID) glDeleteTextures(1, &mID);
        throw;
    }
}

void TextureBaseStandard::createTexture()
{
    if ((mFormat.type & TextureFormat::TEXTURE1D) && mFormat.width >= 1 && mFormat.height == 1) mTarget = GL_TEXTURE_1D;
    if ((mFormat.type & TextureFormat::TEXTURE2D) && mFormat.width > 0 && mFormat.height > 0) mTarget = GL_TEXTURE_2D;
    if (mTarget == 0) throw Exception("Could not load %dx%d image", mFormat.height, mFormat.width);

    GL_CHECKED(glGenTextures(1, &mID));
    GL_CHECKED(glBindTexture(mTarget, mID));
}

// Row 0 of the image becomes t = 0: rows go up as they lie in memory.
void TextureBaseStandard::loadImage(AM::Image& image)
{
    mImage = image;
    const int width = mImage->getWidth();
    const int height = mImage->getHeight();
    const unsigned char* data = mImage->getData();
    assert(data);

    if (mFormat.type & TextureFormat::MIPMAP)
    {
        if (mTarget == GL_TEXTURE_2D)
            GL_CHECKED(gluBuild2DMipmaps(mTarget, 4, width, height, GL_BGRA, GL_UNSIGNED_BYTE, data));
        else
            GL_CHECKED(gluBuild1DMipmaps(mTarget, 4, width, GL_BGRA, GL_UNSIGNED_BYTE, data));
    }
    else
    {
        if (mTarget == GL_TEXTURE_2D)
            GL_CHECKED(glTexImage2D(mTarget, 0, 4, width, height, 0, GL_BGRA, GL_UNSIGNED_BYTE, data));
        else
            GL_CHECKED(glTexImage1D(mTarget, 0, 4, width, 0, GL_BGRA, GL_UNSIGNED_BYTE, data));
    }

    // Linear below too: a mipmapped texture has its levels and is drawn from the first one.
    glTexParameterf(mTarget, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameterf(mTarget, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameterf(mTarget, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameterf(mTarget, GL_TEXTURE_WRAP_T, GL_REPEAT);
    GL_CHECKED(glBindTexture(mTarget, 0));
}

void TextureBaseStandard::bind() const
{
    glBindTexture(mTarget, mID);
}

void TextureBaseStandard::unbind() const
{
    glBindTexture(mTarget, 0);
}

int TextureBaseStandard::getSortableID() const
{
    return static_cast<int>(mID);
}

void TextureBaseStandard::restore()
{
    createTexture();
    loadImage(mImage);
}

void TextureBaseStandard::dispatch()
{
    if (mID == 0) return;
    GL_CHECKED(glDeleteTextures(1, &mID));
    mID = 0;
}

} // namespace Fennel
