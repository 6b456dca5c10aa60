#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mb_aabbpointsf.h"

namespace ChunkLib
{
class ReadBuffer;
class WriteBuffer;
} // namespace ChunkLib

namespace y3d
{

class Submesh;

// A named piece of geometry, cut into one submesh for each material.
class Mesh
{
public:
    Mesh();
    ~Mesh();
    Mesh(const Mesh&) = delete;
    Mesh& operator=(const Mesh&) = delete;

    // Destroys the submeshes, empties the name, forgets the box and sets the flags to 0.
    void clear();

    // Reads the mesh's chunk, which the caller has opened. Unknown chunks give a line on standard output.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends the mesh's chunk.
    void writeChunk(ChunkLib::WriteBuffer& buffer) const;

    const std::string& getName() const { return mName; }
    bool hasBoundingBox() const { return mHasBoundingBox; }
    const MathBase::AABBpointsf& getBoundingBox() const { return mBoundingBox; }
    int getNumSubmeshes() const { return static_cast<int>(mSubmeshes.size()); }
    Submesh* getSubmesh(int index) const { return mSubmeshes[index]; }

    std::int32_t mMeshFlags; // only the low byte is in a file; read by nothing
    bool mHasBoundingBox;
    MathBase::AABBpointsf mBoundingBox; // valid only with mHasBoundingBox
    std::string mName;                  // what mesh instances call it
    std::vector<Submesh*> mSubmeshes;   // owned; file order
};

} // namespace y3d
