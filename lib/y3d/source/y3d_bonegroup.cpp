#include "y3d_bonegroup.h"

#include "y3d_chunkguard.h"
#include "y3d_chunks.h"
#include "y3d_fields.h"

namespace y3d
{

BoneGroup::BoneGroup() = default;

BoneGroup::~BoneGroup() = default;

void BoneGroup::clear()
{
    mWeights.clear();
}

void BoneGroup::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const int id = buffer.openChunk())
    {
        ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_BONEGROUP_WEIGHTS:
            mWeights.loadElements(buffer);
            break;
        case CHUNK_NAME:
            buffer.read(mName);
            report(buffer, "    bonegroup::%s\n", mName.c_str());
            break;
        default:
            report(buffer, "Unknown chunk with ID=0x%X\n", id);
            break;
        }
    }
}

void BoneGroup::writeChunk(ChunkLib::WriteBuffer& buffer) const
{
    buffer.openChunk(CHUNK_BONEGROUP);
    writeStringChunk(buffer, CHUNK_NAME, mName);
    mWeights.writeChunk(buffer, CHUNK_BONEGROUP_WEIGHTS);
    buffer.closeChunk();
}

} // namespace y3d
