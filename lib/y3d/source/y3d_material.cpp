#include "y3d_material.h"

#include "y3d_chunkguard.h"
#include "y3d_chunks.h"
#include "y3d_fields.h"
#include "y3d_texture.h"
#include "y3d_value.h"

namespace y3d
{

Material::Attribute::~Attribute()
{
    destroyOwned(&mTextures);
}

void Material::Attribute::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const int id = buffer.openChunk())
    {
        ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_NAME:
            buffer.read(mName);
            break;
        case CHUNK_VALUE_VECTOR4:
            loadValue(buffer, &mColor);
            break;
        case CHUNK_TEXTURE:
            loadOwned(buffer, &mTextures);
            break;
        default:
            report(buffer, "Unknown chunk with ID=0x%X\n", id);
            break;
        }
    }
}

void Material::Attribute::writeChunk(ChunkLib::WriteBuffer& buffer) const
{
    buffer.openChunk(CHUNK_MATERIAL_ATTRIBUTE);
    writeStringChunk(buffer, CHUNK_NAME, mName);
    buffer.openChunk(CHUNK_VALUE_VECTOR4);
    writeValue(buffer, mColor);
    buffer.closeChunk();
    for (const Texture* texture : mTextures) texture->writeChunk(buffer);
    buffer.closeChunk();
}

Material::Material()
{
    clear();
}

Material::~Material()
{
    clear();
}

void Material::clear()
{
    mName.clear();
    mShadeless = false;
    mDefaultOnFlag = true;
    destroyOwned(&mAttributes);
}

void Material::loadChunk(ChunkLib::ReadBuffer& buffer)
{
    while (const int id = buffer.openChunk())
    {
        ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_NAME:
            buffer.read(mName);
            break;
        case CHUNK_MATERIAL_SHADELESS:
            loadBool(buffer, &mShadeless);
            break;
        case CHUNK_MATERIAL_FLAG:
            loadBool(buffer, &mDefaultOnFlag);
            break;
        case CHUNK_MATERIAL_ATTRIBUTE:
            loadOwned(buffer, &mAttributes);
            break;
        default:
            report(buffer, "Unknown chunk with ID=0x%X\n", id);
            break;
        }
    }
}

void Material::writeChunk(ChunkLib::WriteBuffer& buffer) const
{
    buffer.openChunk(CHUNK_MATERIAL);
    writeStringChunk(buffer, CHUNK_NAME, mName);
    writeByteChunk(buffer, CHUNK_MATERIAL_SHADELESS, mShadeless ? 1 : 0);
    writeByteChunk(buffer, CHUNK_MATERIAL_FLAG, mDefaultOnFlag ? 1 : 0);
    for (const Attribute* attribute : mAttributes) attribute->writeChunk(buffer);
    buffer.closeChunk();
}

} // namespace y3d
