#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
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

// A file with a chunk of every kind that has a writer, in the order in which one is written.
inline std::string fileOfEverything()
{
    using namespace y3d;
    const std::string box = chunk(CHUNK_FILE_OR_BOUNDS, floats({-1, -2, -3, 4, 5, 6}));
    const std::string triangle = floats({0, 0, 0, 1, 0, 0, 0, 1, 0});
    const std::string colors = floats({1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1});
    const std::string curve = std::string("\2\3", 2) + floats({-1, 0, 0, 0, 1, 0, 2, 1, 3, 1, 4, 1});

    const std::string mesh =
        named(CHUNK_MESH, "mesh",
              chunk(CHUNK_MESH_FLAGS, "\5") + box +
                  chunk(CHUNK_SUBMESH,
                        chunk(CHUNK_MATERIAL_NAME, text("material")) + box +
                            chunk(CHUNK_INDICES, integer(0) + integer(1) + integer(2)) +
                            chunk(CHUNK_POSITIONS, triangle) + chunk(CHUNK_NORMALS, triangle) +
                            chunk(CHUNK_UVWS, triangle) + chunk(CHUNK_UVWS, floats({7, 8, 9})) +
                            named(CHUNK_BONEGROUP, "arm", chunk(CHUNK_BONEGROUP_WEIGHTS, integer(2) + floats({0.5f}))) +
                            chunk(CHUNK_COLORS, colors)) +
                  chunk(CHUNK_SUBMESH, chunk(CHUNK_MATERIAL_NAME, text(""))));
    const std::string texture =
        named(CHUNK_TEXTURE, "texture", chunk(CHUNK_IMAGE_NAME, text("image")) + chunk(CHUNK_TEXTURE_VALUE, "\x81"));
    const std::string material =
        named(CHUNK_MATERIAL, "material",
              chunk(CHUNK_MATERIAL_SHADELESS, "\1") + chunk(CHUNK_MATERIAL_FLAG, std::string(1, '\0')) +
                  named(CHUNK_MATERIAL_ATTRIBUTE, "diffuse",
                        chunk(CHUNK_VALUE_VECTOR4, floats({0.1f, 0.2f, 0.3f, 0.4f})) + texture + texture) +
                  named(CHUNK_MATERIAL_ATTRIBUTE, "hardness", chunk(CHUNK_VALUE_VECTOR4, floats({50, 0, 0, 0}))));
    const std::string image = named(CHUNK_IMAGE, "image", chunk(CHUNK_FILE_OR_BOUNDS, text("a.png")));

    const std::string common = chunk(CHUNK_NAME, text("node")) + restingTracks();
    const std::string camera =
        chunk(CHUNK_CAMERA,
              chunk(CHUNK_TRACK_FOV, chunk(CHUNK_CURVE_1, curve) + chunk(CHUNK_VALUE_FLOAT, floats({0.75f}))) + common);
    const std::string light =
        chunk(CHUNK_LIGHT, chunk(CHUNK_TRACK_COLOR, chunk(CHUNK_CURVE_0, curve) + chunk(CHUNK_CURVE_3, curve) +
                                                        chunk(CHUNK_VALUE_VECTOR4, floats({1, 0.5f, 0.25f, 1}))) +
                               chunk(CHUNK_LIGHT_ENERGY, chunk(CHUNK_VALUE_FLOAT, floats({2}))) +
                               chunk(CHUNK_LIGHT_DISTANCE, chunk(CHUNK_VALUE_FLOAT, floats({20}))) +
                               chunk(CHUNK_LIGHT_FLAG, "\1") + common);
    const std::string dummy = chunk(
        CHUNK_DUMMY,
        chunk(CHUNK_NAME, text("dummy")) +
            chunk(CHUNK_TRACK_POSITION, chunk(CHUNK_CURVE_2, curve) + chunk(CHUNK_VALUE_VECTOR3, floats({1, 2, 3}))) +
            chunk(CHUNK_TRACK_ROTATION,
                  chunk(CHUNK_CURVE_1, curve) + chunk(CHUNK_VALUE_VECTOR3, floats({0.1f, 0.2f, 0.3f}))) +
            chunk(CHUNK_TRACK_SCALE, chunk(CHUNK_VALUE_VECTOR3, floats({1, 1, 1}))) + camera + light);
    const std::string instance =
        chunk(CHUNK_MESHINSTANCE, chunk(CHUNK_MESH_NAME, text("mesh")) +
                                      chunk(CHUNK_MATERIAL_REFERENCE, integer(0xFFFFFFFF) + text("nothing")) +
                                      chunk(CHUNK_MATERIAL_REFERENCE, integer(1) + text("material")) + common + dummy);

    return file(mesh + named(CHUNK_MESH, "") + material + image +
                named(CHUNK_SCENE, "scene", instance + camera + dummy + light) + named(CHUNK_SCENE, "empty"));
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
