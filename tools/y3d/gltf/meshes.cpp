#include "meshes.h"

#include "meshorder.h"
#include "text.h"
#include "y3d_exception.h"
#include "y3d_mesh.h"
#include "y3d_submesh.h"
#include "ytd_utils.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>

namespace gltf
{

namespace
{

using MathBase::Vector3f;
using Vectors = y3d::StructList<Vector3f>;

Vectors toVectors(const std::vector<float>& values, int components)
{
    Vectors vectors(values.size() / components);
    for (std::size_t i = 0; i < vectors.size(); ++i)
    {
        const float* v = &values[i * components];
        vectors[i] = {v[0], v[1], components > 2 ? v[2] : 0.0f};
    }
    return vectors;
}

// Triangles out of a strip or a fan, each seen from the side that it was meant for.
std::vector<unsigned int> toTriangles(const std::vector<unsigned int>& indices, int mode)
{
    if (mode == TINYGLTF_MODE_TRIANGLES) return {indices.begin(), indices.end() - indices.size() % 3};
    std::vector<unsigned int> triangles;
    for (std::size_t i = 2; i < indices.size(); ++i)
    {
        const bool isFan = mode == TINYGLTF_MODE_TRIANGLE_FAN;
        const bool isOdd = !isFan && i % 2 == 1;
        const unsigned int corners[] = {isFan ? indices[0] : indices[i - 2], indices[i - 1], indices[i]};
        if (corners[0] == corners[1] || corners[1] == corners[2] || corners[0] == corners[2]) continue; // a joint
        triangles.insert(triangles.end(), {corners[0], corners[isOdd ? 2 : 1], corners[isOdd ? 1 : 2]});
    }
    return triangles;
}

Vector3f cross(const Vector3f& a, const Vector3f& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

} // namespace

// The triangles of one material.
struct Meshes::Part
{
    std::size_t size() const { return positions.size(); }

    // Gives each triangle vertices and a normal of its own.
    void makeFlat()
    {
        const auto spread = [&](Vectors* list) {
            if (list->empty()) return;
            Vectors result;
            for (const unsigned int index : indices) result.push_back((*list)[index]);
            *list = result;
        };
        spread(&positions);
        spread(&uvs);
        std::iota(indices.begin(), indices.end(), 0u);
        normals.clear();
        for (std::size_t i = 0; i + 2 < positions.size(); i += 3)
        {
            Vector3f normal = cross(positions[i + 1] - positions[i], positions[i + 2] - positions[i]);
            const float length = normal.length();
            normal = length > 1e-20f ? (1.0f / length) * normal : Vector3f(0, 1, 0);
            normals.insert(normals.end(), 3, normal);
        }
    }

    // Adds all triangles again, as they look from behind.
    void addInside()
    {
        const unsigned int count = static_cast<unsigned int>(size());
        const std::size_t numIndices = indices.size();
        positions.insert(positions.end(), positions.begin(), positions.begin() + count);
        if (!uvs.empty()) uvs.insert(uvs.end(), uvs.begin(), uvs.begin() + count);
        for (unsigned int i = 0; i < count && !normals.empty(); ++i) normals.push_back(-1.0f * normals[i]);
        for (std::size_t i = 0; i + 2 < numIndices; i += 3)
        {
            indices.insert(indices.end(), {indices[i] + count, indices[i + 2] + count, indices[i + 1] + count});
        }
    }

    void append(const Part& other)
    {
        const unsigned int base = static_cast<unsigned int>(size());
        uvs.resize(uvs.empty() && other.uvs.empty() ? 0 : size());
        if (!other.uvs.empty() || !uvs.empty())
        {
            uvs.insert(uvs.end(), other.uvs.begin(), other.uvs.end());
            uvs.resize(base + other.size());
        }
        positions.insert(positions.end(), other.positions.begin(), other.positions.end());
        normals.insert(normals.end(), other.normals.begin(), other.normals.end());
        for (const unsigned int index : other.indices) indices.push_back(index + base);
    }

