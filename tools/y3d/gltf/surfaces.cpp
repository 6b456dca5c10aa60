#include "surfaces.h"

#include "meshcheck.h"
#include "meshfaults.h"
#include "shading.h"
#include "text.h"
#include "y3d_exception.h"
#include "y3d_image.h"
#include "y3d_material.h"
#include "y3d_submesh.h"
#include "y3d_texture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>

namespace gltf
{

namespace
{

using Json = Glb::Json;
using y3d::Color4f;

// The five attributes that the player knows, as it starts without them.
struct Look
{
    explicit Look(const y3d::Material& material)
    {
        for (const y3d::Material::Attribute* attribute : material.mAttributes)
        {
            const std::string& name = attribute->getName();
            const Color4f& color = attribute->getColor();
            if (name == "ambient") ambient = color;
            if (name == "specular") specular = color;
            if (name == "emissive") emissive = color;
            if (name == "hardness") hardness = color.r;
            if (name != "diffuse") continue;
            diffuse = color;
            if (attribute->getNumTextures() > 0) image = attribute->getTexture(0)->getImageName();
        }
    }

    Color4f diffuse = {1, 0, 0, 1}, ambient, specular, emissive;
    float hardness = 0.0f;
    std::string image;
};

std::vector<float> four(const Color4f& color)
{
    return {color.r, color.g, color.b, color.a};
}

float lightOf(float screen)
{
    return static_cast<float>(toLight(std::max(screen, 0.0f)));
}

float lightWithinOne(float screen)
{
    return std::min(lightOf(screen), 1.0f);
}

std::vector<float> flattened(const y3d::StructList<MathBase::Vector3f>& list, int components)
{
    std::vector<float> values;
    values.reserve(list.size() * components);
    for (const MathBase::Vector3f& v : list)
    {
        values.push_back(v.x);
        values.push_back(v.y);
        if (components == 3) values.push_back(v.z);
    }
    return values;
}

// Normals have length 1 in glTF.
y3d::StructList<MathBase::Vector3f> toUnits(y3d::StructList<MathBase::Vector3f> normals)
{
    for (MathBase::Vector3f& normal : normals)
    {
        const float length = normal.length();
        normal = length > 1e-10f ? (1.0f / length) * normal : MathBase::Vector3f(0, 1, 0);
    }
    return normals;
}

} // namespace

int Surfaces::addMesh(const y3d::MeshInstance& instance)
{
    const std::string title = "mesh instance " + quoted(instance.getName());
    const y3d::Mesh* mesh = mManager.getMesh(instance.getMeshName());
    if (!mesh)
    {
        mLosses.tell(title + " has no mesh");
        return -1;
    }
    std::vector<std::string> materials;
    for (int i = 0; i < mesh->getNumSubmeshes(); ++i)
    {
        const std::string& own = instance.getMaterialReference(i);
        materials.push_back(own.empty() ? mesh->getSubmesh(i)->getMaterialName() : own);
    }
    const auto made = mMeshes.try_emplace({mesh, materials}, -1);
    if (made.second) made.first->second = makeMesh(*mesh, materials);
    return made.first->second;
}

int Surfaces::makeMesh(const y3d::Mesh& mesh, const std::vector<std::string>& materials)
{
    Json primitives = Json::array();
    for (int i = 0; i < mesh.getNumSubmeshes(); ++i)
    {
        const y3d::Submesh& submesh = *mesh.getSubmesh(i);
        const std::string title = "submesh " + std::to_string(i) + " of mesh " + quoted(mesh.getName());
        std::string fault = faultOfTriangles(submesh);
        if (fault.empty() && submesh.getNormals() && submesh.getNormals()->size() != submesh.getPositions()->size())
            fault = "has not one normal for each vertex";
        if (fault.empty() && hasWildNumbers(submesh)) fault = "has values that are no numbers";
        if (!fault.empty())
        {
            mLosses.tell(title + " is left out: it " + fault);
            continue;
        }
        if (!submesh.mColors.empty()) mLosses.tell(title + ": its vertex colours are left out");
        if (submesh.getNumUVWs() > 1) mLosses.tell(title + ": further texture coordinates are left out");
        if (!mGeometry.count(&submesh)) mGeometry[&submesh] = makeGeometry(submesh);
        Json primitive = mGeometry[&submesh];
        const int material = addMaterial(materials[i]);
        if (material >= 0) primitive["material"] = material;
        primitives.push_back(primitive);
    }
    if (primitives.empty()) return -1;
    return mGlb.add("meshes", {{"name", mesh.getName()}, {"primitives", primitives}});
}

Json Surfaces::makeGeometry(const y3d::Submesh& submesh)
{
    Json attributes;
    attributes["POSITION"] = mGlb.addVertices(flattened(*submesh.getPositions(), 3), 3);
    if (submesh.getNormals()) attributes["NORMAL"] = mGlb.addVertices(flattened(toUnits(*submesh.getNormals()), 3), 3);
    if (submesh.getNumUVWs() > 0 && submesh.getUVW(0)->size() == submesh.getPositions()->size())
        attributes["TEXCOORD_0"] = mGlb.addVertices(flattened(*submesh.getUVW(0), 2), 2);
    return {{"attributes", attributes},
            {"indices", mGlb.addIndices({submesh.getIndices()->begin(), submesh.getIndices()->end()})}};
}

int Surfaces::addMaterial(const std::string& name)
{
    const auto known = mMaterials.find(name);
    if (known != mMaterials.end()) return known->second;
    const y3d::Material* material = mManager.getMaterial(name);
    const std::string title = "material " + quoted(name);
    if (!material)
    {
        mLosses.tell(title + " is not in the file");
        return mMaterials[name] = -1;
    }
    const Look look(*material);
    const std::vector<float> base = {lightWithinOne(look.diffuse.r), lightWithinOne(look.diffuse.g),
                                     lightWithinOne(look.diffuse.b), std::clamp(look.diffuse.a, 0.0f, 1.0f)};
    const float metal = static_cast<float>(metalnessOf(look.diffuse, look.specular, look.hardness));
    const float rough = static_cast<float>(roughnessOf(look.hardness));
    std::vector<float> glow = {lightOf(look.emissive.r), lightOf(look.emissive.g), lightOf(look.emissive.b)};
    const float strength = std::max(*std::max_element(glow.begin(), glow.end()), 1.0f);
    for (float& part : glow) part /= strength;

    Json pbr = {{"baseColorFactor", base}, {"metallicFactor", metal}, {"roughnessFactor", rough}};
    const int texture = look.image.empty() ? -1 : addTexture(look.image, title);
    if (texture >= 0) pbr["baseColorTexture"] = {{"index", texture}};
    Json json = {{"name", name}, {"pbrMetallicRoughness", pbr}, {"emissiveFactor", glow}};
    if (strength > 1.0f)
    {
        mGlb.use("KHR_materials_emissive_strength");
        json["extensions"]["KHR_materials_emissive_strength"] = {{"emissiveStrength", strength}};
    }
    if (material->isShadeless())
    {
        mGlb.use("KHR_materials_unlit");
        json["extensions"]["KHR_materials_unlit"] = Json::object();
    }
    std::vector<float> print = base;
    print.insert(print.end(), {metal, rough});
    print.insert(print.end(), glow.begin(), glow.end());
    json["extras"]["y3d"] = {{"pbr", print},
                             {"diffuse", four(look.diffuse)},
                             {"ambient", four(look.ambient)},
                             {"specular", four(look.specular)},
                             {"emissive", four(look.emissive)},
                             {"hardness", look.hardness}};
    return mMaterials[name] = mGlb.add("materials", json);
}

int Surfaces::addTexture(const std::string& name, const std::string& title)
{
    const auto known = mTextures.find(name);
    if (known != mTextures.end()) return known->second;
    const y3d::Image* image = mManager.getImage(name);
    const std::string filename = image ? image->getFileName() : "";
    std::ifstream stream(mPictures + "/" + filename, std::ios::binary);
    const std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    const bool isPng = bytes.size() > 4 && std::memcmp(bytes.data(), "\x89PNG", 4) == 0;
    const bool isJpeg = bytes.size() > 4 && std::memcmp(bytes.data(), "\xFF\xD8", 2) == 0;
    if (!isPng && !isJpeg)
    {
        mLosses.tell(title + ": its picture " + quoted(filename) +
                     (bytes.empty() ? " is not in " : " is no picture in ") + mPictures);
        return mTextures[name] = -1;
    }
    const int source = mGlb.addPicture(bytes, isPng ? "image/png" : "image/jpeg", filename);
    return mTextures[name] = mGlb.add("textures", {{"source", source}});
}

} // namespace gltf
