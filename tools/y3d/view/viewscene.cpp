#include "view/viewscene.h"

#include "scenefile.h"
#include "silentoutput.h"

#include "am.h"
#include "fe_light.h"
#include "fe_mesh.h"
#include "tw_glinclude.h"
#include "xml_iteratorconst.h"
#include "xml_parser.h"
#include "y3d_camera.h"
#include "y3d_exception.h"
#include "y3d_light.h"
#include "y3d_scene.h"
#include "y3d_scenenode.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace
{

using MathBase::AABBpointsf;
using MathBase::Vector3f;

const char* const DESCRIPTION = "the scene to view";

AM::File makeFile(const std::string& name, const void* bytes, std::size_t size)
{
    AM::FileStructure* file = new AM::FileStructure;
    file->filename = name;
    file->length = static_cast<long>(size);
    file->data = new unsigned char[std::max<std::size_t>(size, 1)];
    std::memcpy(file->data, bytes, size);
    return AM::File(file);
}

// What the engine asks for: a description made here, the scene file as it is in memory, and pictures from a folder.
class ViewArchive : public AM::ArchiveBase
{
public:
    ViewArchive(const std::string& description, const SceneFile& file) : mDescription(description), mFile(file) {}

    AM::File read(const std::string& name) override
    {
        if (name == DESCRIPTION) return makeFile(name, mDescription.data(), mDescription.size());
        if (name == "file") return makeFile(name, mFile.bytes.data(), mFile.bytes.size());
        return AM::File();
    }
    bool write(AM::File) override { return false; }

private:
    std::string mDescription;
    const SceneFile& mFile;
};

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

// The picture folder that a description beside the scene file names for it, or "" where there is none to read.
std::string describedPictures(const std::string& filename)
{
    AM::ArchiveManager archive;
    archive.addArchive(folderOf(filename));
    const std::string name = filename.substr(filename.rfind('/') == std::string::npos ? 0 : filename.rfind('/') + 1);
    const AM::File file = archive.readFile(name.substr(0, name.rfind('.')) + ".xml", -1);
    if (file.isNull()) return "";
    try
    {
        Xml::XmlParser document;
        document.parse(reinterpret_cast<const char*>(file->data), static_cast<int>(file->length));
        Xml::IteratorConst scene = const_cast<const Xml::XmlParser&>(document).createIterator("scene");
        if (!++scene || scene->getValue("filename") != name) return "";
        const std::string path = scene->getValue("texturepath");
        return path.empty() || path.back() == '/' ? path : path + "/";
    }
    catch (const std::exception&)
    {
        return ""; // some other file, which is none of the viewer's business
    }
}

float lastKey(const y3d::TrackBlenderFloat& curve)
{
    return curve.mKeys.empty() ? 0.0f : curve.mKeys.back().mPoint.x;
}

float lastKey(const y3d::TrackVector3f& track)
{
    return std::max({lastKey(track.mX), lastKey(track.mY), lastKey(track.mZ)});
}

// Where the last key lies of a node and of what is below it.
float endOf(const y3d::SceneNode& node)
{
    const y3d::TrackQuatf& turn = node.getRotation();
    float end = std::max({lastKey(node.getPosition()), lastKey(node.getScale()), lastKey(turn.mW), lastKey(turn.mX),
                          lastKey(turn.mY), lastKey(turn.mZ)});
    if (const auto* camera = dynamic_cast<const y3d::Camera*>(&node)) end = std::max(end, lastKey(camera->mFov.mCurve));
    if (const auto* light = dynamic_cast<const y3d::Light*>(&node))
        end = std::max({end, lastKey(light->mDistance.mCurve), lastKey(light->mLightColor.mR),
                        lastKey(light->mLightColor.mG), lastKey(light->mLightColor.mB)});
    for (int i = 0; i < node.getNumChildren(); ++i) end = std::max(end, endOf(*node.getChild(i)));
    return end;
}

// The far side of what can be seen from the outside must not be cut off.
float reachOf(const AABBpointsf& box, const Vector3f& from)
{
    return (box.getCenter() - from).length() + box.getMinSphereRadiusFromCenter();
}

void drawBox(const AABBpointsf& box)
{
    const Vector3f* const corners[2] = {&box.mMin, &box.mMax};
    glBegin(GL_LINES);
    for (int axis = 0; axis < 3; ++axis)
        for (int edge = 0; edge < 4; ++edge)
            for (int end = 0; end < 2; ++end)
            {
                int side[3];
                side[axis] = end;
                side[(axis + 1) % 3] = edge & 1;
                side[(axis + 2) % 3] = edge >> 1;
                glVertex3f(corners[side[0]]->x, corners[side[1]]->y, corners[side[2]]->z);
            }
    glEnd();
}

} // namespace

