#include "y3d_fields.h"

#include "y3d_chunks.h"
#include "y3d_scenenode.h"
#include "y3d_value.h"

#include <cstdarg>
#include <cstdio>

namespace y3d
{

namespace
{

// What a file may bring about: so many bytes at once, and so many more for each of its own. The shortest chunk of a
// sound node, with a name and three tracks, has 77 bytes, that of a bone with a rotation 43.
const std::uint64_t FREE_OUTPUT = 1 << 16;
const std::uint64_t OUTPUT_PER_BYTE = 2;
const std::uint64_t FREE_MEMORY = 1 << 20; // more than one node on each level
const std::uint64_t MEMORY_PER_BYTE = 36;
const std::uint64_t NODE_OVERHEAD = 32; // of the heap, and of the list that holds the node

} // namespace

void loadBox(ChunkLib::ReadBuffer& buffer, MathBase::AABBpointsf* box)
{
    loadValue(buffer, &box->mMin);
    loadValue(buffer, &box->mMax);
}

void writeBoxChunk(ChunkLib::WriteBuffer& buffer, const MathBase::AABBpointsf& box)
{
    buffer.openChunk(CHUNK_FILE_OR_BOUNDS);
    writeValue(buffer, box.mMin);
    writeValue(buffer, box.mMax);
    buffer.closeChunk();
}

void report(ChunkLib::ReadBuffer& buffer, const char* format, ...)
{
    if (buffer.mSilent) return;

    std::va_list arguments;
    va_start(arguments, format);
    buffer.mOutput += std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    buffer.mSilent = buffer.mOutput > FREE_OUTPUT + OUTPUT_PER_BYTE * buffer.mOffset;
    if (buffer.mSilent)
    {
        std::printf("Too many lines for a file of this length; those that follow are left out\n");
        return;
    }
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
}

bool isLeftOut(ChunkLib::ReadBuffer& buffer, std::size_t size)
{
    const int id = buffer.mChunkStack.top().mID;
    if (buffer.mChunkStack.size() > SceneNode::MAX_LEVELS)
    {
        report(buffer, "SceneNode::loadChunk, Chunk 0x%X lies more than %u levels deep and is left out\n", id,
               SceneNode::MAX_LEVELS);
        return true;
    }
    if (buffer.mMemory + size > FREE_MEMORY + MEMORY_PER_BYTE * buffer.mOffset)
    {
        report(buffer, "SceneNode::loadChunk, Chunk 0x%X is left out, too many nodes before it are empty\n", id);
        return true;
    }
    buffer.mMemory += size + NODE_OVERHEAD;
    return false;
}

} // namespace y3d
