#pragma once

#include "y3d_scenenode.h"
#include "y3d_trackfloat.h"

namespace y3d
{

// A camera.
class Camera : public SceneNode
{
public:
    Camera();

    int getType() const override;
    void clear() override;
    void writeChunk(ChunkLib::WriteBuffer& buffer) override;
    void loadChunkItem(int id, ChunkLib::ReadBuffer& buffer) override;

    const TrackFloat& getFov() const { return mFov; }

    TrackFloat mFov; // the full angle of view in radians; a quarter turn where the file does not say
};

} // namespace y3d
