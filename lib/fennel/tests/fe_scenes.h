#pragma once

// Small scenes for tests, made with the objects of a scene file and handed to the engine as bytes, the way the show
// gets them.

#include "am.h"
#include "am_archivebase.h"
#include "y3d_camera.h"
#include "y3d_dummy.h"
#include "y3d_image.h"
#include "y3d_light.h"
#include "y3d_manager.h"
#include "y3d_material.h"
#include "y3d_mesh.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"
#include "y3d_submesh.h"
#include "y3d_texture.h"

#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

using MathBase::Vector3f;

// Files held in memory.
class MemoryArchive : public AM::ArchiveBase
{
public:
    AM::File read(const std::string& name) override
    {
        const auto found = mFiles.find(name);
        if (found == mFiles.end()) return AM::File();
        AM::File file(new AM::FileStructure);
        file->filename = name;
        file->length = static_cast<long>(found->second.size());
        file->data = new unsigned char[found->second.size()];
        std::memcpy(file->data, found->second.data(), found->second.size());
        return file;
    }
    bool write(AM::File) override { return false; }

    std::map<std::string, std::string> mFiles;
};

struct Archives : AM::ArchiveManager
{
    Archives() { mArchives.push_back(mMemory = new MemoryArchive); }
    std::string& operator[](const std::string& name) { return mMemory->mFiles[name]; }

    MemoryArchive* mMemory;
};

inline AM::Image makeImage(int width, int height, const std::vector<unsigned char>& bgra)
{
    AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, "test"));
    image->resize(width, height);
    if (!bgra.empty()) std::memcpy(image->getWriteData(), bgra.data(), bgra.size());
    return image;
}

inline void setVector(y3d::TrackVector3f& track, const Vector3f& value)
{
    track.mX.mBaseValue = value.x;
    track.mY.mBaseValue = value.y;
    track.mZ.mBaseValue = value.z;
}

// A curve that goes straight from one value to another.
inline void animate(y3d::TrackBlenderFloat& curve, float start, float from, float end, float to)
{
    curve.mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_LINEAR;
    for (const auto& key : {MathBase::Vector2f(start, from), MathBase::Vector2f(end, to)})
        curve.mKeys.push_back({key, key, key});
}

inline y3d::Submesh* addSubmesh(y3d::Mesh* mesh, const std::vector<Vector3f>& positions,
                                const std::vector<unsigned>& indices, const std::string& material)
{
    y3d::Submesh* submesh = new y3d::Submesh;
    mesh->mSubmeshes.push_back(submesh);
    submesh->mMaterialName = material;
    submesh->mPositions = new y3d::StructList<Vector3f>(positions.begin(), positions.end());
    submesh->mIndices = new y3d::StructList<y3d::Index>(indices.begin(), indices.end());

    if (!mesh->mHasBoundingBox) mesh->mBoundingBox = MathBase::AABBpointsf(positions[0], positions[0]);
    submesh->mBoundingBox = MathBase::AABBpointsf(positions[0], positions[0]);
    mesh->mHasBoundingBox = submesh->mHasBoundingBox = true;
    for (const Vector3f& position : positions)
    {
        submesh->mBoundingBox.includePoint(position);
        mesh->mBoundingBox.includePoint(position);
    }
    return submesh;
}

// Every vertex looks the same way, and its texture coordinates are its x and y.
inline void addNormalsAndCoordinates(y3d::Submesh* submesh, const Vector3f& normal)
{
    const std::size_t count = submesh->mPositions->size();
    submesh->mNormals = new y3d::StructList<Vector3f>(count, normal);
    submesh->mUVWs.push_back(new y3d::UVWList(submesh->mPositions->begin(), submesh->mPositions->end()));
}

inline std::vector<Vector3f> quadAt(float z)
{
    return {Vector3f(-1, -1, z), Vector3f(1, -1, z), Vector3f(1, 1, z), Vector3f(-1, 1, z)};
}

// A scene file in the making.
struct SceneFile
{
    SceneFile()
    {
        scene->mName = "Scene";
        manager.mScenes.push_back(scene);
    }

