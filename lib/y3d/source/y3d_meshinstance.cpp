#include "y3d_meshinstance.h"

#include "y3d_chunks.h"
#include "y3d_fields.h"

namespace y3d
{

MeshInstance::MeshInstance()
{
    MeshInstance::clear();
}

int MeshInstance::getType() const
{
    return CHUNK_MESHINSTANCE;
}

void MeshInstance::clear()
{
    SceneNode::clear();
    mMaterialReferences.clear();
    mMeshName.clear();
}

void MeshInstance::writeChunk(ChunkLib::WriteBuffer& buffer)
{
    buffer.openChunk(CHUNK_MESHINSTANCE);
    writeStringChunk(buffer, CHUNK_MESH_NAME, mMeshName);
    for (const auto& reference : mMaterialReferences)
    {
        buffer.openChunk(CHUNK_MATERIAL_REFERENCE);
        buffer.write(reference.first);
        buffer.write(reference.second);
        buffer.closeChunk();
    }
    writeCommonChunk(buffer);
    buffer.closeChunk();
}

void MeshInstance::loadChunkItem(int id, ChunkLib::ReadBuffer& buffer)
{
    switch (id)
    {
    case CHUNK_MESH_NAME:
        buffer.read(mMeshName);
        break;
    case CHUNK_MATERIAL_REFERENCE: {
        int key;
        if (!buffer.read(key)) break; // too short for its key: there is no submesh that it could mean
        std::string name;
        buffer.read(name);
        mMaterialReferences[key] = name;
        break;
    }
    default:
        report(buffer, "meshinstance::loadchunkitem::unknown 0x%X\n", id);
        break;
    }
}

const std::string& MeshInstance::getMaterialReference(int index) const
{
    static const std::string none;
    const auto reference = mMaterialReferences.find(index);
    return reference == mMaterialReferences.end() ? none : reference->second;
}

} // namespace y3d
