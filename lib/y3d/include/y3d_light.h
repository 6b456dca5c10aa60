#pragma once

#include "y3d_scenenode.h"
#include "y3d_trackcolor4f.h"
#include "y3d_trackfloat.h"

namespace y3d
{

// A point light.
class Light : public SceneNode
{
public:
    Light();

    int getType() const override;
    void clear() override;
    void writeChunk(ChunkLib::WriteBuffer& buffer) override;
    void loadChunkItem(int id, ChunkLib::ReadBuffer& buffer) override;

    const TrackColor4f& getLightColor() const { return mLightColor; }
    const TrackFloat& getDistance() const { return mDistance; }
    const TrackFloat& getEnergy() const { return mEnergy; }

    bool mLightFlag;      // carried from file to file, read by nothing
    TrackFloat mDistance; // 1 divided by it is the linear attenuation
    TrackFloat mEnergy;
    TrackColor4f mLightColor; // white where the file does not say
};

} // namespace y3d
