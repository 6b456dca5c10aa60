#include "commands.h"
#include "jsonwriter.h"
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

std::size_t countBones(const y3d::Armature::Bone& bone)
{
    std::size_t count = 1;
    for (const y3d::Armature::Bone* child : bone.mChildren) count += countBones(*child);
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

void writeBox(JsonWriter* json, bool has, const MathBase::AABBpointsf& box)
{
    json->key("box");
    if (!has)
    {
        json->null();
        return;
    }
    json->openObject();
    json->key("min").values({box.mMin.x, box.mMin.y, box.mMin.z});
    json->key("max").values({box.mMax.x, box.mMax.y, box.mMax.z});
    json->closeObject();
}

template <class List> void writeSizes(JsonWriter* json, const char* key, const List& lists)
{
    json->key(key).openArray();
    for (const auto* list : lists) json->value(list->size());
    json->closeArray();
}

void writeMesh(JsonWriter* json, const y3d::Mesh& mesh)
{
    json->openObject();
    json->key("name").value(mesh.getName());
    json->key("flags").value(mesh.mMeshFlags);
    json->key("vertices").value(countVertices(mesh));
    json->key("triangles").value(countTriangles(mesh));
    writeBox(json, mesh.hasBoundingBox(), mesh.getBoundingBox());
    json->key("submeshes").openArray();
    for (const y3d::Submesh* submesh : mesh.mSubmeshes)
    {
        json->openObject();
        json->key("material").value(submesh->getMaterialName());
        json->key("vertices").value(submesh->getNumVertices());
        json->key("indices").value(submesh->getNumIndices());
        json->key("normals").value(submesh->getNormals() ? submesh->getNormals()->size() : 0);
        writeSizes(json, "uvws", submesh->mUVWs);
        writeSizes(json, "colors", submesh->mColors);
        json->key("boneGroups").openArray();
        for (const y3d::BoneGroup* group : submesh->mBoneGroups)
        {
            json->openObject();
            json->key("name").value(group->mName);
            json->key("weights").value(group->mWeights.size());
            json->closeObject();
        }
        json->closeArray();
        writeBox(json, submesh->hasBoundingBox(), submesh->getBoundingBox());
        json->closeObject();
    }
    json->closeArray();
    json->closeObject();
}

void writeMaterial(JsonWriter* json, const y3d::Material& material)
{
    json->openObject();
    json->key("name").value(material.getName());
    json->key("shadeless").value(material.isShadeless());
    json->key("defaultOnFlag").value(material.mDefaultOnFlag);
    json->key("attributes").openArray();
    for (const y3d::Material::Attribute* attribute : material.mAttributes)
    {
        const y3d::Color4f& color = attribute->getColor();
        json->openObject();
        json->key("name").value(attribute->getName());
        json->key("color").values({color.r, color.g, color.b, color.a});
        json->key("textures").openArray();
        for (const y3d::Texture* texture : attribute->mTextures)
        {
            json->openObject();
            json->key("name").value(texture->getName());
            json->key("image").value(texture->getImageName());
            json->key("value").value(static_cast<int>(texture->mValue));
            json->closeObject();
        }
        json->closeArray();
        json->closeObject();
    }
    json->closeArray();
    json->closeObject();
}

void writeTrack(JsonWriter* json, const NamedTrack& track)
{
    std::vector<float> bases;
    for (const NamedCurve& curve : track.curves) bases.push_back(curve.curve->mBaseValue);
    json->key(track.name).openObject();
    json->key("base").values(bases);
    json->key("curves").openArray();
    for (const NamedCurve& named : track.curves)
    {
        const y3d::TrackBlenderFloat& curve = *named.curve;
        if (curve.mKeys.empty()) continue;
        json->openObject();
        json->key("component").value(named.component);
        json->key("keys").value(curve.mKeys.size());
        json->key("from").value(curve.mKeys.front().mPoint.x);
        json->key("to").value(curve.mKeys.back().mPoint.x);
        json->key("interpolation").value(nameOfInterpolation(curve.mInterpolation));
        json->key("extrapolation").value(nameOfExtrapolation(curve.mExtrapolation));
        json->closeObject();
    }
    json->closeArray();
    json->closeObject();
}

void writeNode(JsonWriter* json, const y3d::SceneNode& node)
{
    json->openObject();
    json->key("type").value(kindOf(node));
    json->key("name").value(node.getName());
    if (node.getType() == y3d::CHUNK_MESHINSTANCE)
    {
        const y3d::MeshInstance& instance = static_cast<const y3d::MeshInstance&>(node);
        json->key("mesh").value(instance.getMeshName());
        json->key("materials").openObject();
        for (const auto& reference : instance.mMaterialReferences)
        {
            json->key(std::to_string(reference.first)).value(reference.second);
        }
        json->closeObject();
    }
    if (node.getType() == y3d::CHUNK_ARMATURE)
    {
        json->key("bones").value(countBones(static_cast<const y3d::Armature&>(node).mBoneRoot));
    }
    if (node.getType() != y3d::CHUNK_SCENE) json->key("static").value(node.isStatic());
    for (const NamedTrack& track : tracksOf(node)) writeTrack(json, track);
    json->key("children").openArray();
    for (const y3d::SceneNode* child : node.mChildren) writeNode(json, *child);
    json->closeArray();
    json->closeObject();
}

void writeFile(const SceneFile& file)
{
    const y3d::Manager& manager = file.manager;
    JsonWriter json;
    json.openObject();
    json.key("file").value(file.name);
    json.key("bytes").value(file.bytes.size());
    json.key("meshes").openArray();
    for (const y3d::Mesh* mesh : manager.mMeshes) writeMesh(&json, *mesh);
    json.closeArray();
    json.key("materials").openArray();
    for (const y3d::Material* material : manager.mMaterials) writeMaterial(&json, *material);
    json.closeArray();
    json.key("images").openArray();
    for (const y3d::Image* image : manager.mImages)
    {
        json.openObject();
        json.key("name").value(image->getName());
        json.key("file").value(image->getFileName());
        json.closeObject();
    }
    json.closeArray();
    json.key("scenes").openArray();
    for (const y3d::Scene* scene : manager.mScenes) writeNode(&json, *scene);
    json.closeArray();
    json.closeObject();
}

} // namespace

int runInfo(const Arguments& arguments)
{
    const SceneFile file(arguments.files[0]);
    if (arguments.has("--json"))
        writeFile(file);
    else
        printFile(file);
    return STATUS_FINE;
}
