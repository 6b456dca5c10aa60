// Prints a scene file as the player reads it, as JSON: what every node is and where it stands in the world at given
// times, fields of view, and the meshes' vertices.
//     sample_scene FILE.y3d TIME...

#include "mb_matrix4x4col.h"
#include "y3d_camera.h"
#include "y3d_light.h"
#include "y3d_manager.h"
#include "y3d_mesh.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"
#include "y3d_submesh.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace
{
using Json = nlohmann::json;
using Matrix = MathBase::Matrix4x4Col;

// The transform of a node in its parent: rotation, then scale along the parent's axes, then place.
Matrix localMatrix(const y3d::SceneNode& node, float time)
{
    Matrix matrix;
    matrix.setFromQuat(node.getRotation().getValue(time));
    const MathBase::Vector3f scale = node.getScale().getValue(time);
    const MathBase::Vector3f position = node.getPosition().getValue(time);
    const float factors[3] = {scale.x, scale.y, scale.z};
    const float places[3] = {position.x, position.y, position.z};
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column) matrix[4 * column + row] *= factors[row];
        matrix[12 + row] = places[row];
    }
    return matrix;
}

template <typename List> Json vectors(const List* list)
{
    Json result = Json::array();
    if (list)
        for (const MathBase::Vector3f& vector : *list) result.push_back({vector.x, vector.y, vector.z});
    return result;
}

void addNodes(const y3d::SceneNode& parent, const std::string& parentName, const std::vector<Matrix>& worlds,
              const std::vector<float>& times, Json& nodes)
{
    for (int i = 0; i < parent.getNumChildren(); ++i)
    {
        const y3d::SceneNode& node = *parent.getChild(i);
        Json entry = {{"name", node.getName()}, {"type", node.getType()}, {"parent", parentName}};
        std::vector<Matrix> own = worlds;
        for (std::size_t t = 0; t < times.size(); ++t)
        {
            own[t].multiplyFromRight(localMatrix(node, times[t]));
            Json numbers = Json::array();
            for (int n = 0; n < 16; ++n) numbers.push_back(own[t][n]);
            entry["world"].push_back(numbers);
        }
        if (const auto* camera = dynamic_cast<const y3d::Camera*>(&node))
            for (const float time : times) entry["fov"].push_back(camera->getFov().getValue(time));
        if (const auto* light = dynamic_cast<const y3d::Light*>(&node))
            for (const float time : times)
            {
                const y3d::Color4f color = light->getLightColor().getValue(time);
                entry["color"].push_back({color.r, color.g, color.b});
                entry["energy"].push_back(light->getEnergy().getValue(time));
            }
        if (const auto* instance = dynamic_cast<const y3d::MeshInstance*>(&node))
        {
            entry["mesh"] = instance->getMeshName();
            entry["override"] = instance->getMaterialReference(0);
        }
        nodes.push_back(entry);
        addNodes(node, node.getName(), own, times, nodes);
    }
}
} // namespace

int main(int count, char** arguments)
{
    try
    {
        std::ifstream file(arguments[1], std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        std::vector<float> times;
        for (int i = 2; i < count; ++i) times.push_back(std::strtof(arguments[i], nullptr));

        y3d::Manager manager;
        manager.load(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
        Json result = {{"nodes", Json::array()}, {"meshes", Json::object()}};
        const y3d::Scene& scene = *manager.getSceneAt(0);
        addNodes(scene, "", std::vector<Matrix>(times.size()), times, result["nodes"]);
        for (const y3d::Mesh* mesh : manager.mMeshes)
            for (int i = 0; i < mesh->getNumSubmeshes(); ++i)
            {
                const y3d::Submesh& submesh = *mesh->getSubmesh(i);
                Json indices = Json::array();
                for (const y3d::Index& index : *submesh.getIndices()) indices.push_back(static_cast<unsigned>(index));
                result["meshes"][mesh->getName()].push_back(
                    {{"material", submesh.getMaterialName()},
                     {"positions", vectors(submesh.getPositions())},
                     {"normals", vectors(submesh.getNormals())},
                     {"uvs", vectors(submesh.getNumUVWs() ? submesh.getUVW(0) : nullptr)},
                     {"indices", indices}});
            }
        std::printf("%s\n", result.dump().c_str());
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "Error: %s\n", error.what());
        return 1;
    }
}
