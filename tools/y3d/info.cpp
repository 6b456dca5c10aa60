#include "commands.h"
#include "json.h"
#include "nodes.h"
#include "scenefile.h"
#include "text.h"
#include "y3d_armature.h"
#include "y3d_bonegroup.h"
#include "y3d_chunks.h"
#include "y3d_image.h"
#include "y3d_material.h"
#include "y3d_mesh.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"
#include "y3d_submesh.h"
#include "y3d_texture.h"

#include <cstdio>

namespace
{

std::string nameOfInterpolation(int mode)
{
    const char* names[] = {"constant", "linear", "bezier"};
    return mode >= 0 && mode < 3 ? names[mode] : std::to_string(mode);
}

std::string nameOfExtrapolation(int mode)
{
    const char* names[] = {"constant", "linear", "cyclic", "cyclic with offset"};
    return mode >= 0 && mode < 4 ? names[mode] : std::to_string(mode);
}

std::size_t countVertices(const y3d::Mesh& mesh)
{
    std::size_t count = 0;
    for (const y3d::Submesh* submesh : mesh.mSubmeshes) count += submesh->getNumVertices();
    return count;
}

std::size_t countTriangles(const y3d::Mesh& mesh)
{
    std::size_t count = 0;
    for (const y3d::Submesh* submesh : mesh.mSubmeshes) count += submesh->getNumIndices() / 3;
    return count;
}

// For a person: a line for each thing, indented by two blanks a level.

void line(int level, const std::string& text)
{
    std::printf("%*s%s\n", 2 * level, "", text.c_str());
}

std::string boxText(bool has, const MathBase::AABBpointsf& box)
{
    return has ? ", box " + shown(box) : ", no box";
}

void printMesh(const y3d::Mesh& mesh)
{
    line(0, "mesh " + quoted(mesh.getName()) + ": " + counted(mesh.getNumSubmeshes(), "submesh", "submeshes") + ", " +
                counted(countVertices(mesh), "vertex", "vertices") + ", " +
                counted(countTriangles(mesh), "triangle", "triangles") +
                boxText(mesh.hasBoundingBox(), mesh.getBoundingBox()));
    for (int i = 0; i < mesh.getNumSubmeshes(); ++i)
    {
        const y3d::Submesh& submesh = *mesh.getSubmesh(i);
        std::string text = "submesh " + std::to_string(i) + ": material " + quoted(submesh.getMaterialName()) + ", " +
                           counted(submesh.getNumVertices(), "vertex", "vertices") + ", " +
                           counted(submesh.getNumIndices(), "index", "indices");
        if (submesh.getNormals()) text += ", normals";
        if (submesh.getNumUVWs() != 0)
            text += ", " + counted(submesh.getNumUVWs(), "texture channel", "texture channels");
        if (!submesh.mColors.empty())
            text += ", " + counted(submesh.mColors.size(), "colour channel", "colour channels");
        line(1, text + boxText(submesh.hasBoundingBox(), submesh.getBoundingBox()));
        for (const y3d::BoneGroup* group : submesh.mBoneGroups)
        {
            line(2, "bone group " + quoted(group->mName) + ": " + counted(group->mWeights.size(), "weight", "weights"));
        }
    }
}

void printMaterial(const y3d::Material& material)
{
    line(0, "material " + quoted(material.getName()) + ": " + (material.isShadeless() ? "shadeless" : "lit"));
    for (const y3d::Material::Attribute* attribute : material.mAttributes)
    {
        const y3d::Color4f& color = attribute->getColor();
        line(1, quoted(attribute->getName()) + ": (" + shown(color.r) + ", " + shown(color.g) + ", " + shown(color.b) +
                    ", " + shown(color.a) + ")");
        for (const y3d::Texture* texture : attribute->mTextures)
        {
            line(2, "texture " + quoted(texture->getName()) + ": image " + quoted(texture->getImageName()));
        }
    }
}

void printTrack(int level, const NamedTrack& track)
{
    std::string bases;
    for (const NamedCurve& curve : track.curves)
    {
        bases += (bases.empty() ? "" : ", ") + shown(curve.curve->mBaseValue);
    }
    line(level, std::string(track.name) + ": " + (track.curves.size() > 1 ? "(" + bases + ")" : bases));
    for (const NamedCurve& named : track.curves)
    {
        const y3d::TrackBlenderFloat& curve = *named.curve;
        if (curve.mKeys.empty()) continue;
        line(level + 1, std::string(named.component) + ": " + counted(curve.mKeys.size(), "key", "keys") + " from " +
                            shown(curve.mKeys.front().mPoint.x) + " to " + shown(curve.mKeys.back().mPoint.x) + " s, " +
                            nameOfInterpolation(curve.mInterpolation) + ", outside " +
                            nameOfExtrapolation(curve.mExtrapolation));
    }
}

void printNode(int level, const y3d::SceneNode& node)
{
    std::string text = titleOf(node);
    if (node.getType() == y3d::CHUNK_SCENE) text += ": " + counted(countBelow(node), "node", "nodes");
    if (node.getType() == y3d::CHUNK_ARMATURE)
    {
        text += ": " + counted(countBones(static_cast<const y3d::Armature&>(node).mBoneRoot), "bone", "bones");
    }
    if (node.getType() == y3d::CHUNK_MESHINSTANCE)
    {
        const y3d::MeshInstance& instance = static_cast<const y3d::MeshInstance&>(node);
        text += ": mesh " + quoted(instance.getMeshName());
        for (const auto& reference : instance.mMaterialReferences)
        {
            text += ", submesh " + std::to_string(reference.first) + " in material " + quoted(reference.second);
        }
    }
    line(level, text);
    for (const NamedTrack& track : tracksOf(node)) printTrack(level + 1, track);
    for (const y3d::SceneNode* child : node.mChildren) printNode(level + 1, *child);
}

void printFile(const SceneFile& file)
{
    const y3d::Manager& manager = file.manager;
    line(0, file.name + ": " + counted(file.bytes.size(), "byte", "bytes") + ", " +
                counted(manager.mMeshes.size(), "mesh", "meshes") + ", " +
                counted(manager.mMaterials.size(), "material", "materials") + ", " +
                counted(manager.mImages.size(), "image", "images") + ", " +
                counted(manager.mScenes.size(), "scene", "scenes"));
    for (const y3d::Mesh* mesh : manager.mMeshes) printMesh(*mesh);
    for (const y3d::Material* material : manager.mMaterials) printMaterial(*material);
    for (const y3d::Image* image : manager.mImages)
    {
        line(0, "image " + quoted(image->getName()) + ": file " + quoted(image->getFileName()));
    }
    for (const y3d::Scene* scene : manager.mScenes) printNode(0, *scene);
}

// For a program.

Json boxJson(bool has, const MathBase::AABBpointsf& box)
{
    if (!has) return nullptr;
    return {{"min", {box.mMin.x, box.mMin.y, box.mMin.z}}, {"max", {box.mMax.x, box.mMax.y, box.mMax.z}}};
}

template <class List> Json sizesJson(const List& lists)
{
    Json sizes = Json::array();
    for (const auto* list : lists) sizes.push_back(list->size());
    return sizes;
}

Json meshJson(const y3d::Mesh& mesh)
{
    Json submeshes = Json::array();
    for (const y3d::Submesh* submesh : mesh.mSubmeshes)
    {
        Json groups = Json::array();
        for (const y3d::BoneGroup* group : submesh->mBoneGroups)
        {
            groups.push_back({{"name", jsonText(group->mName)}, {"weights", group->mWeights.size()}});
        }
        submeshes.push_back({{"material", jsonText(submesh->getMaterialName())},
                             {"vertices", submesh->getNumVertices()},
                             {"indices", submesh->getNumIndices()},
                             {"normals", submesh->getNormals() ? submesh->getNormals()->size() : 0},
                             {"uvws", sizesJson(submesh->mUVWs)},
                             {"colors", sizesJson(submesh->mColors)},
                             {"boneGroups", groups},
                             {"box", boxJson(submesh->hasBoundingBox(), submesh->getBoundingBox())}});
    }
    return {{"name", jsonText(mesh.getName())},
            {"flags", mesh.mMeshFlags},
            {"vertices", countVertices(mesh)},
            {"triangles", countTriangles(mesh)},
            {"box", boxJson(mesh.hasBoundingBox(), mesh.getBoundingBox())},
            {"submeshes", submeshes}};
}

Json materialJson(const y3d::Material& material)
{
    Json attributes = Json::array();
    for (const y3d::Material::Attribute* attribute : material.mAttributes)
    {
        Json textures = Json::array();
        for (const y3d::Texture* texture : attribute->mTextures)
        {
            textures.push_back({{"name", jsonText(texture->getName())},
                                {"image", jsonText(texture->getImageName())},
                                {"value", texture->mValue}});
        }
        const y3d::Color4f& color = attribute->getColor();
        attributes.push_back({{"name", jsonText(attribute->getName())},
                              {"color", {color.r, color.g, color.b, color.a}},
                              {"textures", textures}});
    }
    return {{"name", jsonText(material.getName())},
            {"shadeless", material.isShadeless()},
            {"defaultOnFlag", material.mDefaultOnFlag},
            {"attributes", attributes}};
}

Json trackJson(const NamedTrack& track)
{
    Json bases = Json::array(), curves = Json::array();
    for (const NamedCurve& named : track.curves)
    {
        const y3d::TrackBlenderFloat& curve = *named.curve;
        bases.push_back(curve.mBaseValue);
        if (curve.mKeys.empty()) continue;
        curves.push_back({{"component", named.component},
                          {"keys", curve.mKeys.size()},
                          {"from", curve.mKeys.front().mPoint.x},
                          {"to", curve.mKeys.back().mPoint.x},
                          {"interpolation", nameOfInterpolation(curve.mInterpolation)},
                          {"extrapolation", nameOfExtrapolation(curve.mExtrapolation)}});
    }
    return {{"base", bases}, {"curves", curves}};
}

Json nodeJson(const y3d::SceneNode& node)
{
    Json json = {{"type", kindOf(node)}, {"name", jsonText(node.getName())}};
    if (node.getType() == y3d::CHUNK_MESHINSTANCE)
    {
        const y3d::MeshInstance& instance = static_cast<const y3d::MeshInstance&>(node);
        Json materials = Json::object();
        for (const auto& reference : instance.mMaterialReferences)
        {
            materials[std::to_string(reference.first)] = jsonText(reference.second);
        }
        json["mesh"] = jsonText(instance.getMeshName());
        json["materials"] = materials;
    }
    if (node.getType() == y3d::CHUNK_ARMATURE)
    {
        json["bones"] = countBones(static_cast<const y3d::Armature&>(node).mBoneRoot);
    }
    if (node.getType() != y3d::CHUNK_SCENE) json["static"] = node.isStatic();
    for (const NamedTrack& track : tracksOf(node)) json[track.name] = trackJson(track);
    json["children"] = Json::array();
    for (const y3d::SceneNode* child : node.mChildren) json["children"].push_back(nodeJson(*child));
    return json;
}

Json fileJson(const SceneFile& file)
{
    const y3d::Manager& manager = file.manager;
    Json meshes = Json::array(), materials = Json::array(), images = Json::array(), scenes = Json::array();
    for (const y3d::Mesh* mesh : manager.mMeshes) meshes.push_back(meshJson(*mesh));
    for (const y3d::Material* material : manager.mMaterials) materials.push_back(materialJson(*material));
    for (const y3d::Image* image : manager.mImages)
    {
        images.push_back({{"name", jsonText(image->getName())}, {"file", jsonText(image->getFileName())}});
    }
    for (const y3d::Scene* scene : manager.mScenes) scenes.push_back(nodeJson(*scene));
    return {{"file", jsonText(file.name)}, {"bytes", file.bytes.size()}, {"meshes", meshes},
            {"materials", materials},      {"images", images},           {"scenes", scenes}};
}

} // namespace

int runInfo(const Arguments& arguments)
{
    const SceneFile file(arguments.files[0]);
    if (arguments.has("--json"))
        printJson(fileJson(file));
    else
        printFile(file);
    return STATUS_FINE;
}
