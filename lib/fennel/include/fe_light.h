#pragma once

#include "mb_matrix4x4col.h"
#include "mb_vector3f.h"
#include "y3d_trackcolor4f.h"
#include "y3d_trackfloat.h"
#include "y3d_trackvector3f.h"

#include <string>

namespace Fennel
{

namespace Sorrel
{
class Node;
}

// A point light that grows weaker with distance.
class Light
{
public:
    // Sets GL light `lightID`, GL_LIGHT0 and up, to the current values. `view` takes world space to the camera; the GL
    // modelview matrix must be the identity, so that GL takes the position as it is.
    void activate(int lightID, const MathBase::Matrix4x4Col& view) const;

    MathBase::Vector3f mPosition;     // current value, in world space after keyframing
    float mColor[4] = {0, 0, 0, 0};   // current value, r g b a; diffuse and specular
    float mAmbient[4] = {0, 0, 0, 0}; // never changed
    float mDistance = 0;              // current value; the light halves there
    float mEnergy = 0;                // current value; sampled, and shown by nothing
    std::string mName;
    y3d::TrackVector3f mPositionTrack;
    y3d::TrackColor4f mColorTrack;
    y3d::TrackFloat mDistanceTrack;
    y3d::TrackFloat mEnergyTrack;
    Sorrel::Node* mParent = nullptr; // the node it hangs from, or null; not owned
};

} // namespace Fennel
