// Imports any bytes as a glTF file, and what comes of it goes on to GLB and back. Whatever it is, there is a scene or
// one clear line.
#include "gltf/export.h"
#include "gltf/import.h"
#include "y3d_exception.h"

#include <cstdint>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    gltf::Losses losses;
    try
    {
        y3d::Manager made;
        gltf::importScene(gltf::readModel({data, data + size}, "fuzz", ""), "", {}, made, losses);
        unsigned char* bytes;
        int length;
        made.write(&bytes, &length);
        const std::unique_ptr<unsigned char[]> owner(bytes);
        y3d::Manager loaded;
        loaded.load(bytes, length);
        gltf::exportScenes(loaded, "/nowhere", {}, losses);
    }
    catch (const y3d::Exception&)
    {
    }
    return 0;
}
