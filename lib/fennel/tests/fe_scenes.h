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
struct MemoryArchive : AM::ArchiveBase
{
    AM::File read(const std::string& name) override
    {
        const auto found = mFiles.find(name);
        if (found == mFiles.end()) return AM::File();
        AM::File file(new AM::FileStructure);
        file->length = static_cast<long>(found->second.size());
        file->data = new unsigned char[found->second.size()];
        std::memcpy(file->data, found->second.data(), found->second.size());
        return file;
    }
    bool write(AM::File) override { return false; }

    std::map<std::string, std::string> mFiles;
};

inline AM::Image makeImage(int width, int height, const std::vector<unsigned char>& bgra)
{
    AM::Image image(new AM::ImageObject(0, 0, nullptr, nullptr, "test"));
    image->resize(width, height);
    if (!bgra.empty()) std::memcpy(image->getWriteData(), bgra.data(), bgra.size());
    return image;
}

struct Archives : AM::ArchiveManager
{
    Archives() { mArchives.push_back(mMemory = new MemoryArchive); }
    std::string& operator[](const std::string& name) { return mMemory->mFiles[name]; }

    void addPicture(const std::string& name, AM::Image image)
    {
        const AM::File file = mImageManager->encodeImage(name, image);
        (*this)[name].assign(reinterpret_cast<const char*>(file->data), file->length);
    }

    MemoryArchive* mMemory; // owned by the manager
};

inline void setVector(y3d::TrackVector3f& track, const Vector3f& value)
{
    track.mX.mBaseValue = value.x;
    track.mY.mBaseValue = value.y;
    track.mZ.mBaseValue = value.z;
}

// A curve that goes straight from one value at 0 to another at 10 seconds.
inline void animate(y3d::TrackBlenderFloat& curve, float from, float to)
{
    curve.mInterpolation = y3d::TrackBlenderFloat::INTERPOLATION_LINEAR;
    for (const auto& key : {MathBase::Vector2f(0, from), MathBase::Vector2f(10, to)})
        curve.mKeys.push_back({key, key, key});
}

// All normals look along z, and the texture coordinates of a vertex are its x and y.
inline y3d::Submesh* addSubmesh(y3d::Mesh* mesh, const std::vector<Vector3f>& positions,
                                const std::vector<unsigned>& indices, const std::string& material)
{
    y3d::Submesh* submesh = new y3d::Submesh;
    mesh->mSubmeshes.push_back(submesh);
    submesh->mMaterialName = material;
    submesh->mPositions = new y3d::StructList<Vector3f>(positions.begin(), positions.end());
    submesh->mIndices = new y3d::StructList<y3d::Index>(indices.begin(), indices.end());
    submesh->mNormals = new y3d::StructList<Vector3f>(positions.size(), Vector3f(0, 0, 1));
    submesh->mUVWs.push_back(new y3d::UVWList(positions.begin(), positions.end()));

    if (!mesh->mHasBoundingBox) mesh->mBoundingBox = MathBase::AABBpointsf(positions[0], positions[0]);
    for (const Vector3f& position : positions) mesh->mBoundingBox.includePoint(position);
    submesh->mBoundingBox = mesh->mBoundingBox;
    mesh->mHasBoundingBox = submesh->mHasBoundingBox = true;
    return submesh;
}

inline std::vector<Vector3f> quadAt(float z)
{
    return {Vector3f(-1, -1, z), Vector3f(1, -1, z), Vector3f(1, 1, z), Vector3f(-1, 1, z)};
}

// A scene file in the making. A null parent stands for the scene itself.
struct SceneFile
{
    SceneFile() { manager.mScenes.push_back(scene); }

    y3d::Material* material(const std::string& name, float r, float g, float b, bool shadeless)
    {
        y3d::Material* made = new y3d::Material;
        manager.mMaterials.push_back(made);
        made->mName = name;
        made->mShadeless = shadeless;
        attribute(made, "diffuse", y3d::Color4f(r, g, b, 1));
        return made;
    }

    static void attribute(y3d::Material* to, const std::string& name, const y3d::Color4f& color)
    {
        to->mAttributes.push_back(new y3d::Material::Attribute);
        to->mAttributes.back()->mName = name;
        to->mAttributes.back()->mColor = color;
    }

    // Lays an image over the material. Without a file name the file does not have the image.
    void texture(y3d::Material* material, const std::string& name, const std::string& filename)
    {
        y3d::Texture* use = new y3d::Texture;
        material->mAttributes[0]->mTextures.push_back(use);
        use->mImageName = name;
        if (filename.empty()) return;
        manager.mImages.push_back(new y3d::Image);
        manager.mImages.back()->mName = name;
        manager.mImages.back()->mFileName = filename;
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
        addSubmesh(made, quadAt(z), {0, 1, 2, 0, 2, 3}, materialName);
        return made;
    }

    template <typename NodeType> NodeType* add(y3d::SceneNode* parent, const std::string& name, const Vector3f& place)
    {
        NodeType* node = new NodeType;
        (parent ? parent : scene)->addChild(node);
        node->mName = name;
        setVector(node->mPosition, place);
        setVector(node->mScale, Vector3f(1, 1, 1));
        return node;
    }

    y3d::MeshInstance* instance(y3d::SceneNode* parent, const std::string& name, const std::string& meshName,
                                const Vector3f& place)
    {
        y3d::MeshInstance* node = add<y3d::MeshInstance>(parent, name, place);
        node->mMeshName = meshName;
        return node;
    }

    // Looks along negative z with y up: at a distance of 1 the picture is 2 high.
    y3d::Camera* camera(y3d::SceneNode* parent, const std::string& name, const Vector3f& place)
    {
        y3d::Camera* node = add<y3d::Camera>(parent, name, place);
        node->mRotation.mEuler = true;
        node->mRotation.mX.mBaseValue = 1.5707964f;
        node->mFov.mCurve.mBaseValue = 1.5707964f;
        return node;
    }

    y3d::Light* light(y3d::SceneNode* parent, const Vector3f& place, const Vector3f& color, float distance)
    {
        y3d::Light* node = add<y3d::Light>(parent, "light", place);
        node->mLightColor.mR.mBaseValue = color.x;
        node->mLightColor.mG.mBaseValue = color.y;
        node->mLightColor.mB.mBaseValue = color.z;
        node->mDistance.mCurve.mBaseValue = distance;
        return node;
    }

    // Puts file and description into the archives, as "scene.y3d" and "scene.xml".
    void store(Archives& archives) const
    {
        unsigned char* data = nullptr;
        int size = 0;
        manager.write(&data, &size);
        archives["scene.y3d"].assign(reinterpret_cast<const char*>(data), size);
        archives["scene.xml"] = "<x><scene filename=\"scene.y3d\"/></x>";
        delete[] data;
    }

    y3d::Manager manager;
    y3d::Scene* scene = new y3d::Scene;
};
