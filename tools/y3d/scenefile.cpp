#include "scenefile.h"

#include "chunkwalk.h"
#include "nodes.h"
#include "silentoutput.h"
#include "y3d_chunks.h"
#include "y3d_exception.h"
#include "y3d_scene.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>

namespace
{

const int HEADER_SIZE = 6;

std::vector<unsigned char> readAll(FILE* stream, const char* name)
{
    std::vector<unsigned char> bytes;
    unsigned char block[65536];
    while (const std::size_t size = std::fread(block, 1, sizeof block, stream))
    {
        bytes.insert(bytes.end(), block, block + size);
        if (bytes.size() > INT_MAX) throw y3d::Exception("%s: is too large for a scene file", name);
    }
    if (std::ferror(stream)) throw y3d::Exception("%s: %s", name, std::strerror(errno));
    return bytes;
}

std::vector<unsigned char> readFile(const std::string& filename)
{
    if (filename == "-") return readAll(stdin, "standard input");

    const std::unique_ptr<FILE, int (*)(FILE*)> stream(std::fopen(filename.c_str(), "rb"), std::fclose);
    if (!stream) throw y3d::Exception("%s: %s", filename.c_str(), std::strerror(errno));
    return readAll(stream.get(), filename.c_str());
}

void tellArmatures(const y3d::SceneNode& node)
{
    if (node.getType() == y3d::CHUNK_ARMATURE)
    {
        std::fprintf(stderr, "y3d: %s is not written, nor what lies below it\n", titleOf(node).c_str());
        return;
    }
    for (const y3d::SceneNode* child : node.mChildren) tellArmatures(*child);
}

} // namespace

SceneFile::SceneFile(const std::string& filename)
    : name(filename == "-" ? "standard input" : filename), bytes(readFile(filename))
{
    const SilentOutput silence;
    try
    {
        manager.load(bytes.data(), static_cast<int>(bytes.size()));
    }
    catch (const y3d::Exception& exception)
    {
        throw y3d::Exception("%s: %s", name.c_str(), exception.what());
    }
}

void tellLosses(const SceneFile& file)
{
    const ChunkWalk walk = walkChunks(file.bytes);
    const std::size_t numLoaded = countNodes(file.manager);
    if (walk.numNodes > numLoaded) std::fprintf(stderr, "y3d: %s\n", leftOut(walk.numNodes - numLoaded).c_str());
    for (const std::string& trouble : walk.lines) std::fprintf(stderr, "y3d: %s\n", trouble.c_str());
    for (const y3d::Scene* scene : file.manager.mScenes) tellArmatures(*scene);
}

void writeSceneFile(const y3d::Manager& manager, const std::string& filename)
{
    unsigned char* data;
    int size;
    manager.write(&data, &size);
    const std::unique_ptr<unsigned char[]> owner(data);
    if (size == HEADER_SIZE) throw y3d::Exception("%s: there is nothing to write", filename.c_str());

    FILE* stream = filename == "-" ? stdout : std::fopen(filename.c_str(), "wb");
    if (!stream) throw y3d::Exception("%s: %s", filename.c_str(), std::strerror(errno));
    bool written = std::fwrite(data, 1, size, stream) == static_cast<std::size_t>(size);
    written = (stream == stdout ? std::fflush(stream) : std::fclose(stream)) == 0 && written;
    if (!written) throw y3d::Exception("%s: %s", filename.c_str(), std::strerror(errno));
}
