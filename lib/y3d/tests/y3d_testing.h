#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "y3d_chunks.h"
#include "y3d_manager.h"

// Files for the tests are put together from strings of bytes, by nothing that the library has a part in.

inline std::string bytesOf(const void* data, std::size_t size)
{
    return std::string(static_cast<const char*>(data), size);
}

inline std::string integer(std::uint32_t value)
{
    return bytesOf(&value, sizeof value);
}

inline std::string floats(const std::vector<float>& values)
{
    return bytesOf(values.data(), values.size() * sizeof(float));
}

inline std::string text(const std::string& characters)
{
    return characters + '\0';
}

inline std::string chunk(unsigned int id, const std::string& payload)
{
    const bool hasLength = (id & 15) == 0 || (id & 15) > 7;
    return bytesOf(&id, 2) + (hasLength ? integer(static_cast<std::uint32_t>(payload.size())) : "") + payload;
}

inline std::string named(unsigned int id, const std::string& name, const std::string& rest = "")
{
    return chunk(id, chunk(y3d::CHUNK_NAME, text(name)) + rest);
}

inline std::string file(const std::string& children)
{
    return std::string("Y3DF\0\4", 6) + chunk(y3d::CHUNK_MAIN, children);
}

// Loads from a block of exactly the right size, so that a sanitizer sees one byte read too far.
inline void loadBlock(y3d::Manager* manager, const std::string& bytes)
{
    std::unique_ptr<unsigned char[]> block(new unsigned char[bytes.size()]);
    std::memcpy(block.get(), bytes.data(), bytes.size());
    manager->load(block.get(), static_cast<int>(bytes.size()));
}

// The same; gives what was printed.
inline std::string load(y3d::Manager* manager, const std::string& bytes)
{
    testing::internal::CaptureStdout();
    try
    {
        loadBlock(manager, bytes);
    }
    catch (...)
    {
        testing::internal::GetCapturedStdout();
        throw;
    }
    return testing::internal::GetCapturedStdout();
}

inline std::string write(const y3d::Manager& manager)
{
    unsigned char* data;
    int size;
    manager.write(&data, &size);
    std::unique_ptr<unsigned char[]> owner(data);
    return bytesOf(data, size);
}

// The three tracks that every node has, at rest.
inline std::string restingTracks()
{
    using namespace y3d;
    return chunk(CHUNK_TRACK_POSITION, chunk(CHUNK_VALUE_VECTOR3, floats({0, 0, 0}))) +
           chunk(CHUNK_TRACK_ROTATION, chunk(CHUNK_VALUE_VECTOR4, floats({1, 0, 0, 0}))) +
           chunk(CHUNK_TRACK_SCALE, chunk(CHUNK_VALUE_VECTOR3, floats({1, 1, 1})));
}

// A file of the fuzzers' corpus: "everything.y3d" has a chunk of every kind that has a writer, in the order in which
// one is written, and "triangle.y3d" is the smallest scene with a textured mesh.
inline std::string corpus(const std::string& name)
{
    std::ifstream stream(std::string(Y3D_CORPUS) + "/" + name, std::ios::binary);
    EXPECT_TRUE(stream) << name;
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

// A skeleton of three levels; there is no writer for it.
inline std::string armature()
{
    using namespace y3d;
    const std::string rotation = chunk(CHUNK_TRACK_ROTATION, chunk(CHUNK_VALUE_VECTOR4, floats({0, 1, 0, 0})));
    const std::string arms =
        named(CHUNK_BONE, "left", named(CHUNK_BONE, "hand") + rotation) + named(CHUNK_BONE, "right");
    return named(CHUNK_ARMATURE, "skeleton", chunk(CHUNK_BONE, arms + rotation + chunk(CHUNK_NAME, text("spine"))));
}
