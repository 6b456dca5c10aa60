#include "xml_nodepool.h"

#include "xml_node.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

// The address sanitizer watches each node by itself, so under it each has a heap block of its own.
#if defined(__SANITIZE_ADDRESS__)
#define XML_POOL 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define XML_POOL 0
#endif
#endif
#ifndef XML_POOL
#define XML_POOL 1
#endif

namespace Xml
{

#if XML_POOL

namespace
{

// In bytes; a block lies at a multiple of its size, so that a node's address tells its block.
const std::size_t BLOCK_SIZE = 1 << 15;

// At the head of a block, in the place of the first node.
struct Block
{
    std::size_t live; // nodes given out and not taken back
    std::size_t used; // bytes from the start of the block
};

const std::size_t FIRST_NODE = sizeof(XmlNode);
static_assert(sizeof(Block) <= FIRST_NODE && FIRST_NODE % alignof(std::max_align_t) == 0, "nodes keep their alignment");

Block* current = nullptr; // where the next node comes from; full ones are known by their nodes only

} // namespace

void* NodePool::take()
{
    if (!current || current->used + sizeof(XmlNode) > BLOCK_SIZE)
    {
        void* memory = std::aligned_alloc(BLOCK_SIZE, BLOCK_SIZE);
        if (!memory) throw std::bad_alloc();
        current = new (memory) Block{0, FIRST_NODE};
    }
    void* const node = reinterpret_cast<char*>(current) + current->used;
    current->used += sizeof(XmlNode);
    ++current->live;
    return node;
}

void NodePool::give(void* node)
{
    if (!node) return;
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(node);
    Block* const block = reinterpret_cast<Block*>(address - address % BLOCK_SIZE);
    if (--block->live > 0) return;
    if (block == current)
        block->used = FIRST_NODE;
    else
        std::free(block);
}

#else

void* NodePool::take()
{
    return ::operator new(sizeof(XmlNode));
}

void NodePool::give(void* node)
{
    ::operator delete(node);
}

#endif

} // namespace Xml
