#include "check.h"

#include "chunkwalk.h"
#include "meshcheck.h"
#include "nodes.h"
#include "picturecheck.h"
#include "silentoutput.h"
#include "text.h"
#include "y3d_camera.h"
#include "y3d_chunks.h"
#include "y3d_image.h"
#include "y3d_light.h"
#include "y3d_material.h"
#include "y3d_mesh.h"
#include "y3d_meshinstance.h"
#include "y3d_scene.h"
#include "y3d_submesh.h"
#include "y3d_texture.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

// Follows the way that the player takes through a file: all materials, and from each scene the nodes it comes to with
// their meshes. What would stop it there is an error, what it passes over a warning. A mesh that no scene shows cannot
// stop the player, so its faults are warnings.

namespace
{

const std::size_t MAX_LIGHTS = 8; // that shine at a time

class Check
{
public:
    Check(const SceneFile& file, const std::string& pictures) : mFile(file), mManager(file.manager), mPictures(pictures)
    {
    }

    Report run()
    {
        const ChunkWalk walk = walkChunks(mFile.bytes);
        const std::size_t numLoaded = countNodes(mManager);
        if (walk.numNodes > numLoaded) warn("file", leftOut(walk.numNodes - numLoaded));
        checkNames("mesh", mManager.mMeshes);
        checkNames("material", mManager.mMaterials);
        checkNames("image", mManager.mImages);
        for (const y3d::Material* material : mManager.mMaterials) checkMaterial(*material);
        checkScenes();
        for (const y3d::Mesh* mesh : mManager.mMeshes) checkMesh(*mesh);
        for (const std::string& trouble : walk.lines) warn("file", trouble);
        return mReport;
    }

private:
    void fail(const std::string& object, const std::string& reason) { mReport.add(true, object, reason); }
    void warn(const std::string& object, const std::string& reason) { mReport.add(false, object, reason); }

    // Of several objects with one name the last is found.
    template <class T> void checkNames(const char* kind, const std::vector<T*>& objects)
    {
        std::map<std::string, int> counts;
        for (const T* object : objects)
        {
            if (++counts[object->getName()] == 2)
            {
                warn(kind + (" " + quoted(object->getName())), "comes more than once; only the last one is found");
            }
        }
    }

    void checkMaterial(const y3d::Material& material)
    {
        const std::string title = "material " + quoted(material.getName());
        const std::set<std::string> known = {"diffuse", "specular", "ambient", "emissive", "hardness"};
        for (const y3d::Material::Attribute* attribute : material.mAttributes)
        {
            const std::string name = quoted(attribute->getName());
            if (!known.count(attribute->getName())) warn(title, "attribute " + name + " is ignored");
            const float hardness = attribute->getColor().r;
            const y3d::Color4f& color = attribute->getColor();
            if (!std::isfinite(color.r + color.g + color.b + color.a))
                warn(title, name + " has values that are no numbers");
            if (attribute->getName() == "hardness" && !(hardness >= 0 && hardness <= 254))
            {
                warn(title, "hardness " + shown(hardness) + " is brought between 0 and 254");
            }

            const bool isDiffuse = attribute->getName() == "diffuse";
            for (int i = 0; i < attribute->getNumTextures(); ++i)
            {
                const y3d::Texture& texture = *attribute->getTexture(i);
                const std::string what = "texture " + quoted(texture.getName()) + " of " + name;
                if (!isDiffuse || i > 0)
                    warn(title, what + " is ignored");
                else if (const y3d::Image* image = mManager.getImage(texture.getImageName()))
                    checkImage(*image);
                else
                    fail(title, what + " has the unknown image " + quoted(texture.getImageName()));
            }
        }
    }

    void checkImage(const y3d::Image& image)
    {
        if (!mCheckedImages.insert(&image).second) return;
        const std::string fault = faultOfPicture(mPictures, image.getFileName());
        if (!fault.empty()) fail("image " + quoted(image.getName()), quoted(image.getFileName()) + " " + fault);
    }