    y3d::Material* material(const std::string& name, float r, float g, float b, bool shadeless)
    {
        y3d::Material* made = new y3d::Material;
        manager.mMaterials.push_back(made);
        made->mName = name;
        made->mShadeless = shadeless;
        attribute(made, "diffuse", y3d::Color4f(r, g, b, 1));
        return made;
    }

    static y3d::Material::Attribute* attribute(y3d::Material* to, const std::string& name, const y3d::Color4f& color)
    {
        y3d::Material::Attribute* made = new y3d::Material::Attribute;
        to->mAttributes.push_back(made);
        made->mName = name;
        made->mColor = color;
        return made;
    }

    // Has `attribute` use an image; the file holds an image of that name only with a file name.
    void texture(y3d::Material::Attribute* attribute, const std::string& name, const std::string& filename)
    {
        y3d::Texture* use = new y3d::Texture;
        attribute->mTextures.push_back(use);
        use->mImageName = name;
        if (filename.empty()) return;
        y3d::Image* image = new y3d::Image;
        manager.mImages.push_back(image);
        image->mName = name;
        image->mFileName = filename;
    }

    y3d::Mesh* mesh(const std::string& name)
    {
        manager.mMeshes.push_back(new y3d::Mesh);
        manager.mMeshes.back()->mName = name;
        return manager.mMeshes.back();
    }

    // A quad from -1 to 1 in the plane of z, seen from positive z.
    y3d::Mesh* quad(const std::string& name, const std::string& materialName, float z = 0)
    {
        y3d::Mesh* made = mesh(name);
        y3d::Submesh* submesh = addSubmesh(made, quadAt(z), {0, 1, 2, 0, 2, 3}, materialName);
        addNormalsAndCoordinates(submesh, Vector3f(0, 0, 1));
        return made;
    }

    template <typename NodeType>
    NodeType* add(y3d::SceneNode* parent, const std::string& name, const Vector3f& position)
    {
        NodeType* node = new NodeType;
        (parent ? parent : scene)->addChild(node);
        node->mName = name;
        setVector(node->mPosition, position);
        setVector(node->mScale, Vector3f(1, 1, 1));
        return node;
    }

    y3d::MeshInstance* instance(y3d::SceneNode* parent, const std::string& name, const std::string& meshName,
                                const Vector3f& position)
    {
        y3d::MeshInstance* node = add<y3d::MeshInstance>(parent, name, position);
        node->mMeshName = meshName;
        return node;
    }

    // Looks along negative z with y up: at a distance of 1 the picture is 2 high.
    y3d::Camera* camera(y3d::SceneNode* parent, const std::string& name, const Vector3f& position)
    {
        y3d::Camera* node = add<y3d::Camera>(parent, name, position);
        node->mRotation.mEuler = true;
        node->mRotation.mX.mBaseValue = 1.5707964f;
        node->mFov.mCurve.mBaseValue = 1.5707964f;
        return node;
    }

    y3d::Light* light(y3d::SceneNode* parent, const Vector3f& position, const y3d::Color4f& color, float distance)
    {
        y3d::Light* node = add<y3d::Light>(parent, "light", position);
        node->mLightColor.mR.mBaseValue = color.r;
        node->mLightColor.mG.mBaseValue = color.g;
        node->mLightColor.mB.mBaseValue = color.b;
        node->mDistance.mCurve.mBaseValue = distance;
        return node;
    }

    std::string bytes() const
    {
        unsigned char* data = nullptr;
        int size = 0;
        manager.write(&data, &size);
        const std::unique_ptr<unsigned char[]> owner(data);
        return std::string(reinterpret_cast<const char*>(data), static_cast<std::size_t>(size));
    }

    // Puts file and description into the archives, as "scene.xml".
    void store(Archives& archives) const
    {
        archives["scene.y3d"] = bytes();
        archives["scene.xml"] = "<x><scene filename=\"scene.y3d\" texturepath=\"\" name=\"Scene\"/></x>";
    }

    y3d::Manager manager;
    y3d::Scene* scene = new y3d::Scene;
};
