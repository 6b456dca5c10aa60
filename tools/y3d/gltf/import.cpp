#include "import.h"

#include "accessors.h"
#include "cameras.h"
#include "lights.h"
#include "materials.h"
#include "meshes.h"
#include "motion.h"
#include "text.h"
#include "tracks.h"
#include "y3d_dummy.h"
#include "y3d_exception.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"

#include <cmath>

namespace gltf
{

namespace
{

const std::size_t MAX_DEPTH = 300; // of nodes; each can become two, and the player takes less than a thousand

// The transform of a node, in the one or two steps that it takes. Scale is applied after rotation here and before it in
// glTF. Where that makes a difference, a node that only turns goes above one that only scales.
void setTransform(const Motion& motion, y3d::SceneNode* node, y3d::SceneNode* pivot)
{
    if (motion.matrix)
    {
        const Stretch stretch = decompose(*motion.matrix);
        setTrack(&pivot->mPosition, motion.translation);
        setTrack(&pivot->mRotation, quaternionOf(stretch.left));
        setTrack(&pivot->mScale, Vec3{1, 1, 1});
        setTrack(&node->mPosition, Vec3{0, 0, 0});
        setTrack(&node->mRotation, quaternionOf(stretch.right));
        setTrack(&node->mScale, stretch.stretch);
        return;
    }
    y3d::SceneNode* top = pivot ? pivot : node;
    if (pivot)
    {
        setTrack(&pivot->mScale, Vec3{1, 1, 1});
        setTrack(&node->mPosition, Vec3{0, 0, 0});
    }
    motion.translationKeys ? setTrack(&top->mPosition, *motion.translationKeys)
                           : setTrack(&top->mPosition, motion.translation);
    motion.rotationKeys ? setTrack(&top->mRotation, *motion.rotationKeys) : setTrack(&top->mRotation, motion.rotation);
    motion.scaleKeys ? setTrack(&node->mScale, *motion.scaleKeys) : setTrack(&node->mScale, motion.scale);
}

class SceneMaker
{
public:
    SceneMaker(const Model& model, const std::string& folder, const ImportOptions& options, y3d::Manager& manager,
               Losses& losses)
        : mModel(model), mOptions(options), mManager(manager), mLosses(losses), mAccessors(model),
          mPictures(model, folder, losses), mMaterials(model, mPictures, manager, losses),
          mMeshes(model, mAccessors, mMaterials, manager, options.scale, losses),
          mMotions(readMotions(model, mAccessors, options.animation, options.scale, losses)),
          mLights(model, mMotions, options.scale, losses), mMet(model.nodes.size())
    {
    }

    Imported run()
    {
        auto* scene = new y3d::Scene;
        mManager.mScenes.push_back(scene);
        scene->mName = "Scene";
        std::vector<int> roots = rootsWithoutScene();
        if (mOptions.scene >= static_cast<int>(mModel.scenes.size()))
            throw y3d::Exception("has no scene %d", mOptions.scene);
        if (!mModel.scenes.empty())
        {
            const int first = mModel.defaultScene >= 0 ? mModel.defaultScene : 0;
            const int number = mOptions.scene >= 0 ? mOptions.scene : first;
            if (number >= static_cast<int>(mModel.scenes.size())) throw y3d::Exception("has no scene %d", number);
            roots = mModel.scenes[number].nodes;
            scene->mName = Names().claim(mModel.scenes[number].name, "Scene");
        }
        mScene = scene;
        for (const int root : roots) addNode(root, scene, {});
        return {scene->mName, mPictures.getFiles()};
    }

private:
    std::vector<int> rootsWithoutScene() const
    {
        std::vector<bool> isChild(mModel.nodes.size());
        for (const tinygltf::Node& node : mModel.nodes)
        {
            for (const int child : node.children)
            {
                if (child >= 0 && child < static_cast<int>(isChild.size())) isChild[child] = true;
            }
        }
        std::vector<int> roots;
        for (std::size_t i = 0; i < isChild.size(); ++i)
        {
            if (!isChild[i]) roots.push_back(static_cast<int>(i));
        }
        return roots;
    }

    static int lightOf(const tinygltf::Node& node)
    {
        const auto extension = node.extensions.find("KHR_lights_punctual");
        if (extension == node.extensions.end() || !extension->second.Has("light")) return -1;
        const tinygltf::Value& light = extension->second.Get("light");
        return light.IsNumber() ? light.GetNumberAsInt() : -1;
    }

