#include "fe_sorrel.h"

#include "fe_camera.h"
#include "fe_light.h"
#include "fe_mesh.h"
#include "fe_nodematrix.h"
#include "fe_numbersort.h"

#include "tw_glinclude.h"

// A frame. Keyframing visits what moves, drawing only reads what keyframing has left.

namespace Fennel
{

namespace Sorrel
{

namespace
{

const std::size_t GL_LIGHTS = 8;

// Jobs are drawn in the order of their buffers' numbers, and so the meshes in that of their first ones.
unsigned long numberOf(const Mesh& mesh)
{
    const BufferARB* buffer = mesh.mSubmeshes.empty() ? nullptr : mesh.mSubmeshes[0].mVertexBuffer;
    return buffer ? buffer->mNumber : 0;
}

// The boxes of some nodes, number by number side by side: the compiler makes loops over them of instructions that take
// several boxes at a time.
class Boxes
{
public:
    static const std::size_t ROOM = 64;

    void set(std::size_t i, const MathBase::AABBpointsf& box)
    {
        mMinX[i] = box.mMin.x;
        mMinY[i] = box.mMin.y;
        mMinZ[i] = box.mMin.z;
        mMaxX[i] = box.mMax.x;
        mMaxY[i] = box.mMax.y;
        mMaxZ[i] = box.mMax.z;
    }

    // Finds out which ones are outside. All places are looked at, used or not: their number is known beforehand.
    void cull(const MathBase::Frustum& frustum)
    {
        for (std::size_t i = 0; i < ROOM; ++i)
        {
            const MathBase::AABBpointsf box({mMinX[i], mMinY[i], mMinZ[i]}, {mMaxX[i], mMaxY[i], mMaxZ[i]});
            const MathBase::Vector3f center = box.getCenter();
            mCenterX[i] = center.x;
            mCenterY[i] = center.y;
            mCenterZ[i] = center.z;
            mRadius[i] = box.getMinSphereRadiusFromCenter();
            mOutside[i] = 0;
        }
        for (int plane = 0; plane < frustum.mNumPlanes; ++plane)
        {
            const MathBase::Planef p = frustum.mPlanes[plane];
            for (std::size_t i = 0; i < ROOM; ++i)
                mOutside[i] |= -mRadius[i] >= p.distanceTo({mCenterX[i], mCenterY[i], mCenterZ[i]}) ? 1 : 0;
        }
    }