ViewScene::ViewScene(const Source& source)
{
    const SceneFile file(source.file);
    if (!file.manager.getNumScenes()) throw y3d::Exception("%s: There is no scene in it", source.file.c_str());
    const y3d::Scene* scene = source.name.empty() ? nullptr : file.manager.getScene(source.name);
    if (!source.name.empty() && !scene)
        throw y3d::Exception("%s: There is no scene '%s' in it", source.file.c_str(), source.name.c_str());
    mEnd = endOf(scene ? *scene : *file.manager.mScenes[0]);

    const std::string description =
        "<view><scene filename=\"file\" texturepath=\"\" name=\"" + source.name + "\"/></view>";
    AM::ArchiveManager archive;
    archive.mArchives.push_back(new ViewArchive(description, file));
    archive.addArchive(source.pictures.empty() ? folderOf(source.file) + describedPictures(source.file)
                                               : source.pictures);
    {
        const SilentOutput silence; // the reader's lines on chunks that it does not know
        mEngine.load(archive, DESCRIPTION);
    }

    for (const Fennel::Camera* camera : mEngine.mCameras) mCameras.push_back(camera->mName);
    mHasLights = !mEngine.mLights.empty();
    if (!mHasLights)
    {
        mEngine.mLights.push_back(new Fennel::Light);
        y3d::TrackColor4f& color = mEngine.mLights[0]->mColorTrack;
        color.mR.mBaseValue = color.mG.mBaseValue = color.mB.mBaseValue = color.mA.mBaseValue = 1;
        mEngine.mLights[0]->mDistanceTrack.mCurve.mBaseValue = 1e6f;
    }
    for (const Fennel::Sorrel::Node* node : mEngine.mNodes)
    {
        if (!node->mMesh) continue;
        ++mNodes;
        for (const Fennel::Submesh& submesh : node->mMesh->mSubmeshes)
            mTriangles += static_cast<int>((submesh.mIndexBuffer ? submesh.mNumIndices : submesh.mNumVertices) / 3);
    }
}

void ViewScene::moveTo(float time, const std::string& name, const Fennel::Camera& camera, float aspect)
{
    Fennel::Camera* own = name.empty() ? nullptr : mEngine.getCamera(name);
    mEngine.mActiveCamera = own;
    mEngine.updateKeyframing(time);
    mCamera = own ? *own : camera;
    mCamera.mAspect = aspect;
    const float reach = reachOf(getBox(), mCamera.mPosition);
    mCamera.mFar = own ? 2000.0f : std::max(reach, 1.0f) * 1.1f;
    mCamera.mNear = own ? 0.1f : std::max(mCamera.mFar / 20000.0f, 1e-4f);
    mCamera.updateMatrices();
    mEngine.mActiveCamera = &mCamera;
    if (!mHasLights) mEngine.mLights[0]->mPosition = mCamera.mPosition;
}

void ViewScene::draw(bool wireframe)
{
    if (!wireframe)
    {
        mEngine.draw();
        return;
    }
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    const float bright[4] = {2, 2, 2, 1}; // edges that no light reaches are seen too
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, bright);
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    mEngine.draw();
    glPopAttrib();
}

void ViewScene::drawBoxes(const Fennel::Sorrel::Node* marked) const
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    for (const Fennel::Sorrel::Node* node : mEngine.mNodes)
    {
        if (!node->mMesh) continue;
        if (node == marked)
            glColor3f(1.0f, 0.6f, 0.1f);
        else
            glColor3f(0.35f, 0.55f, 0.65f);
        drawBox(node->mWorldBox);
    }
    glPopAttrib();
}

const Fennel::Sorrel::Node* ViewScene::nodeAt(int x, int y, int width, int height) const
{
    float depth = 1;
    glReadPixels(x, height - 1 - y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    if (depth >= 1) return nullptr; // nothing was drawn there

    // Back from the window to the world; the smallest box that holds the place is what was hit.
    double view[16], projection[16], place[3];
    const GLint viewport[4] = {0, 0, width, height};
    for (int i = 0; i < 16; ++i)
    {
        view[i] = mCamera.mMatCameraInv[i];
        projection[i] = mCamera.mMatProj[i];
    }
    gluUnProject(x + 0.5, height - y - 0.5, depth, view, projection, viewport, &place[0], &place[1], &place[2]);
    const Vector3f hit(static_cast<float>(place[0]), static_cast<float>(place[1]), static_cast<float>(place[2]));
    const float margin = 2e-3f * (hit - mCamera.mPosition).length();

    const Fennel::Sorrel::Node* found = nullptr;
    float smallest = 0;
    for (const Fennel::Sorrel::Node* node : mEngine.mNodes)
    {
        if (!node->mMesh) continue;
        bool isInside = true;
        for (int i = 0; i < 3; ++i)
            isInside =
                isInside && hit[i] >= node->mWorldBox.mMin[i] - margin && hit[i] <= node->mWorldBox.mMax[i] + margin;
        const float size = node->mWorldBox.getMinSphereRadiusFromCenter();
        if (!isInside || (found && size >= smallest)) continue;
        found = node;
        smallest = size;
    }
    return found;
}

AABBpointsf ViewScene::getBox() const
{
    AABBpointsf box(Vector3f(-1, -1, -1), Vector3f(1, 1, 1));
    bool isFirst = true;
    for (const Fennel::Sorrel::Node* node : mEngine.mNodes)
    {
        if (!node->mMesh) continue;
        if (isFirst) box = node->mWorldBox;
        isFirst = false;
        box.includePoint(node->mWorldBox.mMin);
        box.includePoint(node->mWorldBox.mMax);
    }
    return box;
}
