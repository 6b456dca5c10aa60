// How fast a chunk stream is walked and written, beside a plain copy of the same bytes.

#include <benchmark/benchmark.h>

#include <cstring>

#include "cl_readbuffer.h"
#include "cl_writebuffer.h"

using namespace ChunkLib;

namespace
{

const int64_t STREAM_SIZE = 16 << 20;

// A stream of about 16 MB in chunks with payloads of `payloadSize` bytes.
WriteBuffer makeStream(int64_t payloadSize)
{
    const std::vector<uint8> payload(static_cast<std::size_t>(payloadSize), 1);
    WriteBuffer buffer("TEST", 1, 2, IMPLICIT_LENGTHS);
    for (int64_t size = 0; size < STREAM_SIZE; size += payloadSize)
    {
        buffer.openChunk(0x10);
        buffer.writeBytes(payload.data(), static_cast<unsigned int>(payloadSize));
        buffer.closeChunk();
    }
    return buffer;
}

void copyBytes(benchmark::State& state)
{
    const std::vector<uint8> stream = makeStream(state.range(0)).getData();
    std::vector<uint8> target(stream.size());
    for (auto _ : state)
    {
        std::memcpy(target.data(), stream.data(), stream.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(stream.size()));
}

void readChunks(benchmark::State& state)
{
    const std::vector<uint8> stream = makeStream(state.range(0)).getData();
    std::vector<uint8> target(stream.size());
    for (auto _ : state)
    {
        ReadBuffer buffer(stream.data(), static_cast<unsigned int>(stream.size()), IMPLICIT_LENGTHS);
        std::size_t offset = 0;
        while (buffer.openChunk())
        {
            const uint32 length = buffer.getLength();
            buffer.readBytes(target.data() + offset, length);
            offset += length;
            buffer.closeChunk();
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(stream.size()));
}

void skipChunks(benchmark::State& state)
{
    const std::vector<uint8> stream = makeStream(state.range(0)).getData();
    int64_t count = 0;
    for (auto _ : state)
    {
        ReadBuffer buffer(stream.data(), static_cast<unsigned int>(stream.size()), IMPLICIT_LENGTHS);
        for (; buffer.openChunk(); ++count) buffer.closeChunk();
    }
    state.SetItemsProcessed(count);
}

void writeChunks(benchmark::State& state)
{
    int64_t bytes = 0;
    for (auto _ : state) bytes += static_cast<int64_t>(makeStream(state.range(0)).getData().size());
    state.SetBytesProcessed(bytes);
}

} // namespace

BENCHMARK(copyBytes)->Arg(16)->Arg(1024)->Arg(1 << 20)->Unit(benchmark::kMillisecond);
BENCHMARK(readChunks)->Arg(16)->Arg(1024)->Arg(1 << 20)->Unit(benchmark::kMillisecond);
BENCHMARK(skipChunks)->Arg(16)->Arg(1024)->Unit(benchmark::kMillisecond);
BENCHMARK(writeChunks)->Arg(16)->Arg(1 << 20)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
