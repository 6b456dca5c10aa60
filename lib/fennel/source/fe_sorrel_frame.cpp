#include "fe_sorrel.h"

#include "fe_camera.h"
#include "fe_light.h"
#include "fe_mesh.h"
#include "fe_nodematrix.h"

#include "tw_glinclude.h"

// A frame. Keyframing visits what moves, drawing only reads what keyframing has left.

namespace Fennel
{

namespace Sorrel
{

namespace
{

const std::size_t GL_LIGHTS = 8;

// Outside as soon as the sphere around the middle of the box lies outside one plane, touching included.
bool isVisible(const MathBase::AABBpointsf& box, const MathBase::Frustum& frustum)
{
    const MathBase::Vector3f center = box.getCenter();
    const float radius = box.getMinSphereRadiusFromCenter();
    for (int i = 0; i < frustum.mNumPlanes; ++i)
    {
        if (-radius >= frustum.mPlanes[i].distanceTo(center)) return false;
    }
    return true;
}

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
    for (Node* node : mNodes)
    {
        if (node->mMesh && isVisible(node->mWorldBox, mActiveCamera->mFrustum))
            renderNode(node, mActiveCamera->mMatCameraInv);
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
    MathBase::Matrix4x4Col matrix = view;
    matrix.multiplyFromRight(node->mMatWorld);
    const unsigned int flags = node->mMirrored ? RenderManager::Job::MIRRORED : 0;
    for (std::size_t i = 0; i < node->mMaterials.size(); ++i)
        mRenderManager.add(&node->mMesh->mSubmeshes[i], node->mMaterials[i], matrix, flags);
}

} // namespace Sorrel

} // namespace Fennel
