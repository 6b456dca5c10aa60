#pragma once

#include "y3d_scenenode.h"

namespace y3d
{

// The root of a node tree. Its own transform is not in a file.
class Scene : public SceneNode
{
public:
    Scene();

    int getType() const override;
    void clear() override;
    void writeChunk(ChunkLib::WriteBuffer& buffer) override;
    void loadChunkItem(int id, ChunkLib::ReadBuffer& buffer) override;
};

} // namespace y3d
