#include "sorrelplayer.h"

#include "fe_camera.h"
#include "tw_glinclude.h"

SorrelPlayer::SorrelPlayer(const std::string& sceneFile) : mSceneFile(sceneFile) {}

void SorrelPlayer::setup(AM::ArchiveManager& archive)
{
    mEngine.load(archive, mSceneFile);
}

void SorrelPlayer::updateSpline(float, const std::string& name, float value)
{
    if (name == "y") mYOffset = value / 10;
}

void SorrelPlayer::update(float time, float, float)
{
    mEngine.updateKeyframing(time);

    // Keyframing has just set the camera from its tracks, so the offset does not add up. A scene without a camera draws
    // nothing.
    if (Fennel::Camera* camera = mEngine.mActiveCamera)
    {
        camera->mFar = mFarPlane;
        camera->mPosition.y += mYOffset;
        camera->updateMatrices();
    }

    mEngine.draw();
}

void SorrelPlayer::trigger(float, const std::string&, const std::string&) {}

void drawBox(const MathBase::AABBpointsf& box)
{
    glBegin(GL_POINTS);
    for (int i = 0; i < 8; ++i)
    {
        const float corner[3] = {i & 1 ? box.mMax.x : box.mMin.x, i & 2 ? box.mMax.y : box.mMin.y,
                                 i & 4 ? box.mMax.z : box.mMin.z};
        glVertex3fv(corner);
    }
    glEnd();
}
