#pragma once

#include <string>
#include <vector>

#include "mb_aabbpointsf.h"
#include "y3d_structlist.h"

namespace y3d
{

class BoneGroup;

// The triangles of a mesh that share a material: one list for each kind of vertex data, and the indices into them.
// Drawable data has as many normals and as many entries in each UVW list as positions, and indices below that number;
// reading checks neither.
class Submesh
{
public:
    Submesh();
    ~Submesh();
    Submesh(const Submesh&) = delete;
    Submesh& operator=(const Submesh&) = delete;

    // Destroys all lists, channels and bone groups and forgets the box. The material name stays.
    void clear();

    // Reads the submesh's chunk, which the caller has opened. A list that comes again replaces the one before, channels
    // are appended. Unknown chunks give a line on standard output.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends the submesh's chunk.
    void writeChunk(ChunkLib::WriteBuffer& buffer) const;

    bool hasBoundingBox() const { return mHasBoundingBox; }
    const MathBase::AABBpointsf& getBoundingBox() const { return mBoundingBox; }
    const std::string& getMaterialName() const { return mMaterialName; }
    int getNumIndices() const { return mIndices ? static_cast<int>(mIndices->size()) : 0; }
    int getNumVertices() const { return mPositions ? static_cast<int>(mPositions->size()) : 0; }
    StructList<Index>* getIndices() const { return mIndices; }                  // may be null
    StructList<MathBase::Vector3f>* getPositions() const { return mPositions; } // may be null
    StructList<MathBase::Vector3f>* getNormals() const { return mNormals; }     // may be null
    int getNumUVWs() const { return static_cast<int>(mUVWs.size()); }           // texture channels
    UVWList* getUVW(int channel) const { return mUVWs[channel]; }
    int getNumColors() const { return static_cast<int>(mColors.size()); } // colour channels
    StructList<Color4f>* getColors(int channel) const { return mColors[channel]; }

    // Each takes the list over and destroys the one before; the list that is in place already may be passed. setUVW
    // replaces a channel that exists: another channel number is a fault of the caller.
    void setPositions(StructList<MathBase::Vector3f>* positions);
    void setNormals(StructList<MathBase::Vector3f>* normals);
    void setUVW(int channel, UVWList* uvw);

    bool mHasBoundingBox;
    MathBase::AABBpointsf mBoundingBox;         // valid only with mHasBoundingBox
    std::string mMaterialName;                  // a mesh instance may put another one in its place
    StructList<Index>* mIndices;                // owned, may be null
    StructList<MathBase::Vector3f>* mPositions; // owned, may be null
    StructList<MathBase::Vector3f>* mNormals;   // owned, may be null
    std::vector<UVWList*> mUVWs;                // owned; one for each texture channel, file order
    std::vector<StructList<Color4f>*> mColors;  // owned; one for each colour channel, file order
    std::vector<BoneGroup*> mBoneGroups;        // owned; file order
};

} // namespace y3d
