#pragma once

#include "cl_readbuffer.h"

namespace y3d
{

// Closes the chunk that was opened last at the end of the scope, also when an exception passes: however deep it came
// from, the loop of the parent goes on behind the chunk that failed.
class ChunkGuard
{
public:
    explicit ChunkGuard(ChunkLib::ReadBuffer& buffer) : mBuffer(buffer) {}
    ~ChunkGuard() { mBuffer.closeChunk(); }
    ChunkGuard(const ChunkGuard&) = delete;
    ChunkGuard& operator=(const ChunkGuard&) = delete;

private:
    ChunkLib::ReadBuffer& mBuffer;
};

} // namespace y3d
