#include "ytd_utils.h"

#include "y3d_exception.h"
#include "y3d_submesh.h"

#include <cassert>
#include <climits>
#include <cstring>

namespace ytd
{

namespace
{

// By bit number. A block holds two of the three texture coordinates; bits 6 and 7 are counted and set by nothing.
const unsigned int ATTRIBUTE_SIZES[8] = {12, 12, 8, 8, 16, 16, 12, 12};

template <class T> bool hasEntries(const y3d::StructList<T>* list)
{
    return list && !list->empty();
}

// Copies the first `size` bytes of each vertex of one attribute to where it stands in the interleaved block.
void copyAttribute(unsigned char* dest, unsigned int stride, const y3d::StructList<MathBase::Vector3f>* list,
                   unsigned int size, const y3d::StructList<y3d::Index>* indices, std::size_t numVertices)
{
    const std::size_t available = list ? list->size() : 0;
    for (std::size_t i = 0; i < numVertices; ++i)
    {
        const std::size_t vertex = indices ? (*indices)[i] : i;
        if (vertex >= available)
        {
            throw y3d::Exception("ytd::Utils::compileVertexBuffer, There is no vertex %zu (the list has %zu)", vertex,
                                 available);
        }
        std::memcpy(dest, &(*list)[vertex], size);
        dest += stride;
    }
}

template <class T>
void storeIndices(unsigned char* dest, const y3d::StructList<y3d::Index>& indices, unsigned int offset)
{
    for (const y3d::Index index : indices)
    {
        const T value = static_cast<T>(index + offset);
        std::memcpy(dest, &value, sizeof value);
        dest += sizeof value;
    }
}

} // namespace

unsigned int Utils::getFormat(const y3d::Submesh* submesh)
{
    unsigned int format = 0;
    if (hasEntries(submesh->getPositions())) format |= FORMAT_POSITION;
    if (hasEntries(submesh->getNormals())) format |= FORMAT_NORMAL;
    if (submesh->getNumUVWs() > 0 && hasEntries(submesh->getUVW(0))) format |= FORMAT_UVW_0;
    if (submesh->getNumUVWs() > 1 && hasEntries(submesh->getUVW(1))) format |= FORMAT_UVW_1;
    if (submesh->getNumColors() > 0 && hasEntries(submesh->getColors(0))) format |= FORMAT_COLOR_0;
    if (submesh->getNumColors() > 1 && hasEntries(submesh->getColors(1))) format |= FORMAT_COLOR_1;
    return format;
}

unsigned int Utils::getFormatSize(unsigned int format)
{
    unsigned int size = 0;
    for (int bit = 0; bit < 8; ++bit)
    {
        if (format & (1u << bit)) size += ATTRIBUTE_SIZES[bit];
    }
    return size;
}

unsigned int Utils::getVertexBufferSize(y3d::Submesh* submesh, unsigned int format,
                                        const y3d::StructList<y3d::Index>* indices)
{
    const unsigned long long numVertices = indices ? indices->size() : submesh->getNumVertices();
    const unsigned long long size = getFormatSize(format) * numVertices;
    if (size > UINT_MAX)
    {
        throw y3d::Exception("ytd::Utils::getVertexBufferSize, The block is too large (%llu bytes, at most %u)", size,
                             UINT_MAX);
    }
    return static_cast<unsigned int>(size);
}

unsigned int Utils::getIndexBufferSize(y3d::Submesh* submesh, int bitsPerIndex)
{
    return static_cast<unsigned int>(static_cast<long long>(submesh->getNumIndices()) * bitsPerIndex / 8);
}

void Utils::compileVertexBuffer(unsigned char* dest, const y3d::Submesh* submesh, unsigned int format,
                                const y3d::StructList<y3d::Index>* indices, int offset)
{
    const unsigned int stride = getFormatSize(format);
    const std::size_t numVertices = indices ? indices->size() : submesh->getNumVertices();

    unsigned char* attribute = dest + offset;
    if (format & FORMAT_UVW_0)
    {
        const y3d::UVWList* uvw = submesh->getNumUVWs() > 0 ? submesh->getUVW(0) : nullptr;
        copyAttribute(attribute, stride, uvw, 8, indices, numVertices);
        attribute += 8;
    }
    if (format & FORMAT_NORMAL)
    {
        copyAttribute(attribute, stride, submesh->getNormals(), 12, indices, numVertices);
        attribute += 12;
    }
    if (format & FORMAT_POSITION) copyAttribute(attribute, stride, submesh->getPositions(), 12, indices, numVertices);
}

void Utils::compileIndexBuffer(unsigned char* dest, const y3d::Submesh* submesh, int bitsPerIndex, int offset,
                               int destOffset)
{
    assert(bitsPerIndex==8 || bitsPerIndex==16 || bitsPerIndex==32);
    assert(offset>=0);
    assert(dest);
    assert(submesh);

    if (!submesh->getIndices()) return;
    dest += destOffset;
    switch (bitsPerIndex)
    {
    case 8:
        storeIndices<std::uint8_t>(dest, *submesh->getIndices(), offset);
        break;
    case 16:
        storeIndices<std::uint16_t>(dest, *submesh->getIndices(), offset);
        break;
    default:
        storeIndices<std::uint32_t>(dest, *submesh->getIndices(), offset);
        break;
    }
}

void Utils::setFormat(y3d::Submesh*, unsigned int) {}

} // namespace ytd
