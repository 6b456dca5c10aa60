// Loads any bytes as a scene file. What is taken in can be written, and what was written is read and written again at
// the same length: nothing in it is skipped.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "y3d_exception.h"
#include "y3d_manager.h"

namespace
{

// The length of the file that is written for what the bytes hold.
int rewrite(const std::uint8_t* data, int size, std::unique_ptr<std::uint8_t[]>* written)
{
    y3d::Manager manager;
    manager.load(data, size);
    std::uint8_t* block;
    int blockSize;
    manager.write(&block, &blockSize);
    written->reset(block);
    return blockSize;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::unique_ptr<std::uint8_t[]> first, second;
    int firstSize;
    try
    {
        firstSize = rewrite(data, static_cast<int>(size), &first);
    }
    catch (const y3d::Exception&)
    {
        return 0; // no scene file
    }

    const int headerSize = 6; // a manager without objects leaves nothing behind it, not even the main chunk
    if (firstSize > headerSize && rewrite(first.get(), firstSize, &second) != firstSize) std::abort();
    return 0;
}
