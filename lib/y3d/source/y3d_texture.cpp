#include "y3d_texture.h"

#include "y3d_chunkguard.h"
#include "y3d_chunks.h"
#include "y3d_fields.h"

namespace y3d
{

Texture::Texture()
{
    clear();
}

Texture::~Texture()
{
    clear();
}

void Texture::clear()
{
    mName.clear();
    mImageName.clear();
    mValue = 0;
}

void Texture::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const int id = buffer.openChunk())
    {
        ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_NAME:
            buffer.read(mName);
            break;
        case CHUNK_IMAGE_NAME:
            buffer.read(mImageName);
            break;
        case CHUNK_TEXTURE_VALUE:
            buffer.read(mValue);
            break;
        default:
            report(buffer, "Unknown chunk with ID=0x%X\n", id);
            break;
        }
    }
}

void Texture::writeChunk(ChunkLib::WriteBuffer& buffer) const
{
    buffer.openChunk(CHUNK_TEXTURE);
    writeStringChunk(buffer, CHUNK_NAME, mName);
    writeStringChunk(buffer, CHUNK_IMAGE_NAME, mImageName);
    writeByteChunk(buffer, CHUNK_TEXTURE_VALUE, mValue);
    buffer.closeChunk();
}

} // namespace y3d
