#include "fe_material.h"

#include "fe_exception.h"
#include "fe_texturemanager.h"

#include "gr_debug.h"
#include "y3d_image.h"
#include "y3d_manager.h"
#include "y3d_material.h"
#include "y3d_texture.h"

namespace Fennel
{

namespace
{

void copyColor(float* to, const y3d::Color4f& from)
{
    to[0] = from.r;
    to[1] = from.g;
    to[2] = from.b;
    to[3] = from.a;
}

// Blender's hardness in the range that GL allows for the specular exponent.
float shininessOf(float hardness)
{
    const float shininess = 0.5f * hardness;
    if (shininess > 127)
    {
        DEBUG_STRING("WARNING: Corrected shininess to 127 from %f", shininess);
        return 127;
    }
    if (shininess < 0)
    {
        DEBUG_STRING("WARNING: Corrected shininess to 0 from %f", shininess);
        return 0;
    }
    return shininess;
}

} // namespace

void Material::load(const y3d::Manager* manager, const y3d::Material* source, TextureManager& textureManager,
                    const std::string& texturePath)
{
    mName = source->getName();

    for (int i = 0; i < source->getNumAttributes(); ++i)
    {
        const y3d::Material::Attribute* attribute = source->getAttribute(i);
        const std::string& name = attribute->getName();
        if (name == "diffuse")
        {
            copyColor(mDiffuse, attribute->getColor());
            if (attribute->getNumTextures() > 0)
            {
                const std::string& imageName = attribute->getTexture(0)->getImageName();
                const y3d::Image* image = manager->getImage(imageName);
                if (!image)
                    throw Exception("Material::load, No image '%s' for material '%s'", imageName.c_str(),
                                    mName.c_str());
                TextureFormat format;
                format.type = TextureFormat::TEXTURE2D | TextureFormat::MIPMAP;
                mTexture = textureManager.loadTexture(texturePath + image->getFileName(), format, "");
            }
        }
        if (name == "specular") copyColor(mSpecular, attribute->getColor());
        if (name == "ambient") copyColor(mAmbient, attribute->getColor());
        if (name == "emissive") copyColor(mEmissive, attribute->getColor());
        if (name == "hardness") mShininess = shininessOf(attribute->getColor().r);
    }

    mShadeless = source->isShadeless();
    mDefaultOnFlag = source->mDefaultOnFlag;
}

void Material::activate(const Material*) const
{
    GL_CHECKED(glMaterialfv(mWhatSide, GL_DIFFUSE, mDiffuse));
    GL_CHECKED(glMaterialfv(mWhatSide, GL_AMBIENT, mAmbient));
    GL_CHECKED(glMaterialfv(mWhatSide, GL_SPECULAR, mSpecular));
    GL_CHECKED(glMaterialfv(mWhatSide, GL_EMISSION, mEmissive));
    GL_CHECKED(glMaterialf(mWhatSide, GL_SHININESS, mShininess));

    if (mShadeless)
    {
        GL_CHECKED(glDisable(GL_LIGHTING));
        GL_CHECKED(glColor4fv(mDiffuse));
    }
    else
    {
        GL_CHECKED(glEnable(GL_LIGHTING));
        GL_CHECKED(glColor4f(1, 1, 1, 1));
    }

    if (!mTexture.isNull())
    {
        GL_CHECKED(glEnable(GL_TEXTURE_2D));
        GL_CHECKED(mTexture->bind());
    }
    else
    {
        GL_CHECKED(glDisable(GL_TEXTURE_2D));
    }
}

MaterialManager::~MaterialManager()
{
    clear();
}

Material* MaterialManager::getMaterial(const std::string& name) const
{
    for (Material* material : mMaterials)
    {
        if (material->mName == name) return material;
    }
    return nullptr;
}

void MaterialManager::clear()
{
    for (Material* material : mMaterials) delete material;
    mMaterials.clear();
}

} // namespace Fennel
