#pragma once

#include "fe_camera.h"

#include "mb_aabbpointsf.h"

// A free camera that is moved by hand: round a point, sideways, nearer, or flying. Angles are radians, y is up.
class ViewCamera
{
public:
    // Looks at the whole of a box, from the front and a little above.
    void lookAt(const MathBase::AABBpointsf& box);
    // Takes over where another camera stands and looks, with the point of rotation as far ahead as that of the box.
    void takeOver(const Fennel::Camera& camera, const MathBase::AABBpointsf& box);

    // Turns round the point that is looked at.
    void orbit(float around, float up);
    // Turns where it stands.
    void turn(float around, float up);
    // Moves with the point, in shares of the picture's height.
    void pan(float right, float up);
    // Goes nearer by a factor below 1, further by one above.
    void zoom(float factor);
    // Moves by a share of the distance to the point.
    void fly(float right, float up, float ahead);

    // The renderer's camera at this place.
    Fennel::Camera getCamera() const;

private:
    MathBase::Vector3f direction(float x, float y, float z) const;
    MathBase::Quatf rotation() const;

    MathBase::Vector3f mTarget; // the point of rotation
    float mDistance = 5;        // to it
    float mAround = 0;          // 0 looks along negative z
    float mUp = 0.3f;           // above the point, below a quarter turn
    float mFov = 0.8f;          // full vertical angle
};
