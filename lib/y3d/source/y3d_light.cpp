#include "y3d_light.h"

#include "y3d_chunks.h"
#include "y3d_fields.h"

namespace y3d
{

Light::Light()
{
    Light::clear();
}

int Light::getType() const
{
    return CHUNK_LIGHT;
}

void Light::clear()
{
    SceneNode::clear();
    mLightFlag = false;
    mDistance.clear();
    mEnergy.clear();
    mLightColor.clear();
    mLightColor.mR.mBaseValue = 1.0f;
    mLightColor.mG.mBaseValue = 1.0f;
    mLightColor.mB.mBaseValue = 1.0f;
    mLightColor.mA.mBaseValue = 1.0f;
}

void Light::writeChunk(ChunkLib::WriteBuffer& buffer)
{
    buffer.openChunk(CHUNK_LIGHT);
    mLightColor.writeChunk(buffer, CHUNK_TRACK_COLOR);
    mEnergy.writeChunk(buffer, CHUNK_LIGHT_ENERGY);
    mDistance.writeChunk(buffer, CHUNK_LIGHT_DISTANCE);
    writeByteChunk(buffer, CHUNK_LIGHT_FLAG, mLightFlag ? 1 : 0);
    writeCommonChunk(buffer);
    buffer.closeChunk();
}

void Light::loadChunkItem(int id, ChunkLib::ReadBuffer& buffer)
{
    switch (id)
    {
    case CHUNK_TRACK_COLOR:
        mLightColor.loadChunk(buffer);
        break;
    case CHUNK_LIGHT_DISTANCE:
        mDistance.loadChunk(buffer);
        break;
    case CHUNK_LIGHT_ENERGY:
        mEnergy.loadChunk(buffer);
        break;
    case CHUNK_LIGHT_FLAG:
        loadBool(buffer, &mLightFlag);
        break;
    default:
        report(buffer, "light::loadchunkitem::unknown 0x%X\n", id);
        break;
    }
}

} // namespace y3d