    void checkScenes()
    {
        if (mManager.mScenes.empty()) fail("file", "there is no scene in it");
        std::set<std::string> names;
        for (const y3d::Scene* scene : mManager.mScenes)
        {
            if (!names.insert(scene->getName()).second)
            {
                warn(titleOf(*scene), "is never found; the first one of that name is");
            }
            mNumCameras = mNumLights = 0;
            mIsLit = false;
            for (const y3d::SceneNode* child : scene->mChildren) checkNode(*child, true);
            if (mNumCameras == 0) warn(titleOf(*scene), "has no camera that is used, so nothing of it is drawn");
            if (mNumLights == 0 && mIsLit) warn(titleOf(*scene), "has no light, and materials that need one");
            if (mNumLights > MAX_LIGHTS)
            {
                warn(titleOf(*scene), "has " + std::to_string(mNumLights) + " lights; only the first 8 shine");
            }
        }
    }

    void checkNode(const y3d::SceneNode& node, bool isTop)
    {
        const std::string title = titleOf(node);
        const int type = node.getType();
        if (type == y3d::CHUNK_ARMATURE)
        {
            warn(title, "is ignored with everything below it");
            return;
        }
        if (type == y3d::CHUNK_CAMERA && !isTop)
        {
            warn(title, "lies below a node and is ignored; only cameras directly in the scene are used");
            return;
        }
        checkTracks(node, title);
        if (type == y3d::CHUNK_CAMERA || type == y3d::CHUNK_LIGHT)
        {
            (type == y3d::CHUNK_CAMERA ? mNumCameras : mNumLights) += 1;
            if (node.getNumChildren() != 0)
            {
                warn(title, "has " + counted(countBelow(node), "node", "nodes") +
                                " below it that the player does not come to");
            }
            return;
        }
        if (type == y3d::CHUNK_MESHINSTANCE) checkInstance(static_cast<const y3d::MeshInstance&>(node), title);
        for (const y3d::SceneNode* child : node.mChildren) checkNode(*child, false);
    }

    void checkInstance(const y3d::MeshInstance& instance, const std::string& title)
    {
        const y3d::Mesh* mesh = mManager.getMesh(instance.getMeshName());
        if (!mesh)
        {
            fail(title, "has the unknown mesh " + quoted(instance.getMeshName()));
            return;
        }
        mShown.insert(mesh);
        for (int i = 0; i < mesh->getNumSubmeshes(); ++i)
        {
            const std::string& own = instance.getMaterialReference(i);
            const std::string& name = own.empty() ? mesh->getSubmesh(i)->getMaterialName() : own;
            if (name.empty())
                fail(title, "has no material for submesh " + std::to_string(i));
            else if (const y3d::Material* material = mManager.getMaterial(name))
                checkLighting(*mesh, i, *material);
            else
                fail(title, "has the unknown material " + quoted(name) + " for submesh " + std::to_string(i));
        }
        for (const auto& reference : instance.mMaterialReferences)
        {
            if (reference.first >= 0 && reference.first < mesh->getNumSubmeshes()) continue;
            warn(title,
                 "names a material for submesh " + std::to_string(reference.first) + ", which the mesh does not have");
        }
    }

    void checkLighting(const y3d::Mesh& mesh, int submesh, const y3d::Material& material)
    {
        if (material.isShadeless()) return;
        mIsLit = true;
        if (mesh.getSubmesh(submesh)->getNormals() || !mUnlit.insert(mesh.getSubmesh(submesh)).second) return;
        warn("submesh " + std::to_string(submesh) + " of mesh " + quoted(mesh.getName()),
             "has no normals, which the light of material " + quoted(material.getName()) + " needs");
    }

    void checkTracks(const y3d::SceneNode& node, const std::string& title)
    {
        for (const NamedTrack& track : tracksOf(node))
        {
            for (const NamedCurve& curve : track.curves)
            {
                checkCurve(*curve.curve, title, std::string(track.name) + " " + curve.component);
            }
        }
        const auto isZero = [](const y3d::TrackBlenderFloat& curve) {
            return curve.mKeys.empty() && curve.mBaseValue == 0;
        };
        const y3d::TrackVector3f& scale = node.getScale();
        if (node.getType() != y3d::CHUNK_LIGHT && (isZero(scale.mX) || isZero(scale.mY) || isZero(scale.mZ)))
        {
            warn(title, "has a scale of 0");
        }
        if (node.getType() != y3d::CHUNK_LIGHT) return;
        const y3d::TrackBlenderFloat& distance = static_cast<const y3d::Light&>(node).getDistance().mCurve;
        if (isZero(distance)) warn(title, "has a distance of 0");
        float time;
        if (fallsBelowZero(distance, &time)) fail(title, "has a distance below 0 at " + shown(time) + " s");
    }

