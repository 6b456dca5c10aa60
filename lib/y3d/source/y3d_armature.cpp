#include "y3d_armature.h"

#include "y3d_chunkguard.h"
#include "y3d_chunks.h"
#include "y3d_fields.h"

namespace y3d
{

Armature::Bone::~Bone()
{
    destroyTree(&mChildren);
}

void Armature::Bone::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const int id = buffer.openChunk())
    {
        ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_BONE:
            if (!isLeftOut(buffer, sizeof(Bone))) loadOwned(buffer, &mChildren);
            break;
        case CHUNK_NAME:
            buffer.read(mName);
            break;
        case CHUNK_TRACK_ROTATION:
            report(buffer, "  got rotation for bone\n");
            mRotation.loadChunk(buffer);
            break;
        default:
            break;
        }
    }
}

Armature::Armature()
{
    Armature::clear();
}

int Armature::getType() const
{
    return CHUNK_ARMATURE;
}

void Armature::clear()
{
    SceneNode::clear();
}

void Armature::writeChunk(ChunkLib::WriteBuffer&) {}

void Armature::loadChunkItem(int id, ChunkLib::ReadBuffer& buffer)
{
    switch (id)
    {
    case CHUNK_BONE:
        report(buffer, "  rootbone\n");
        mBoneRoot.loadChunk(buffer);
        break;
    default:
        report(buffer, "armature::loadchunkitem::unknown 0x%X\n", id);
        break;
    }
}

} // namespace y3d
