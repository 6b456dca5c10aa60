#pragma once

#include "fe_bufferarb.h"

#include "mb_aabbpointsf.h"

namespace y3d
{
class Submesh;
}

namespace Fennel
{

// The triangles of a mesh that share a material, in GL buffers. A submesh begins as a pointer to its source data; the
// SubmeshManager makes the buffers, after which the source may go.
//
// Copying is for the time before there are buffers, when a vector of submeshes is sized: it shares nothing and counts
// nothing.
class Submesh
{
public:
    Submesh() = default;
    Submesh(const Submesh&) = default;
    Submesh& operator=(const Submesh&) = default;
    ~Submesh();

    // Draws. `previous` is the submesh drawn just before, or null: what it has bound already is not bound again. Only
    // the buffers are set here; matrices and material are the caller's.
    void render(const Submesh* previous) const;

    bool mInited = false;            // the GL buffers exist
    y3d::Submesh* mSource = nullptr; // until mInited, then null; not owned
    MathBase::AABBpointsf mBoundingBox;
    BufferARB* mIndexBuffer = nullptr; // one use is owned; null for a submesh drawn without indices
    unsigned int mNumIndices = 0;
    unsigned int mFirstIndex = 0;       // in the buffer
    BufferARB* mVertexBuffer = nullptr; // one use is owned
    unsigned int mFirstVertex = 0;      // in the buffer
    unsigned int mNumVertices = 0;      // in the buffer
};

} // namespace Fennel
