#pragma once

#include "fe_texture.h"

#include "tw_glinclude.h"

#include <string>
#include <vector>

namespace y3d
{
class Manager;
class Material;
} // namespace y3d

namespace Fennel
{

class TextureManager;

// How a surface is lit and coloured. There is no blending: alpha reaches GL inside the colours only.
class Material
{
public:
    // Takes over what the renderer knows of a material: "diffuse" with its first texture, "specular", "ambient",
    // "emissive", and "hardness". The texture's image file is looked for at `texturePath` + its name. Throws
    // Fennel::Exception for an image that `manager` does not have and AM::Exception for one that cannot be loaded.
    void load(const y3d::Manager* manager, const y3d::Material* source, TextureManager& textureManager,
              const std::string& texturePath);

    // Sets all GL state of the material. What was set for `previous` makes no difference.
    void activate(const Material* previous) const;

    Texture mTexture;           // the diffuse map, may be null
    std::string mName;          // under which meshes find it
    bool mShadeless = false;    // drawn without lighting, in mDiffuse
    bool mDefaultOnFlag = true; // from the file, read by nothing
    GLenum mWhatSide = GL_FRONT_AND_BACK;
    float mShininess = 0;             // 0 to 127
    float mDiffuse[4] = {1, 0, 0, 1}; // r g b a each; red shows a material that the file says nothing of
    float mSpecular[4] = {0, 0, 0, 0};
    float mEmissive[4] = {0, 0, 0, 0};
    float mAmbient[4] = {0, 0, 0, 0};
};

// All materials of a scene file.
class MaterialManager
{
public:
    MaterialManager() = default;
    MaterialManager(const MaterialManager&) = delete;
    MaterialManager& operator=(const MaterialManager&) = delete;
    ~MaterialManager();

    // The first material of exactly this name, or null.
    Material* getMaterial(const std::string& name) const;

    // Deletes all materials.
    void clear();

    std::vector<Material*> mMaterials; // owned
};

} // namespace Fennel
