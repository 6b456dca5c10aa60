#pragma once

#include <map>
#include <string>

#include "y3d_scenenode.h"

namespace y3d
{

// A mesh placed in a scene, by name, with other materials than its own where wanted.
class MeshInstance : public SceneNode
{
public:
    MeshInstance();

    int getType() const override;
    void clear() override;
    void writeChunk(ChunkLib::WriteBuffer& buffer) override;
    void loadChunkItem(int id, ChunkLib::ReadBuffer& buffer) override;

    const std::string& getMeshName() const { return mMeshName; }

    // The name of the material that replaces the one of submesh `index`; empty when the submesh keeps its own.
    const std::string& getMaterialReference(int index) const;

    std::string mMeshName;                          // name of a mesh of the same file; may name none
    std::map<int, std::string> mMaterialReferences; // by submesh index
};

} // namespace y3d
