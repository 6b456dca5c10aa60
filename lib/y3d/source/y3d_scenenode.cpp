#include "y3d_scenenode.h"

#include "y3d_armature.h"
#include "y3d_camera.h"
#include "y3d_chunkguard.h"
#include "y3d_chunks.h"
#include "y3d_dummy.h"
#include "y3d_exception.h"
#include "y3d_fields.h"
#include "y3d_light.h"
#include "y3d_meshinstance.h"

namespace y3d
{

namespace
{

// Reads the open chunk into a new child. A child that fails with an exception of any type is destroyed and not added.
template <class Node> void loadChild(ChunkLib::ReadBuffer& buffer, SceneNode* parent)
{
    if (isLeftOut(buffer, sizeof(Node))) return;
    try
    {
        std::unique_ptr<SceneNode> child(new Node);
        child->loadChunk(buffer);
        parent->addChild(child.get());
        child.release();
    }
    catch (...)
    {
    }
}

} // namespace

SceneNode::SceneNode()
{
    SceneNode::clear();
}

SceneNode::~SceneNode()
{
    SceneNode::clear();
}

void SceneNode::clear()
{
    destroyTree(&mChildren);
    mName.clear();
    mPosition.clear();
    mRotation.clear();
    mScale.clear();
}

bool SceneNode::isStatic() const
{
    return mPosition.isStatic() && mRotation.isStatic() && mScale.isStatic();
}

void SceneNode::loadChunkItem(int, ChunkLib::ReadBuffer&) {}

void SceneNode::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const int id = buffer.openChunk())
    {
        ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_NAME:
            buffer.read(mName);
            break;
        case CHUNK_TRACK_POSITION:
            mPosition.loadChunk(buffer);
            break;
        case CHUNK_TRACK_ROTATION:
            mRotation.loadChunk(buffer);
            break;
        case CHUNK_TRACK_SCALE:
            mScale.loadChunk(buffer);
            break;
        case CHUNK_CAMERA:
            loadChild<Camera>(buffer, this);
            break;
        case CHUNK_MESHINSTANCE:
            loadChild<MeshInstance>(buffer, this);
            break;
        case CHUNK_DUMMY:
            loadChild<Dummy>(buffer, this);
            break;
        case CHUNK_LIGHT:
            loadChild<Light>(buffer, this);
            break;
        case CHUNK_ARMATURE:
            loadChild<Armature>(buffer, this);
            break;
        default:
            loadChunkItem(id, buffer);
            break;
        }
    }
}

void SceneNode::writeCommonChunk(ChunkLib::WriteBuffer& buffer) const
{
    if (buffer.mChunkStack.size() > MAX_LEVELS)
    {
        throw Exception("SceneNode::writeCommonChunk, The node '%s' lies more than %u levels deep", mName.c_str(),
                        MAX_LEVELS);
    }
    writeStringChunk(buffer, CHUNK_NAME, mName);
    if (getType() != CHUNK_SCENE)
    {
        mPosition.writeChunk(buffer, CHUNK_TRACK_POSITION);
        mRotation.writeChunk(buffer, CHUNK_TRACK_ROTATION);
        mScale.writeChunk(buffer, CHUNK_TRACK_SCALE);
    }
    for (SceneNode* child : mChildren) child->writeChunk(buffer);
}

void SceneNode::addChild(SceneNode* child)
{
    mChildren.push_back(child);
}

} // namespace y3d