    std::vector<unsigned int> indices;
    Vectors positions, normals, uvs; // normals and coordinates are empty or one for each position
};

const std::string& Meshes::get(int mesh)
{
    const auto known = mMade.find(mesh);
    if (known != mMade.end()) return known->second;
    if (mesh >= static_cast<int>(mModel.meshes.size())) throw y3d::Exception("there is no mesh %d", mesh);
    return mMade[mesh] = make(mesh);
}

std::string Meshes::make(int number)
{
    const tinygltf::Mesh& source = mModel.meshes[number];
    const std::string name = mNames.claim(source.name, "mesh " + std::to_string(number));
    const std::string title = "mesh " + quoted(name);
    std::vector<std::pair<int, Part>> parts; // by material, in the order of the file
    for (const tinygltf::Primitive& primitive : source.primitives)
    {
        Part part;
        if (!readPart(primitive, title, &part)) continue;
        const auto same = std::find_if(parts.begin(), parts.end(), [&](const auto& other) {
            return other.first == primitive.material && other.second.normals.empty() == part.normals.empty();
        });
        if (same == parts.end())
            parts.emplace_back(primitive.material, std::move(part));
        else
            same->second.append(part);
    }
    if (parts.empty())
    {
        mLosses.tell(title + " has no triangles, so nothing of it is shown");
        return "";
    }

    auto mesh = std::make_unique<y3d::Mesh>();
    mesh->mName = name;
    for (auto& [material, part] : parts)
    {
        auto* submesh = new y3d::Submesh;
        mesh->mSubmeshes.push_back(submesh);
        submesh->mMaterialName = mMaterials.get(material).name;
        submesh->mIndices = new y3d::StructList<y3d::Index>(part.indices.begin(), part.indices.end());
        submesh->setPositions(new Vectors(std::move(part.positions)));
        if (!part.normals.empty()) submesh->setNormals(new Vectors(std::move(part.normals)));
        if (!part.uvs.empty()) submesh->mUVWs.push_back(new y3d::UVWList(std::move(part.uvs)));
        improveOrder(submesh, DEFAULT_CACHE);
    }
    ytd::Utils::updateBoundingBoxes(mesh.get(), true);
    mManager.mMeshes.push_back(mesh.release());
    return name;
}

// False when there is nothing to draw.
bool Meshes::readPart(const tinygltf::Primitive& primitive, const std::string& title, Part* part)
{
    const int mode = primitive.mode < 0 ? TINYGLTF_MODE_TRIANGLES : primitive.mode;
    const auto attribute = [&](const std::string& name) {
        const auto found = primitive.attributes.find(name);
        return found == primitive.attributes.end() ? -1 : found->second;
    };
    if (mode < TINYGLTF_MODE_TRIANGLES || mode > TINYGLTF_MODE_TRIANGLE_FAN || attribute("POSITION") < 0)
    {
        mLosses.tell(title + ": points and lines are left out");
        return false;
    }
    const Materials::Made& material = mMaterials.get(primitive.material);
    tellIgnored(primitive, title, material.hasTexture ? material.uv.set : 0);

    part->positions = toVectors(mAccessors.readFloats(attribute("POSITION"), 3), 3);
    for (Vector3f& position : part->positions) position = static_cast<float>(mScale) * position;
    if (primitive.indices >= 0)
        part->indices = mAccessors.readIndices(primitive.indices, part->size());
    else
    {
        part->indices.resize(part->size());
        std::iota(part->indices.begin(), part->indices.end(), 0u);
    }
    part->indices = toTriangles(part->indices, mode);
    if (part->indices.empty()) return false;

    const int uv =
        material.hasTexture ? attribute("TEXCOORD_" + std::to_string(material.uv.set)) : attribute("TEXCOORD_0");
    if (uv >= 0) part->uvs = toVectors(mAccessors.readFloats(uv, 2), 2);
    for (Vector3f& at : part->uvs)
    {
        const auto& m = material.uv.m;
        at = {static_cast<float>(m[0][0] * at.x + m[0][1] * at.y + m[0][2]),
              static_cast<float>(m[1][0] * at.x + m[1][1] * at.y + m[1][2]), 0.0f};
    }
    if (attribute("NORMAL") >= 0) part->normals = toVectors(mAccessors.readFloats(attribute("NORMAL"), 3), 3);
    if ((!part->normals.empty() && part->normals.size() != part->size()) ||
        (!part->uvs.empty() && part->uvs.size() != part->size()))
        throw y3d::Exception("%s has not as many normals or texture coordinates as positions", title.c_str());

    if (part->normals.empty() && !material.isShadeless) part->makeFlat();
    if (material.isDoubleSided) part->addInside();
    return true;
}

void Meshes::tellIgnored(const tinygltf::Primitive& primitive, const std::string& title, int uvSet)
{
    if (!primitive.targets.empty()) mLosses.tell(title + ": its morph targets are left out");
    for (const auto& attribute : primitive.attributes)
    {
        const std::string& name = attribute.first;
        if (name.rfind("COLOR_", 0) == 0)
            mLosses.tell(title + ": its vertex colours are left out");
        else if (name.rfind("JOINTS_", 0) == 0)
            mLosses.tell(title + ": its skin is left out, it stays in the pose that it was made in");
        else if (name.rfind("TEXCOORD_", 0) == 0 && name != "TEXCOORD_" + std::to_string(uvSet))
            mLosses.tell(title + ": its texture coordinates " + name.substr(9) + " are left out");
    }
}

} // namespace gltf
