#pragma once

#include <string>
#include <vector>

#include "cl_readbuffer.h"
#include "y3d_trackquatf.h"
#include "y3d_trackvector3f.h"

namespace ChunkLib
{
class WriteBuffer;
} // namespace ChunkLib

namespace y3d
{

// A node of a scene tree: a transform local to its parent, animated by three tracks, and children. The kinds of nodes
// are told apart by getType, whose values are the identifiers of their chunks.
class SceneNode
{
public:
    // The chunks of nodes and bones lie at most this deep in a file, counted from the main chunk as 1; the two levels
    // more that can be read are for a node's tracks and their values. Loading leaves out what lies deeper, with a line
    // on standard output, and writing refuses it, so that neither runs out of stack. Loading also leaves out what comes
    // behind so many empty nodes that their memory is in no proportion to the file.
    static const unsigned int MAX_LEVELS = ChunkLib::ReadBuffer::MAX_LEVELS - 2;

    SceneNode();
    SceneNode(const SceneNode&) = delete;
    SceneNode& operator=(const SceneNode&) = delete;

    virtual int getType() const = 0;
    virtual ~SceneNode();

    // Destroys all children, empties the name and sets the tracks back: nothing animated, position and scale 0, no
    // rotation. The scale of 0 makes a node collapse whose file does not give one.
    virtual void clear();

    // Appends the node's chunk with everything below it. Throws y3d::Exception for a tree deeper than MAX_LEVELS.
    virtual void writeChunk(ChunkLib::WriteBuffer& buffer) = 0;

    // True when nothing in the node's own transform changes with time.
    virtual bool isStatic() const;

    // Called for each chunk that the base loader does not know, with that chunk open.
    virtual void loadChunkItem(int id, ChunkLib::ReadBuffer& buffer);

    // Reads the node's chunk, which the caller has opened, with everything below it.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends what all kinds have in common: name, tracks (a scene has none in a file), children.
    void writeCommonChunk(ChunkLib::WriteBuffer& buffer) const;

    // Appends a child and takes it over.
    void addChild(SceneNode* child);

    const std::string& getName() const { return mName; }
    const TrackVector3f& getPosition() const { return mPosition; }
    const TrackQuatf& getRotation() const { return mRotation; }
    const TrackVector3f& getScale() const { return mScale; }
    int getNumChildren() const { return static_cast<int>(mChildren.size()); }
    SceneNode* getChild(int index) const { return mChildren[index]; }

    TrackVector3f mPosition;
    TrackQuatf mRotation;
    TrackVector3f mScale;
    std::string mName;
    std::vector<SceneNode*> mChildren; // owned; file order
};

} // namespace y3d
