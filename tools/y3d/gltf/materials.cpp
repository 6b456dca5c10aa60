#include "materials.h"

#include "shading.h"
#include "text.h"
#include "y3d_exception.h"
#include "y3d_image.h"
#include "y3d_material.h"
#include "y3d_texture.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace gltf
{

namespace
{

double numberIn(const tinygltf::Value& object, const char* key, double fallback)
{
    if (!object.IsObject() || !object.Has(key) || !object.Get(key).IsNumber()) return fallback;
    return object.Get(key).GetNumberAsDouble();
}

// Up to four numbers out of an array; false when there is no such array.
bool numbersIn(const tinygltf::Value& object, const char* key, std::size_t count, double* numbers)
{
    if (!object.IsObject() || !object.Has(key)) return false;
    const tinygltf::Value& list = object.Get(key);
    if (!list.IsArray() || list.ArrayLen() != count) return false;
    for (std::size_t i = 0; i < count; ++i)
    {
        const tinygltf::Value& item = list.Get(static_cast<int>(i));
        if (!item.IsNumber()) return false;
        numbers[i] = item.GetNumberAsDouble();
    }
    return true;
}

double partOf(const std::vector<double>& list, std::size_t i, double fallback)
{
    return i < list.size() ? list[i] : fallback;
}

y3d::Material::Attribute& addAttribute(y3d::Material* material, const char* name, const y3d::Color4f& color)
{
    auto* attribute = new y3d::Material::Attribute;
    material->mAttributes.push_back(attribute);
    attribute->mName = name;
    attribute->mColor = color;
    return *attribute;
}

// A scene of ours that was exported carries the values that PBR has no place for, and the PBR values that were written
// with them: should somebody have changed those since, they count.
const tinygltf::Value* ownValues(const tinygltf::Material& source)
{
    if (!source.extras.IsObject() || !source.extras.Has("y3d")) return nullptr;
    const tinygltf::Value& own = source.extras.Get("y3d");
    const tinygltf::PbrMetallicRoughness& pbr = source.pbrMetallicRoughness;
    double then[9];
    if (!numbersIn(own, "pbr", 9, then)) return nullptr;
    const double now[9] = {partOf(pbr.baseColorFactor, 0, 1),
                           partOf(pbr.baseColorFactor, 1, 1),
                           partOf(pbr.baseColorFactor, 2, 1),
                           partOf(pbr.baseColorFactor, 3, 1),
                           pbr.metallicFactor,
                           pbr.roughnessFactor,
                           partOf(source.emissiveFactor, 0, 0),
                           partOf(source.emissiveFactor, 1, 0),
                           partOf(source.emissiveFactor, 2, 0)};
    for (int i = 0; i < 9; ++i)
    {
        if (!(std::fabs(then[i] - now[i]) < 1e-5)) return nullptr;
    }
    return &own;
}

void takeOwn(const tinygltf::Value* own, const char* key, y3d::Color4f* color)
{
    double parts[4];
    if (!own || !numbersIn(*own, key, 4, parts)) return;
    *color = {static_cast<float>(parts[0]), static_cast<float>(parts[1]), static_cast<float>(parts[2]),
              static_cast<float>(parts[3])};
}

y3d::Color4f screenColor(const std::vector<double>& light, double strength, double missing)
{
    const auto part = [&](std::size_t i) {
        return static_cast<float>(toScreen(std::max(strength * partOf(light, i, missing), 0.0)));
    };
    return {part(0), part(1), part(2), static_cast<float>(partOf(light, 3, 1))};
}

// KHR_texture_transform: scale, then turn, then move.
UvSource uvSourceOf(const tinygltf::TextureInfo& info)
{
    UvSource uv;
    uv.set = info.texCoord;
    const auto found = info.extensions.find("KHR_texture_transform");
    if (found == info.extensions.end()) return uv;
    const tinygltf::Value& transform = found->second;
    double offset[2] = {0, 0}, scale[2] = {1, 1};
    numbersIn(transform, "offset", 2, offset);
    numbersIn(transform, "scale", 2, scale);
    const double turn = numberIn(transform, "rotation", 0);
    uv.set = static_cast<int>(numberIn(transform, "texCoord", uv.set));
    const double c = std::cos(turn), s = std::sin(turn);
    const double m[2][3] = {{c * scale[0], s * scale[1], offset[0]}, {-s * scale[0], c * scale[1], offset[1]}};
    std::copy(&m[0][0], &m[0][0] + 6, &uv.m[0][0]);
    return uv;
}

} // namespace

const Materials::Made& Materials::get(int number)
{
    const auto known = mMade.find(number);
    if (known != mMade.end()) return known->second;
    if (number >= static_cast<int>(mModel.materials.size())) throw y3d::Exception("there is no material %d", number);
    const Made made = number < 0 ? make(tinygltf::Material(), number) : make(mModel.materials[number], number);
    return mMade[number] = made;
}

Materials::Made Materials::make(const tinygltf::Material& source, int number)
{
    Made made;
    made.name = mNames.claim(source.name, number < 0 ? "default" : "material " + std::to_string(number));
    made.isShadeless = source.extensions.count("KHR_materials_unlit") != 0;
    made.isDoubleSided = source.doubleSided;
    const std::string title = "material " + quoted(made.name);
    if (source.alphaMode == "BLEND" || source.alphaMode == "MASK")
        mLosses.tell(title + ": transparency is left out, its surfaces are drawn in full");
    if (source.normalTexture.index >= 0) mLosses.tell(title + ": its normal map is left out");
    if (source.emissiveTexture.index >= 0) mLosses.tell(title + ": its emissive texture is left out");
    if (source.occlusionTexture.index >= 0) mLosses.tell(title + ": its occlusion texture is left out");
    const tinygltf::PbrMetallicRoughness& pbr = source.pbrMetallicRoughness;
    if (pbr.metallicRoughnessTexture.index >= 0)
        mLosses.tell(title + ": its texture for metal and roughness is left out");
    for (const auto& extension : source.extensions)
    {
        if (extension.first != "KHR_materials_unlit" && extension.first != "KHR_materials_emissive_strength")
            mLosses.tell(title + ": the extension " + extension.first + " is left out");
    }

    double strength = 1.0;
    const auto extension = source.extensions.find("KHR_materials_emissive_strength");
    if (extension != source.extensions.end()) strength = numberIn(extension->second, "emissiveStrength", 1.0);
    y3d::Color4f diffuse = screenColor(pbr.baseColorFactor, 1.0, 1.0);
    y3d::Color4f emissive = screenColor(source.emissiveFactor, strength, 0.0);
    Shine shine = shineOf(diffuse, pbr.roughnessFactor, pbr.metallicFactor);
    const tinygltf::Value* own = ownValues(source);
    takeOwn(own, "diffuse", &diffuse);
    y3d::Color4f ambient = diffuse;
    takeOwn(own, "ambient", &ambient);
    takeOwn(own, "specular", &shine.specular);
    takeOwn(own, "emissive", &emissive);
    if (own) shine.hardness = static_cast<float>(numberIn(*own, "hardness", shine.hardness));

    auto* material = new y3d::Material;
    mManager.mMaterials.push_back(material);
    material->mName = made.name;
    material->mShadeless = made.isShadeless;
    y3d::Material::Attribute& attribute = addAttribute(material, "diffuse", diffuse);
    addAttribute(material, "ambient", ambient);
    addAttribute(material, "specular", shine.specular);
    addAttribute(material, "emissive", emissive);
    addAttribute(material, "hardness", {shine.hardness, 0, 0, 0});

    const std::string image = makeImage(pbr.baseColorTexture.index, title);
    if (image.empty()) return made;
    auto texture = std::make_unique<y3d::Texture>();
    texture->mName = image;
    texture->mImageName = image;
    attribute.mTextures.push_back(texture.release());
    made.hasTexture = true;
    made.uv = uvSourceOf(pbr.baseColorTexture);
    return made;
}

// The name of the image of a texture; empty where there is none.
std::string Materials::makeImage(int number, const std::string& title)
{
    if (number < 0) return "";
    if (number >= static_cast<int>(mModel.textures.size())) throw y3d::Exception("there is no texture %d", number);
    const tinygltf::Texture& texture = mModel.textures[number];
    if (texture.source < 0 || texture.source >= static_cast<int>(mModel.images.size()))
    {
        mLosses.tell(title + ": its texture has no picture that can be read");
        return "";
    }
    if (texture.sampler >= 0 && texture.sampler < static_cast<int>(mModel.samplers.size()))
    {
        const tinygltf::Sampler& sampler = mModel.samplers[texture.sampler];
        if (sampler.wrapS != TINYGLTF_TEXTURE_WRAP_REPEAT || sampler.wrapT != TINYGLTF_TEXTURE_WRAP_REPEAT)
            mLosses.tell(title + ": its picture repeats, as all pictures do");
    }
    const std::string file = mPictures.getFile(texture.source);
    if (file.empty() || mImages.count(file)) return file.empty() ? file : mImages[file];

    auto* image = new y3d::Image;
    mManager.mImages.push_back(image);
    image->mName = file;
    image->mFileName = file;
    return mImages[file] = file;
}

} // namespace gltf
