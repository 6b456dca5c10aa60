#include "fe_sorrel.h"

#include "fe_camera.h"
#include "fe_exception.h"
#include "fe_light.h"
#include "fe_mesh.h"

#include "am.h"
#include "tw_glinclude.h"
#include "xml_parser.h"
#include "y3d_camera.h"
#include "y3d_chunks.h"
#include "y3d_light.h"
#include "y3d_manager.h"
#include "y3d_material.h"
#include "y3d_mesh.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"

#include <algorithm>
#include <cstring>
#include <memory>

// Loading. What the scene file holds is taken over object by object, in file order; an object stands in the list that
// owns it before anything else can fail, so that a load that throws leaves nothing behind that the destructor would not
// free.

namespace Fennel
{

namespace Sorrel
{

namespace
{

const float ACTIVE_NEAR = 0.1f;
const float ACTIVE_FAR = 2000.0f;
const float ACTIVE_ASPECT = 1.3333334f;

const char* const EMPTY_PATH = "";

// There is no way to draw but from vertex buffer objects.
const char* requireVertexBufferObjects()
{
    const char* extensions = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    if (!extensions || !Engine::hasExtension(extensions, "GL_ARB_vertex_buffer_object"))
        throw Exception("Your graphic card does not support vertex buffer objects!");
    return EMPTY_PATH;
}

template <typename Object> void deleteAll(std::vector<Object*>& objects)
{
    for (Object* object : objects) delete object;
    objects.clear();
}

template <typename Object> Object* findByName(const std::vector<Object*>& objects, const std::string& name)
{
    for (Object* object : objects)
    {
        if (object->mName == name) return object;
    }
    return nullptr;
}

// Appends a new object to the list that owns it. The room comes first: nothing is lost if there is none.
template <typename Object> Object* append(std::vector<Object*>& objects, std::unique_ptr<Object> object)
{
    objects.push_back(object.get());
    return object.release();
}

// The archives are at hand while a load runs and at no other time, however it ends.
class ArchiveScope
{
public:
    ArchiveScope(Engine& engine, AM::ArchiveManager& archive) : mEngine(engine)
    {
        mEngine.mArchiveManager = &archive;
        mEngine.mTextureManager.setArchiveManager(&archive);
    }
    ~ArchiveScope()
    {
        mEngine.mArchiveManager = nullptr;
        mEngine.mTextureManager.setArchiveManager(nullptr);
    }
    ArchiveScope(const ArchiveScope&) = delete;
    ArchiveScope& operator=(const ArchiveScope&) = delete;

private:
    Engine& mEngine;
};

} // namespace

Node::Node(Node* parent) : mParent(parent) {}

void Node::loadMeshInstance(const y3d::MeshInstance* source, Mesh* mesh, MaterialManager& materialManager,
                            SubmeshManager& submeshManager)
{
    mName = source->getName();
    mMesh = mesh;
    mMaterials.resize(mesh->mSubmeshes.size());
    for (std::size_t i = 0; i < mMaterials.size(); ++i)
    {
        const std::string& reference = source->getMaterialReference(static_cast<int>(i));
        const std::string& name = reference.empty() ? mesh->mMaterialNames[i] : reference;
        if (name.empty())
            throw Exception("Mesh '%s' has no material for index %d", mesh->mName.c_str(), static_cast<int>(i));

        Material* material = materialManager.getMaterial(name);
        if (!material) throw Exception("Could not find material '%s' for submesh in '%s'", name.c_str(), mName.c_str());
        mMaterials[i] = material;
        submeshManager.addSubmeshJob(&mesh->mSubmeshes[i], mesh, material);
    }
    loadTracks(source);
}

void Node::loadTracks(const y3d::SceneNode* source)
{
    mRotationTrack = source->getRotation();
    mPositionTrack = source->getPosition();
    mScaleTrack = source->getScale();

    // A static node computes its local transform this once.
    mStatic = false;
    updateKeyframing(0);
    mStatic = source->isStatic();
}

// The check comes before all other members, whose destructors call GL as well.
Engine::Engine() : mTexturePath(requireVertexBufferObjects()) {}

Engine::~Engine()
{
    deleteAll(mCameras);
    deleteAll(mLights);
    deleteAll(mNodes);
    deleteAll(mMeshes);
    mMaterialManager.clear();
}

bool Engine::hasExtension(const char* extensions, const char* name)
{
    const std::size_t length = std::strlen(name);
    for (const char* match = std::strstr(extensions, name); match; match = std::strstr(match + length, name))
    {
        if (match[length] == ' ' || match[length] == '\0') return true;
    }
    return false;
}

void Engine::load(AM::ArchiveManager& archive, const std::string& filename)
{
    const ArchiveScope scope(*this, archive);
    loadScene(filename);
}

void Engine::loadScene(const std::string& filename)
{
    const AM::File description = mArchiveManager->readFile(filename, -1);
    if (description.isNull()) throw Exception("The scene description '%s' could not be found!", filename.c_str());

    Xml::XmlParser parser;
    parser.parse(reinterpret_cast<const char*>(description->data), static_cast<int>(description->length));
    Xml::IteratorConst scene = parser.createIterator("scene");
    if (!++scene) throw Exception("No scene in %s!", filename.c_str());

    mSceneFile = scene->getValue("filename");
    mTexturePath = scene->getValue("texturepath");
    const std::string name = scene->getValue("name");
    if (!mTexturePath.empty() && mTexturePath.back() != '/') mTexturePath += '/';

    const AM::File file = mArchiveManager->readFile(mSceneFile, -1);
    if (file.isNull())
        throw Exception("The scene '%s' mentioned in '%s' could not be found", mSceneFile.c_str(), filename.c_str());

    y3d::Manager manager;
    manager.load(file->data, static_cast<int>(file->length));
    if (manager.getNumScenes() == 0)
        throw Exception("No scenes in '%s' mentioned from '%s'", mSceneFile.c_str(), filename.c_str());
    y3d::Scene* root = manager.getScene(name);
    if (!root) root = manager.getSceneAt(0);

    for (int i = 0; i < manager.getNumMaterials(); ++i)
        loadMaterial(manager.getMaterialAt(i)->getName(), &manager, scene);
    loadNode(nullptr, root, &manager, scene, true);
    mSubmeshManager.flush();

    if (!mCameras.empty()) activateCamera(mCameras.front());
}

Material* Engine::loadMaterial(const std::string& name, const y3d::Manager* manager, Xml::IteratorConst)
{
    if (Material* known = mMaterialManager.getMaterial(name)) return known;

    const y3d::Material* source = manager->getMaterial(name);
    if (!source) throw Exception("Engine::loadMaterial, No material '%s' in '%s'", name.c_str(), mSceneFile.c_str());

    std::unique_ptr<Material> material(new Material);
    try
    {
        material->load(manager, source, mTextureManager, mTexturePath);
    }
    catch (const Exception& exception)
    {
        throw Exception("%s in '%s'", exception.what(), mSceneFile.c_str());
    }
    return append(mMaterialManager.mMaterials, std::move(material));
}

Mesh* Engine::loadMesh(const std::string& name, y3d::Manager* manager, Xml::IteratorConst)
{
    if (Mesh* known = findByName(mMeshes, name)) return known;

    y3d::Mesh* source = manager->getMesh(name);
    if (!source)
        throw Exception("The mesh named '%s' was not found! Tip: Y3D doesn't export meshes with 0 faces! Check using "
                        "Outliner in blender!",
                        name.c_str());

    std::unique_ptr<Mesh> mesh(new Mesh);
    try
    {
        mesh->load(source);
    }
    catch (const Exception& exception)
    {
        throw Exception("%s in '%s'", exception.what(), mSceneFile.c_str());
    }
    return append(mMeshes, std::move(mesh));
}

void Engine::loadNode(Node* parent, y3d::SceneNode* source, y3d::Manager* manager, Xml::IteratorConst scene,
                      bool parentStatic)
{
    Node* node = nullptr;
    switch (source->getType())
    {
    case y3d::CHUNK_CAMERA:
        // A camera that hangs from something is none for the engine.
        if (!parent) addCamera(static_cast<const y3d::Camera*>(source));
        return;
    case y3d::CHUNK_LIGHT:
        addLight(static_cast<const y3d::Light*>(source), parent);
        return;
    case y3d::CHUNK_ARMATURE:
        return;
    case y3d::CHUNK_MESHINSTANCE: {
        const y3d::MeshInstance* instance = static_cast<const y3d::MeshInstance*>(source);
        Mesh* mesh = loadMesh(instance->getMeshName(), manager, scene);
        std::unique_ptr<Node> made(new Node(parent));
        made->loadMeshInstance(instance, mesh, mMaterialManager, mSubmeshManager);
        node = append(mNodes, std::move(made));
        break;
    }
    case y3d::CHUNK_DUMMY: {
        std::unique_ptr<Node> made(new Node(parent));
        made->mName = source->getName();
        made->loadTracks(source);
        node = append(mNodes, std::move(made));
        break;
    }
    }

    bool isStatic = parentStatic;
    if (node)
    {
        if (parent) parent->mChildren.push_back(node);
        // A static node below a moving one has to follow it.
        isStatic = parentStatic && node->mStatic;
        if (!isStatic)
            mDynamicNodes.push_back(node);
        else if (node->mMesh)
            mStaticNodes.push_back(node);
    }

    for (int i = 0; i < source->getNumChildren(); ++i) loadNode(node, source->getChild(i), manager, scene, isStatic);
}

void Engine::addCamera(const y3d::Camera* source)
{
    std::unique_ptr<Camera> camera(new Camera);
    camera->mName = source->getName();
    camera->mRotationTrack = source->getRotation();
    camera->mPositionTrack = source->getPosition();
    camera->mScaleTrack = source->getScale();
    camera->mFovTrack = source->getFov();
    append(mCameras, std::move(camera));
}

void Engine::addLight(const y3d::Light* source, Node* parent)
{
    std::unique_ptr<Light> light(new Light);
    light->mName = source->getName();
    light->mPositionTrack = source->getPosition();
    light->mColorTrack = source->getLightColor();
    light->mDistanceTrack = source->getDistance();
    light->mEnergyTrack = source->getEnergy();
    light->mParent = parent;
    append(mLights, std::move(light));
}

Camera* Engine::getCamera(const std::string& name) const
{
    return findByName(mCameras, name);
}

void Engine::setActiveCamera(const std::string& name)
{
    Camera* camera = getCamera(name);
    if (!camera) throw Exception("Engine::setActiveCamera, No camera '%s' in '%s'", name.c_str(), mSceneFile.c_str());
    activateCamera(camera);
}

void Engine::activateCamera(Camera* camera)
{
    mActiveCamera = camera;
    camera->mNear = ACTIVE_NEAR;
    camera->mFar = ACTIVE_FAR;
    camera->mAspect = ACTIVE_ASPECT;
}

Xml::IteratorConst Engine::findXmlIterator(Xml::IteratorConst& parent, const std::string& tag, const std::string& name)
{
    Xml::IteratorConst child = parent.createIterator(tag);
    std::vector<Xml::IteratorConst> fallback;
    while (++child)
    {
        const std::string& value = child->getValue("name");
        if (value == name) return child;
        if (value == "*") fallback.assign(1, child);
    }
    return fallback.empty() ? child : fallback.front();
}

} // namespace Sorrel

} // namespace Fennel
