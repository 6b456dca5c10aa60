#pragma once

#include "mb_quatf.h"
#include "y3d_trackblenderfloat.h"

namespace y3d
{

// An animated rotation, by curves over the four components of a quaternion or over three euler angles in radians. In a
// file the type of the base value tells which. A new track is a quaternion that does not rotate.
class TrackQuatf
{
public:
    TrackQuatf();

    // Removes the keys and returns to a quaternion that does not rotate.
    void clear();

    // Reads the track's chunk, which the caller has opened. Chunks of no track are passed over. A base quaternion is
    // normalised; one that cannot be (of length 0) becomes the rotation that does nothing.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends one chunk with the given identifier: the curves that have keys, and the base values.
    void writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const;

    // The rotation at a time. Always a sound one: where the curves give a quaternion that cannot be normalised, or
    // angles that are no numbers, it is the rotation that does nothing.
    MathBase::Quatf getValue(float time) const;

    // Sets the rotation of a track without keys. Throws y3d::Exception in euler mode.
    void setBaseValue(const MathBase::Quatf& value);

    // True when the value is the same at any time.
    bool isStatic() const;

    bool mEuler; // mX, mY, mZ are angles and mW is not used
    TrackBlenderFloat mW;
    TrackBlenderFloat mX;
    TrackBlenderFloat mY;
    TrackBlenderFloat mZ;
};

} // namespace y3d
