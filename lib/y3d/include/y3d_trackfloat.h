#pragma once

#include "y3d_trackblenderfloat.h"

namespace y3d
{

// An animated float: the field of view of a camera, the energy of a light.
class TrackFloat
{
public:
    // Removes the keys and sets the base value to 0.
    void clear();

    // Reads the track's chunk, which the caller has opened. Chunks of no track are passed over.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends one chunk with the given identifier: the curve, if it has keys, and the base value.
    void writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const;

    float getValue(float time) const { return mCurve.getValue(time); }

    TrackBlenderFloat mCurve;
};

} // namespace y3d
