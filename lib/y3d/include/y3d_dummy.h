#pragma once

#include "y3d_scenenode.h"

namespace y3d
{

// A node that is nothing but its transform. Unknown chunks are skipped without a word.
class Dummy : public SceneNode
{
public:
    Dummy();

    int getType() const override;
    void clear() override;
    void writeChunk(ChunkLib::WriteBuffer& buffer) override;
};

} // namespace y3d
