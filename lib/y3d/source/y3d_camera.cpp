#include "y3d_camera.h"

#include "cl_writebuffer.h"
#include "y3d_chunks.h"
#include "y3d_fields.h"

namespace y3d
{

Camera::Camera()
{
    Camera::clear();
}

int Camera::getType() const
{
    return CHUNK_CAMERA;
}

void Camera::clear()
{
    SceneNode::clear();
    mFov.clear();
    mFov.mCurve.mBaseValue = 1.5707964f; // the float nearest to pi/2
}

void Camera::writeChunk(ChunkLib::WriteBuffer& buffer)
{
    buffer.openChunk(CHUNK_CAMERA);
    mFov.writeChunk(buffer, CHUNK_TRACK_FOV);
    writeCommonChunk(buffer);
    buffer.closeChunk();
}

void Camera::loadChunkItem(int id, ChunkLib::ReadBuffer& buffer)
{
    switch (id)
    {
    case CHUNK_TRACK_FOV:
        mFov.loadChunk(buffer);
        break;
    default:
        report(buffer, "camera::loadchunkitem::unknown 0x%X\n", id);
        break;
    }
}

} // namespace y3d
