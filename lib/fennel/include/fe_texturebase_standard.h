#pragma once

#include "fe_texturebase.h"

#include "tw_glinclude.h"

#include "am_image.h"

namespace Fennel
{

// A 1D or 2D texture made of an image. The image stays in memory, 4 bytes a pixel, so that the GL object can be made
// again after the video mode has changed. The GL name is freed by dispatch() alone: what the last handle leaves
// behind goes with the GL context.
class TextureBaseStandard : public TextureBase
{
public:
    // Creates and fills the GL texture; leaves it unbound. `image` must not be null (AM::Exception) and must have a
    // size and a kind that `format` allows (Fennel::Exception).
    TextureBaseStandard(TextureManager* manager, const TextureFormat& format, AM::Image image);

    void bind() const override;
    void unbind() const override;
    int getSortableID() const override;
    void restore() override;
    void dispatch() override;

    GLuint mID = 0;     // GL texture name, 0 when there is none
    GLenum mTarget = 0; // GL_TEXTURE_1D or GL_TEXTURE_2D
    AM::Image mImage;   // the source

private:
    void createTexture();
    void loadImage(AM::Image& image);
};

} // namespace Fennel
