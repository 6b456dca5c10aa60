#pragma once

#include "fe_material.h"
#include "fe_rendermanager.h"
#include "fe_submeshmanager.h"
#include "fe_texturemanager.h"

#include "mb_aabbpointsf.h"
#include "mb_matrix4x4col.h"
#include "mb_quatf.h"
#include "mb_vector3f.h"
#include "xml_iteratorconst.h"
#include "y3d_trackquatf.h"
#include "y3d_trackvector3f.h"

#include <string>
#include <vector>

namespace AM
{
class ArchiveManager;
}

namespace y3d
{
class Camera;
class Light;
class Manager;
class MeshInstance;
class SceneNode;
} // namespace y3d

namespace Fennel
{

class Camera;
class Light;
class Mesh;

namespace Sorrel
{

// A place in the scene: a transform, with or without a mesh to show there.
class Node
{
public:
    explicit Node(Node* parent);

    // Takes over name, tracks and materials of a placed mesh, has the buffers of the mesh made, and brings the node to
    // time 0. A submesh takes the material that the instance names for it, else the one that the mesh names. Throws
    // Fennel::Exception when there is none or it is unknown.
    void loadMeshInstance(const y3d::MeshInstance* source, Mesh* mesh, MaterialManager& materialManager,
                          SubmeshManager& submeshManager);

    // Takes over the three tracks of a scene node and brings this one to time 0.
    void loadTracks(const y3d::SceneNode* source);

    // Brings the node to a time in seconds; its parent must be there already. A static node keeps its local transform
    // and follows its parent.
    void updateKeyframing(float time);

    std::string mName;
    Mesh* mMesh = nullptr;             // null for a node without one; not owned, since nodes share meshes
    std::vector<Material*> mMaterials; // for each submesh; not owned
    std::vector<Node*> mChildren;      // not owned
    y3d::TrackQuatf mRotationTrack;
    y3d::TrackVector3f mPositionTrack;
    y3d::TrackVector3f mScaleTrack;
    MathBase::Quatf mRotation; // current values
    MathBase::Vector3f mPosition;
    MathBase::Vector3f mScale;
    bool mStatic = true;             // the local transform never changes
    bool mMirroredLocal = false;     // the local scale mirrors
    bool mMirrored = false;          // the world transform mirrors
    MathBase::AABBpointsf mWorldBox; // the mesh's box in world space
    MathBase::Matrix4x4Col mMatLocal;
    MathBase::Matrix4x4Col mMatWorld;
    Node* mParent; // null under the scene root; not owned
};

// The scene engine. A small XML file names a Y3D file and a scene in it (docs/scenes.md); load() turns that scene into
// renderer objects and lets go of all the data it came from. A frame is then two calls: updateKeyframing() with a time
// and draw(). The picture is a function of that time alone, so the clock may jump.
//
// Textures and buffers are the engine's own and are not made again around a change of the video mode: SDL keeps the GL
// context there.
class Engine
{
public:
    // Needs a current GL context. Throws Fennel::Exception if the driver has no vertex buffer objects.
    Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine();

    // Loads the scene that the description `filename` names, once in an engine's life. The first camera becomes the
    // active one; a scene without a camera draws nothing. Throws Fennel::Exception for what the renderer cannot use,
    // and what archives, XML, Y3D and GL throw. The engine then keeps what it has made, and is only good for deletion.
    void load(AM::ArchiveManager& archive, const std::string& filename);

    // Brings active camera, moving nodes and lights to a time in seconds.
    void updateKeyframing(float time);

    // Draws over the colours that are there, with a cleared depth buffer. Leaves the projection and, as the modelview
    // matrix, the view of the active camera behind. Does nothing without one.
    void draw();

    // Adds the draw jobs of all nodes that the active camera, which there must be, can see.
    void renderVisibleNodes();

    // Adds the draw jobs of one node.
    void renderNode(Node* node, const MathBase::Matrix4x4Col& view);

    // The camera of this name, or null.
    Camera* getCamera(const std::string& name) const;

    // Throws Fennel::Exception if there is no such camera.
    void setActiveCamera(const std::string& name);

    // The child of `parent` with this tag and `name` attribute, else the last one with the name "*", else an iterator
    // past the end.
    Xml::IteratorConst findXmlIterator(Xml::IteratorConst& parent, const std::string& tag, const std::string& name);

    // The mesh or material of this name, out of the manager if the engine does not have it yet.
    Mesh* loadMesh(const std::string& name, y3d::Manager* manager, Xml::IteratorConst scene);
    Material* loadMaterial(const std::string& name, const y3d::Manager* manager, Xml::IteratorConst scene);

    // Takes over a node with everything below it. `parentStatic`: nothing above it ever moves.
    void loadNode(Node* parent, y3d::SceneNode* source, y3d::Manager* manager, Xml::IteratorConst scene,
                  bool parentStatic);

    // True if the blank-separated list holds exactly this name.
    static bool hasExtension(const char* extensions, const char* name);

    std::string mTexturePath;                      // prefix of texture files; ends in a slash unless empty
    AM::ArchiveManager* mArchiveManager = nullptr; // only while load() runs; not owned
    Camera* mActiveCamera = nullptr;               // may be null; not owned
    std::vector<Camera*> mCameras;                 // owned
    std::vector<Light*> mLights;                   // owned; the first eight shine
    std::vector<Node*> mNodes;                     // owned; parents before children
    std::vector<Node*> mDynamicNodes;              // not owned; what keyframing visits, parents before children
    std::vector<Node*> mStaticNodes;               // not owned; static nodes with a mesh
    RenderManager mRenderManager;
    std::vector<Mesh*> mMeshes; // owned
    SubmeshManager mSubmeshManager;
    MaterialManager mMaterialManager;
    TextureManager mTextureManager; // the engine's own

private:
    void loadScene(const std::string& filename);
    void addCamera(const y3d::Camera* source);
    void addLight(const y3d::Light* source, Node* parent);
    void activateCamera(Camera* camera);
    void updateCamera(float time);
    void updateLight(Light& light, float time);
    void findVisibleNodes();
    void activateLights();

    // A node that a frame shows.
    struct Visible
    {
        Visible(unsigned long pMesh, Node* pNode) : mesh(pMesh), node(pNode) {}

        unsigned long mesh; // number of its mesh in the order of drawing
        Node* node;
    };

    // Room for renderVisibleNodes(), kept from frame to frame.
    std::vector<Visible> mVisible;
    std::vector<Visible> mSortedVisible;

    std::string mSceneFile; // the Y3D file that is being loaded, for messages
};

} // namespace Sorrel

} // namespace Fennel
