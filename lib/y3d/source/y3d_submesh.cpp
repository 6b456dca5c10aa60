#include "y3d_submesh.h"

#include "y3d_bonegroup.h"
#include "y3d_chunkguard.h"
#include "y3d_chunks.h"
#include "y3d_fields.h"

#include <cassert>

namespace y3d
{

namespace
{

// Puts a new list in the place of the old one and fills it from the open chunk. When that fails with an exception of
// any type the place is left empty.
template <class T> void loadList(ChunkLib::ReadBuffer& buffer, StructList<T>** place)
{
    delete *place;
    *place = nullptr;
    try
    {
        std::unique_ptr<StructList<T>> list(new StructList<T>);
        list->loadElements(buffer);
        *place = list.release();
    }
    catch (...)
    {
    }
}

// The same for one more channel.
template <class T> void loadChannel(ChunkLib::ReadBuffer& buffer, std::vector<StructList<T>*>* channels)
{
    StructList<T>* list = nullptr;
    loadList(buffer, &list);
    std::unique_ptr<StructList<T>> owner(list);
    if (!list) return;
    try
    {
        channels->push_back(list);
        owner.release();
    }
    catch (...)
    {
    }
}

template <class T> void replaceList(StructList<T>** place, StructList<T>* list)
{
    if (*place == list) return;
    delete *place;
    *place = list;
}

} // namespace

Submesh::Submesh() : mIndices(nullptr), mPositions(nullptr), mNormals(nullptr)
{
    clear();
}

Submesh::~Submesh()
{
    clear();
}

void Submesh::clear()
{
    replaceList<Index>(&mIndices, nullptr);
    replaceList<MathBase::Vector3f>(&mPositions, nullptr);
    replaceList<MathBase::Vector3f>(&mNormals, nullptr);
    destroyOwned(&mUVWs);
    destroyOwned(&mColors);
    destroyOwned(&mBoneGroups);
    mHasBoundingBox = false;
}

void Submesh::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const int id = buffer.openChunk())
    {
        ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_MATERIAL_NAME:
            buffer.read(mMaterialName);
            break;
        case CHUNK_FILE_OR_BOUNDS:
            mHasBoundingBox = true;
            loadBox(buffer, &mBoundingBox);
            break;
        case CHUNK_INDICES:
            loadList(buffer, &mIndices);
            break;
        case CHUNK_POSITIONS:
            loadList(buffer, &mPositions);
            break;
        case CHUNK_NORMALS:
            loadList(buffer, &mNormals);
            break;
        case CHUNK_UVWS:
            loadChannel(buffer, &mUVWs);
            break;
        case CHUNK_COLORS:
            loadChannel(buffer, &mColors);
            break;
        case CHUNK_BONEGROUP:
            loadOwned(buffer, &mBoneGroups);
            break;
        default:
            report(buffer, "Unknown chunk with ID=0x%X\n", id);
            break;
        }
    }
}

void Submesh::writeChunk(ChunkLib::WriteBuffer& buffer) const
{
    buffer.openChunk(CHUNK_SUBMESH);
    writeStringChunk(buffer, CHUNK_MATERIAL_NAME, mMaterialName);
    if (mHasBoundingBox) writeBoxChunk(buffer, mBoundingBox);
    if (mIndices) mIndices->writeChunk(buffer, CHUNK_INDICES);
    if (mPositions) mPositions->writeChunk(buffer, CHUNK_POSITIONS);
    if (mNormals) mNormals->writeChunk(buffer, CHUNK_NORMALS);
    for (const UVWList* uvw : mUVWs) uvw->writeChunk(buffer, CHUNK_UVWS);
    for (const BoneGroup* group : mBoneGroups) group->writeChunk(buffer);
    for (const StructList<Color4f>* colors : mColors) colors->writeChunk(buffer, CHUNK_COLORS);
    buffer.closeChunk();
}

void Submesh::setPositions(StructList<MathBase::Vector3f>* positions)
{
    replaceList(&mPositions, positions);
}

void Submesh::setNormals(StructList<MathBase::Vector3f>* normals)
{
    replaceList(&mNormals, normals);
}

void Submesh::setUVW(int channel, UVWList* uvw)
{
    assert(channel<(int)mUVWs.size());
    replaceList(&mUVWs[channel], uvw);
}

} // namespace y3d