    void addNode(int index, y3d::SceneNode* parent, Chain chain)
    {
        if (index < 0 || index >= static_cast<int>(mModel.nodes.size()))
            throw y3d::Exception("there is no node %d", index);
        if (mMet[index]) throw y3d::Exception("node %d comes more than once in the tree", index);
        if (chain.size() >= MAX_DEPTH) throw y3d::Exception("its nodes lie too deep below each other");
        mMet[index] = true;
        chain.push_back(index);

        const tinygltf::Node& source = mModel.nodes[index];
        const Motion& motion = mMotions.nodes[index];
        const std::string name = source.name.empty() ? "node " + std::to_string(index) : source.name.c_str();
        const int light = lightOf(source);
        if (source.camera >= 0) addCamera(source, chain);
        if (source.skin >= 0) mLosses.tell("node " + quoted(name) + ": its skin is left out, it does not bend");

        const std::string mesh = source.mesh >= 0 ? mMeshes.get(source.mesh) : "";
        const bool isLeaf = source.children.empty() && mesh.empty();
        if (isLeaf && source.camera >= 0 && light < 0) return; // the camera was all of it
        if (isLeaf && source.camera < 0 && light >= 0 && mLights.getBackset(light) == 0)
        {
            addLight(light, name, parent);
            y3d::SceneNode* lamp = parent->mChildren.back();
            motion.translationKeys ? setTrack(&lamp->mPosition, *motion.translationKeys)
                                   : setTrack(&lamp->mPosition, motion.translation);
            return;
        }
        y3d::SceneNode* node = addPlace(name, mesh, motion, parent);
        if (light >= 0)
        {
            addLight(light, name + ".light", node);
            setBackset(node->mChildren.back(), mLights.getBackset(light), chain);
        }
        for (const int child : source.children) addNode(child, node, chain);
    }

    // The node that children hang from.
    y3d::SceneNode* addPlace(const std::string& name, const std::string& mesh, const Motion& motion,
                             y3d::SceneNode* parent)
    {
        y3d::SceneNode* pivot = nullptr;
        if (motion.matrix || (motion.turns() && !motion.scalesEvenly()))
        {
            pivot = new y3d::Dummy;
            parent->addChild(pivot);
            pivot->mName = name + ".pivot";
        }
        y3d::SceneNode* node;
        if (mesh.empty())
            node = new y3d::Dummy;
        else
        {
            auto* instance = new y3d::MeshInstance;
            instance->mMeshName = mesh;
            node = instance;
        }
        (pivot ? pivot : parent)->addChild(node);
        node->mName = name;
        setTransform(motion, node, pivot);
        return node;
    }

    void addCamera(const tinygltf::Node& node, const Chain& chain)
    {
        if (node.camera >= static_cast<int>(mModel.cameras.size()))
            throw y3d::Exception("there is no camera %d", node.camera);
        const tinygltf::Camera& camera = mModel.cameras[node.camera];
        const std::string& own = node.name.empty() ? camera.name : node.name;
        const std::string name = mCameraNames.claim(own, "camera " + std::to_string(node.camera));
        if (camera.type != "perspective")
        {
            mLosses.tell("camera " + quoted(name) + " is orthographic and left out");
            return;
        }
        mScene->addChild(makeCamera(camera, "/cameras/" + std::to_string(node.camera), mMotions, chain, name,
                                    mOptions.fps, mLosses));
    }

    void addLight(int light, const std::string& name, y3d::SceneNode* parent)
    {
        parent->addChild(mLights.make(light, name));
    }

    // Measured in the world, whatever the scale of the nodes.
    void setBackset(y3d::SceneNode* light, double backset, const Chain& chain) const
    {
        const Mat3 world = getWorldMatrix(mMotions, chain, 0).linear;
        const double length =
            std::sqrt(world[0][2] * world[0][2] + world[1][2] * world[1][2] + world[2][2] * world[2][2]);
        setTrack(&light->mPosition, Vec3{0, 0, length > 0 ? backset / length : backset});
    }

    const Model& mModel;
    const ImportOptions& mOptions;
    y3d::Manager& mManager;
    Losses& mLosses;
    Accessors mAccessors;
    Pictures mPictures;
    Materials mMaterials;
    Meshes mMeshes;
    const Motions mMotions;
    const Lights mLights;
    std::vector<bool> mMet; // nodes
    Names mCameraNames;
    y3d::Scene* mScene = nullptr;
};

} // namespace

Imported importScene(const Model& model, const std::string& folder, const ImportOptions& options, y3d::Manager& manager,
                     Losses& losses)
{
    return SceneMaker(model, folder, options, manager, losses).run();
}

} // namespace gltf
