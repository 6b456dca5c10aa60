#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct ChunkWalk
{
    std::vector<std::string> lines;
    std::size_t numNodes = 0; // as countNodes has it, if the loader leaves none out
};

// Walks over the chunks of a file that has a main chunk, and tells in a line each what no reader comes to: unknown and
// misplaced chunks, chunks that are cut off or too deep, bytes that belong to none, data that is left over. Lines name
// the chunk, the object it lies in and the offset in the file. After a thousand of them a last one counts the others.
ChunkWalk walkChunks(const std::vector<unsigned char>& bytes);
