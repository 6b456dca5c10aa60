#include "heap_counter.h"

#include <cstdlib>
#include <new>

long heapAllocations = 0;

// All forms that may meet one another's blocks, the nothrow one too: the containers' temporary buffers use it.

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    ++heapAllocations;
    return std::malloc(size ? size : 1);
}

void* operator new(std::size_t size)
{
    if (void* block = operator new(size, std::nothrow)) return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept
{
    std::free(block);
}
