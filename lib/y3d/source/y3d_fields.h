#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cl_readbuffer.h"
#include "cl_writebuffer.h"
#include "mb_aabbpointsf.h"

// Fields that several kinds of objects keep in a chunk of their own, and the lists of owned objects.

namespace y3d
{

// A terminated string; also when it is empty, as its terminator.
inline void writeStringChunk(ChunkLib::WriteBuffer& buffer, unsigned short id, const std::string& text)
{
    buffer.openChunk(id);
    buffer.write(text);
    buffer.closeChunk();
}

inline void writeByteChunk(ChunkLib::WriteBuffer& buffer, unsigned short id, unsigned char value)
{
    buffer.openChunk(id);
    buffer.write(value);
    buffer.closeChunk();
}

// One byte as a boolean: 1 is true, any other value false. Without a byte the target stays as it was.
inline void loadBool(ChunkLib::ReadBuffer& buffer, bool* value)
{
    unsigned char byte;
    if (buffer.read(byte)) *value = byte == 1;
}

// Six floats, minimum corner first.
void loadBox(ChunkLib::ReadBuffer& buffer, MathBase::AABBpointsf* box);
void writeBoxChunk(ChunkLib::WriteBuffer& buffer, const MathBase::AABBpointsf& box);

// Makes an object, lets it read the open chunk and appends it to the list that will own it. An object that fails with
// an exception of any type is destroyed and not appended, and the load goes on.
template <class T> void loadOwned(ChunkLib::ReadBuffer& buffer, std::vector<T*>* list)
{
    try
    {
        std::unique_ptr<T> object(new T);
        object->loadChunk(buffer);
        list->push_back(object.get());
        object.release();
    }
    catch (...)
    {
    }
}

// Prints a line on what is read, on standard output. A file that prints far more than it is long, as no sound one does,
// falls silent with a last line that says so.
void report(ChunkLib::ReadBuffer& buffer, const char* format, ...) __attribute__((format(printf, 2, 3)));

// For the open chunk of a node or bone, which takes `size` bytes of memory: true, with a line on standard output, when
// it is to be left out with everything below it. That is so where it lies too deep, and where the nodes of the file
// take far more memory than the file is long, which those with a name and tracks never do.
bool isLeftOut(ChunkLib::ReadBuffer& buffer, std::size_t size);

template <class T> void destroyOwned(std::vector<T*>* list)
{
    for (T* object : *list) delete object;
    list->clear();
}

// The same for nodes with a list mChildren of their own kind, however deep: each gives up its children before it goes.
template <class T> void destroyTree(std::vector<T*>* nodes)
{
    while (!nodes->empty())
    {
        T* node = nodes->back();
        nodes->pop_back();
        nodes->insert(nodes->end(), node->mChildren.begin(), node->mChildren.end());
        node->mChildren.clear();
        delete node;
    }
}

} // namespace y3d
