#include "y3d_mesh.h"

#include "y3d_chunkguard.h"
#include "y3d_chunks.h"
#include "y3d_fields.h"
#include "y3d_submesh.h"

namespace y3d
{

Mesh::Mesh()
{
    clear();
}

Mesh::~Mesh()
{
    clear();
}

void Mesh::clear()
{
    destroyOwned(&mSubmeshes);
    mName.clear();
    mMeshFlags = 0;
    mHasBoundingBox = false;
}

void Mesh::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const int id = buffer.openChunk())
    {
        ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_NAME:
            buffer.read(mName);
            break;
        case CHUNK_MESH_FLAGS: {
            unsigned char flags;
            if (buffer.read(flags)) mMeshFlags = flags;
            break;
        }
        case CHUNK_FILE_OR_BOUNDS:
            mHasBoundingBox = true;
            loadBox(buffer, &mBoundingBox);
            break;
        case CHUNK_SUBMESH:
            loadOwned(buffer, &mSubmeshes);
            break;
        default:
            report(buffer, "mesh::Unknown chunk with ID=0x%X\n", id);
            break;
        }
    }
}

void Mesh::writeChunk(ChunkLib::WriteBuffer& buffer) const
{
    buffer.openChunk(CHUNK_MESH);
    writeStringChunk(buffer, CHUNK_NAME, mName);
    if (mMeshFlags != 0) writeByteChunk(buffer, CHUNK_MESH_FLAGS, static_cast<unsigned char>(mMeshFlags & 0xFF));
    if (mHasBoundingBox) writeBoxChunk(buffer, mBoundingBox);
    for (const Submesh* submesh : mSubmeshes) submesh->writeChunk(buffer);
    buffer.closeChunk();
}

} // namespace y3d
