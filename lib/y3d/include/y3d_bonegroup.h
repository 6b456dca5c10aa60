#pragma once

#include <string>

#include "y3d_structlist.h"

namespace y3d
{

// A named list of weights in a submesh. The show has no skinning; the data is carried for tools.
class BoneGroup
{
public:
    BoneGroup();
    ~BoneGroup();

    // Empties the weights and leaves the name.
    void clear();

    // Reads the group's chunk, which the caller has opened; tells the name and unknown chunks on standard output.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends the group's chunk.
    void writeChunk(ChunkLib::WriteBuffer& buffer) const;

    std::string mName;
    StructList<BoneGroupWeight> mWeights;
};

} // namespace y3d