    // OpenGL refuses such a light. Looks between the keys as well, and some way behind them.
    static bool fallsBelowZero(const y3d::TrackBlenderFloat& curve, float* time)
    {
        const int steps = 32;
        std::vector<float> times = {0.0f};
        for (std::size_t i = 0; i < curve.mKeys.size(); ++i)
        {
            const float from = curve.mKeys[i].mPoint.x;
            const float to = i + 1 < curve.mKeys.size() ? curve.mKeys[i + 1].mPoint.x : from;
            for (int step = 0; step < steps; ++step)
            {
                times.push_back(from + (to - from) * static_cast<float>(step) / steps);
            }
        }
        for (const float behind : {0.0f, 1.0f, 10.0f, 60.0f, 600.0f})
        {
            times.push_back((curve.mKeys.empty() ? 0.0f : curve.mKeys.back().mPoint.x) + behind);
        }
        const SilentOutput silence; // keys out of order
        const auto found = std::find_if(times.begin(), times.end(),
                                        [&](float moment) { return moment >= 0 && curve.getValue(moment) < 0; });
        if (found == times.end()) return false;
        *time = *found;
        return true;
    }

    void checkCurve(const y3d::TrackBlenderFloat& curve, const std::string& title, const std::string& name)
    {
        if (curve.mInterpolation > 2) warn(title, name + " has an unknown interpolation; it is taken as constant");
        if (curve.mExtrapolation > 3)
            warn(title, name + " has an unknown extrapolation; its last value holds outside the keys");

        bool isFinite = std::isfinite(curve.mBaseValue);
        bool isAscending = true;
        for (std::size_t i = 0; i < curve.mKeys.size(); ++i)
        {
            const y3d::TrackBlenderFloat::Key& key = curve.mKeys[i];
            for (const MathBase::Vector2f& point : {key.mHandleIn, key.mPoint, key.mHandleOut})
            {
                isFinite = isFinite && std::isfinite(point.x) && std::isfinite(point.y);
            }
            if (i > 0 && key.mPoint.x < curve.mKeys[i - 1].mPoint.x) isAscending = false;
        }
        if (!isFinite) warn(title, name + " has values that are no numbers");
        if (!isAscending) warn(title, name + " has keys that are not in the order of time");
    }

    // Whatever stops the player, if it comes to the mesh at all.
    void checkMesh(const y3d::Mesh& mesh)
    {
        const std::string title = "mesh " + quoted(mesh.getName());
        const bool isShown = mShown.count(&mesh) != 0;
        if (!isShown) warn(title, "is shown by no scene");

        const auto report = [&](const std::string& object, const std::string& reason) {
            mReport.add(isShown, object, reason);
        };
        if (mesh.getNumSubmeshes() == 0) report(title, "has no submesh");
        if (!mesh.hasBoundingBox()) report(title, "has no bounding box");
        if (mesh.hasBoundingBox() && !holdsSubmeshes(mesh))
            warn(title, "has a bounding box that does not hold its submeshes");
        for (int i = 0; i < mesh.getNumSubmeshes(); ++i)
        {
            const std::string name = "submesh " + std::to_string(i) + " of " + title;
            for (const std::string& fault : faultsOf(*mesh.getSubmesh(i))) report(name, fault);
            for (const std::string& odd : oddsOf(*mesh.getSubmesh(i))) warn(name, odd);
        }
    }

    const SceneFile& mFile;
    const y3d::Manager& mManager;
    const std::string mPictures; // folder
    Report mReport;
    std::set<const y3d::Image*> mCheckedImages;
    std::set<const y3d::Submesh*> mUnlit; // that have been told
    bool mIsLit = false;                  // something of the scene that is being checked
    std::set<const y3d::Mesh*> mShown;    // by some scene
    std::size_t mNumCameras = 0;          // of the scene that is being checked
    std::size_t mNumLights = 0;
};

} // namespace

Report checkFile(const SceneFile& file, const std::string& pictures)
{
    return Check(file, pictures).run();
}