    // Outside as soon as the sphere around the middle of the box lies outside one plane, touching included.
    bool isOutside(std::size_t i) const { return mOutside[i] != 0; }

private:
    float mMinX[ROOM] = {}, mMinY[ROOM] = {}, mMinZ[ROOM] = {}, mMaxX[ROOM] = {}, mMaxY[ROOM] = {}, mMaxZ[ROOM] = {};
    float mCenterX[ROOM], mCenterY[ROOM], mCenterZ[ROOM], mRadius[ROOM];
    int mOutside[ROOM];
};

} // namespace

void Node::updateKeyframing(float time)
{
    if (!mStatic)
    {
        mRotation = mRotationTrack.getValue(time);
        mPosition = mPositionTrack.getValue(time);
        mScale = mScaleTrack.getValue(time);
        mMirroredLocal = mScale.x * mScale.y * mScale.z < 0;
        mMatLocal = nodeMatrix(mRotation, mScale, mPosition);
    }

    // Anew at each update, also for a static node: its parent may have mirrored at the last one and not at this.
    mMirrored = mMirroredLocal;
    mMatWorld = mMatLocal;
    if (mParent)
    {
        if (mParent->mMirrored) mMirrored = !mMirroredLocal;
        mMatWorld = mParent->mMatWorld;
        mMatWorld.multiplyFromRight(mMatLocal);
    }

    if (mMesh) mWorldBox.setTransformed(mMesh->mBoundingBox, mMatWorld);
}

void Engine::updateKeyframing(float time)
{
    if (mActiveCamera) updateCamera(time);
    for (Node* node : mDynamicNodes) node->updateKeyframing(time);
    for (Light* light : mLights) updateLight(*light, time);
}

void Engine::updateCamera(float time)
{
    Camera& camera = *mActiveCamera;
    camera.mPosition = camera.mPositionTrack.getValue(time);
    camera.mRotation = camera.mRotationTrack.getValue(time);
    camera.mScale = camera.mScaleTrack.getValue(time);
    camera.mFov = camera.mFovTrack.getValue(time);
    camera.updateMatrices();
}

void Engine::updateLight(Light& light, float time)
{
    light.mPosition = light.mPositionTrack.getValue(time);
    const y3d::Color4f color = light.mColorTrack.getValue(time);
    light.mColor[0] = color.r;
    light.mColor[1] = color.g;
    light.mColor[2] = color.b;
    light.mColor[3] = color.a;
    light.mDistance = light.mDistanceTrack.getValue(time);
    light.mEnergy = light.mEnergyTrack.getValue(time);
    if (light.mParent) light.mPosition = light.mParent->mMatWorld.transformPoint(light.mPosition);
}

void Engine::draw()
{
    if (!mActiveCamera) return;

    GL_CHECKED(glMatrixMode(GL_MODELVIEW));
    GL_CHECKED(glLoadIdentity());
    GL_CHECKED(glClear(GL_DEPTH_BUFFER_BIT));
    GL_CHECKED(glEnable(GL_NORMALIZE));
    GL_CHECKED(glEnable(GL_DEPTH_TEST));
    GL_CHECKED(glDepthMask(GL_TRUE));
    mActiveCamera->activate();

    mRenderManager.clear();
    renderVisibleNodes();
    activateLights();

    mRenderManager.sort();
    mRenderManager.render();

    GL_CHECKED(glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0));
    GL_CHECKED(glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0));
    mActiveCamera->deactivate();
}

void Engine::renderVisibleNodes()
{
    findVisibleNodes();
    // Added mesh by mesh, jobs stand in their order from the start, unless a mesh has several submeshes or materials.
    sortByNumber(mVisible, mSortedVisible, [](const Visible& visible) { return visible.mesh; });
    for (const Visible& visible : mVisible) renderNode(visible.node, mActiveCamera->mMatCameraInv);
}

void Engine::findVisibleNodes()
{
    mVisible.clear();
    Boxes boxes;
    Node* nodes[Boxes::ROOM];
    for (auto next = mNodes.begin(); next != mNodes.end();)
    {
        std::size_t count = 0;
        for (; count < Boxes::ROOM && next != mNodes.end(); ++next)
        {
            if (!(*next)->mMesh) continue;
            boxes.set(count, (*next)->mWorldBox);
            nodes[count++] = *next;
        }
        boxes.cull(mActiveCamera->mFrustum);
        for (std::size_t i = 0; i < count; ++i)
        {
            if (!boxes.isOutside(i)) mVisible.emplace_back(numberOf(*nodes[i]->mMesh), nodes[i]);
        }
    }
}

void Engine::activateLights()
{
    for (std::size_t i = 0; i < GL_LIGHTS; ++i)
    {
        const GLenum lightID = static_cast<GLenum>(GL_LIGHT0 + i);
        if (i < mLights.size())
        {
            GL_CHECKED(glEnable(lightID));
            mLights[i]->activate(static_cast<int>(lightID), mActiveCamera->mMatCameraInv);
        }
        else
        {
            GL_CHECKED(glDisable(lightID));
        }
    }
}

void Engine::renderNode(Node* node, const MathBase::Matrix4x4Col& view)
{
    const MathBase::Matrix4x4Col matrix = MathBase::Matrix4x4Col::product(view, node->mMatWorld);
    const unsigned int flags = node->mMirrored ? RenderManager::Job::MIRRORED : 0;
    if (node->mMaterials.empty()) return;
    const Submesh* submesh = node->mMesh->mSubmeshes.data();
    for (const Material* material : node->mMaterials) mRenderManager.add(submesh++, material, matrix, flags);
}

} // namespace Sorrel

} // namespace Fennel
