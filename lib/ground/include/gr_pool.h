#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

// The address sanitizer watches each object by itself, so under it each has a heap block of its own.
#if defined(__SANITIZE_ADDRESS__)
#define GR_POOL 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define GR_POOL 0
#endif
#endif
#ifndef GR_POOL
#define GR_POOL 1
#endif

// Memory for objects of one class that come by the thousand, for its operator new and operator delete. A file is read
// in one go and mostly let go of in one go: objects are cut off a block one behind the other, and a block returns to
// the heap when its last object is gone. That saves half of the heap's work or more.
template <class Object> class Pool
{
public:
    // `size` bytes; another size than the object's, as of a derived class, comes from the heap. Throws std::bad_alloc.
    static void* take(std::size_t size)
    {
        if (!GR_POOL || size != sizeof(Object)) return ::operator new(size);
        if (!sCurrent || sCurrent->used + sizeof(Object) > BLOCK_SIZE)
        {
            void* const memory = std::aligned_alloc(BLOCK_SIZE, BLOCK_SIZE);
            if (!memory) throw std::bad_alloc();
            sCurrent = new (memory) Block{0, firstObject()};
        }
        void* const object = reinterpret_cast<char*>(sCurrent) + sCurrent->used;
        sCurrent->used += sizeof(Object);
        ++sCurrent->live;
        return object;
    }

    // Takes back what take() gave for that size; null is allowed.
    static void give(void* object, std::size_t size)
    {
        if (!GR_POOL || size != sizeof(Object)) return ::operator delete(object);
        if (!object) return;
        const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(object);
        Block* const block = reinterpret_cast<Block*>(address - address % BLOCK_SIZE);
        if (--block->live > 0) return;
        if (block == sCurrent)
            block->used = firstObject();
        else
            std::free(block);
    }

private:
    // In bytes; a block lies at a multiple of its size, so that an object's address tells its block.
    static const std::size_t BLOCK_SIZE = 1 << 15;

    // At the head of a block.
    struct Block
    {
        std::size_t live; // objects given out and not taken back
        std::size_t used; // bytes from the start of the block
    };

    // In bytes from the start of a block: behind its head, at a multiple of the object's size.
    static constexpr std::size_t firstObject()
    {
        static_assert(sizeof(Object) <= BLOCK_SIZE / 16, "a block holds many objects");
        static_assert(alignof(Object) <= alignof(std::max_align_t), "a block is aligned for any object");
        return (sizeof(Block) + sizeof(Object) - 1) / sizeof(Object) * sizeof(Object);
    }

    static inline Block* sCurrent = nullptr; // where the next object comes from; full ones are known by their objects
};
