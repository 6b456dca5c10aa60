#include "y3d_image.h"

#include "y3d_chunkguard.h"
#include "y3d_chunks.h"
#include "y3d_fields.h"

namespace y3d
{

Image::Image()
{
    clear();
}

Image::~Image()
{
    clear();
}

void Image::clear()
{
    mName.clear();
    mFileName.clear();
}

void Image::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const int id = buffer.openChunk())
    {
        ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_NAME:
            buffer.read(mName);
            break;
        case CHUNK_FILE_OR_BOUNDS:
            buffer.read(mFileName);
            break;
        default:
            report(buffer, "Unknown chunk with ID=0x%X\n", id);
            break;
        }
    }
}

void Image::writeChunk(ChunkLib::WriteBuffer& buffer) const
{
    buffer.openChunk(CHUNK_IMAGE);
    writeStringChunk(buffer, CHUNK_NAME, mName);
    writeStringChunk(buffer, CHUNK_FILE_OR_BOUNDS, mFileName);
    buffer.closeChunk();
}

} // namespace y3d
