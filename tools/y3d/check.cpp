#include "chunkwalk.h"
#include "commands.h"
#include "json.h"
#include "nodes.h"
#include "scenefile.h"
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
#include "ytd_utils.h"

#include <cmath>
#include <cstdio>
#include <map>
#include <set>

// Follows the way that the player takes through a file: all materials, and from each scene the nodes it comes to with
// their meshes. What would stop it there is an error, what it passes over a warning. A mesh that no scene shows cannot
// stop the player, so its faults are warnings.

namespace
{

const std::size_t MAX_LIGHTS = 8; // that shine at a time

// More than that nobody reads; the others are only counted.
const std::size_t MAX_FINDINGS = 1000;

struct Finding
{
    bool isError;
    std::string object;
    std::string reason;
};

struct Report
{
    void add(bool isError, const std::string& object, const std::string& reason)
    {
        (isError ? numErrors : numWarnings) += 1;
        if (findings.size() < MAX_FINDINGS) findings.push_back({isError, object, reason});
    }

    std::vector<Finding> findings;
    std::size_t numErrors = 0;
    std::size_t numWarnings = 0;
};

class Check
{
public:
    explicit Check(const SceneFile& file) : mFile(file), mManager(file.manager) {}

    Report run()
    {
        checkNames("mesh", mManager.mMeshes);
        checkNames("material", mManager.mMaterials);
        checkNames("image", mManager.mImages);
        for (const y3d::Material* material : mManager.mMaterials) checkMaterial(*material);
        checkScenes();
        for (const y3d::Mesh* mesh : mManager.mMeshes) checkMesh(*mesh);
        for (const std::string& trouble : walkChunks(mFile.bytes)) warn("file", trouble);
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
                else if (!mManager.getImage(texture.getImageName()))
                {
                    fail(title, what + " has the unknown image " + quoted(texture.getImageName()));
                }
            }
        }
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
            for (const y3d::SceneNode* child : scene->mChildren) checkNode(*child, true);
            if (mNumCameras == 0) warn(titleOf(*scene), "has no camera that is used, so nothing of it is drawn");
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
            else if (!mManager.getMaterial(name))
            {
                fail(title, "has the unknown material " + quoted(name) + " for submesh " + std::to_string(i));
            }
        }
        for (const auto& reference : instance.mMaterialReferences)
        {
            if (reference.first >= 0 && reference.first < mesh->getNumSubmeshes()) continue;
            warn(title,
                 "names a material for submesh " + std::to_string(reference.first) + ", which the mesh does not have");
        }
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
        if (node.getType() == y3d::CHUNK_LIGHT && isZero(static_cast<const y3d::Light&>(node).getDistance().mCurve))
        {
            warn(title, "has a distance of 0");
        }
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
        for (int i = 0; i < mesh.getNumSubmeshes(); ++i)
        {
            const std::string name = "submesh " + std::to_string(i) + " of " + title;
            for (const std::string& fault : faultsOf(*mesh.getSubmesh(i))) report(name, fault);
            for (const std::string& ignored : ignoredOf(*mesh.getSubmesh(i))) warn(name, ignored);
        }
    }

    static std::vector<std::string> faultsOf(const y3d::Submesh& submesh)
    {
        std::vector<std::string> faults;
        const std::size_t vertices = submesh.getNumVertices();
        if (vertices == 0) faults.push_back("is empty: it has no vertices");
        if (submesh.getNumIndices() == 0) faults.push_back("is empty: it has no indices");
        if (!submesh.hasBoundingBox()) faults.push_back("has no bounding box");

        const unsigned int format = ytd::Utils::getFormat(&submesh);
        if (format & 8) faults.push_back("has a second texture channel");
        if (format & (16 | 32)) faults.push_back("has vertex colours");
        if ((format & 2) && submesh.getNormals()->size() != vertices)
        {
            faults.push_back("has " + counted(submesh.getNormals()->size(), "normal", "normals") + " for " +
                             counted(vertices, "vertex", "vertices"));
        }
        if ((format & 4) && submesh.getUVW(0)->size() != vertices)
        {
            faults.push_back("has " + counted(submesh.getUVW(0)->size(), "texture coordinate", "texture coordinates") +
                             " for " + counted(vertices, "vertex", "vertices"));
        }
        std::size_t wild = 0;
        for (int i = 0; i < submesh.getNumIndices(); ++i) wild += (*submesh.getIndices())[i] >= vertices;
        if (wild != 0) faults.push_back("has " + counted(wild, "index", "indices") + " without a vertex");
        return faults;
    }

    static std::vector<std::string> ignoredOf(const y3d::Submesh& submesh)
    {
        std::vector<std::string> ignored;
        if (submesh.getNumIndices() % 3 != 0) ignored.push_back("has indices that make no whole triangle");
        if (submesh.getNumUVWs() > 2) ignored.push_back("has texture channels behind the second, which are ignored");
        if (!submesh.mBoneGroups.empty()) ignored.push_back("has bone groups, which are ignored");
        return ignored;
    }

    const SceneFile& mFile;
    const y3d::Manager& mManager;
    Report mReport;
    std::set<const y3d::Mesh*> mShown; // by some scene
    std::size_t mNumCameras = 0;       // of the scene that is being checked
    std::size_t mNumLights = 0;
};

void print(const SceneFile& file, const Report& report)
{
    for (const Finding& finding : report.findings)
    {
        std::printf("%s: %s: %s\n", finding.isError ? "error" : "warning", finding.object.c_str(),
                    finding.reason.c_str());
    }
    const std::size_t numOthers = report.numErrors + report.numWarnings - report.findings.size();
    if (numOthers != 0) std::printf("%zu more are left out\n", numOthers);
    const std::string summary = report.findings.empty() ? "fine"
                                                        : counted(report.numErrors, "error", "errors") + ", " +
                                                              counted(report.numWarnings, "warning", "warnings");
    std::printf("%s: %s\n", file.name.c_str(), summary.c_str());
}

Json reportJson(const SceneFile& file, const Report& report)
{
    Json findings = Json::array();
    for (const Finding& finding : report.findings)
    {
        findings.push_back({{"severity", finding.isError ? "error" : "warning"},
                            {"object", jsonText(finding.object)},
                            {"reason", jsonText(finding.reason)}});
    }
    return {{"file", jsonText(file.name)},
            {"errors", report.numErrors},
            {"warnings", report.numWarnings},
            {"findings", findings}};
}

} // namespace

int runCheck(const Arguments& arguments)
{
    const SceneFile file(arguments.files[0]);
    const Report report = Check(file).run();
    if (arguments.has("--json"))
        printJson(reportJson(file, report));
    else
        print(file, report);
    return report.numErrors != 0 ? STATUS_ERRORS : report.numWarnings != 0 ? STATUS_WARNINGS : STATUS_FINE;
}
