#pragma once

#include "y3d_color4f.h"
#include "y3d_trackblenderfloat.h"

namespace y3d
{

// An animated colour: that of a light.
class TrackColor4f
{
public:
    // Removes the keys and sets the base values to 0.
    void clear();

    // Reads the track's chunk, which the caller has opened. Chunks of no track are passed over.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends one chunk with the given identifier: the curves that have keys, and the base values.
    void writeChunk(ChunkLib::WriteBuffer& buffer, unsigned short id) const;

    Color4f getValue(float time) const;

    TrackBlenderFloat mR;
    TrackBlenderFloat mG;
    TrackBlenderFloat mB;
    TrackBlenderFloat mA;
};

} // namespace y3d
