#pragma once

#include "mb_vector3f.h"
#include "y3d_trackblenderfloat.h"

namespace y3d
{

// An animated vector: the position or the scale of a node.
class TrackVector3f
{
public:
    // Removes the keys and sets the base values to 0.
    void clear();

    // Reads the track's chunk, which the caller has opened. Chunks of no track are passed over.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends one chunk with the given identifier: the curves that have keys, and the base values.
    void writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const;

    MathBase::Vector3f getValue(float time) const;

    // True when the value is the same at any time.
    bool isStatic() const;

    TrackBlenderFloat mX;
    TrackBlenderFloat mY;
    TrackBlenderFloat mZ;
};

} // namespace y3d
