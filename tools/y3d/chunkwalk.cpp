#include "chunkwalk.h"

#include "cl_bdt.h"
#include "text.h"
#include "y3d_chunks.h"
#include "y3d_scenenode.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>

using namespace y3d;

namespace
{

const std::size_t HEADER_SIZE = 6;
const std::size_t MAX_LINES = 1000;

// What a payload is made of: chunks, or `base` bytes followed by elements of `unit` bytes.
struct Payload
{
    std::size_t base;
    std::size_t unit;
};

const Payload CHUNKS = {0, 0};
const Payload TEXT = {0, 1};
const Payload VALUE = {0, 1}; // of implicit length
const Payload KEYED_TEXT = {4, 1};
const Payload BOX = {24, static_cast<std::size_t>(-1)}; // and nothing behind it
const Payload CURVE = {2, 24};
const Payload INDICES = {0, 4};
const Payload WEIGHTS = {0, 8};
const Payload VECTORS = {0, 12};
const Payload COLORS = {0, 16};

struct Child
{
    unsigned int id;
    Payload payload;
    bool repeated = false;
};

// A chunk made of chunks.
struct Container
{
    const char* name;
    bool isNode; // called by its own name alone
    std::vector<Child> children;
};

Container node(const char* name, const std::vector<Child>& own)
{
    Container container = {name, true, own};
    for (const unsigned int id : {CHUNK_TRACK_POSITION, CHUNK_TRACK_ROTATION, CHUNK_TRACK_SCALE})
    {
        container.children.push_back({id, CHUNKS});
    }
    for (const unsigned int id : {CHUNK_CAMERA, CHUNK_MESHINSTANCE, CHUNK_DUMMY, CHUNK_LIGHT, CHUNK_ARMATURE})
    {
        container.children.push_back({id, CHUNKS, true});
    }
    container.children.push_back({CHUNK_NAME, TEXT});
    return container;
}

Container track(const char* name, const std::vector<unsigned int>& curves, const std::vector<unsigned int>& bases)
{
    Container container = {name, false, {}};
    for (const unsigned int id : curves) container.children.push_back({id, CURVE});
    for (const unsigned int id : bases) container.children.push_back({id, VALUE});
    return container;
}

const std::map<unsigned int, Container>& containers()
{
    const std::vector<unsigned int> one = {CHUNK_CURVE_1};
    const std::vector<unsigned int> three = {CHUNK_CURVE_1, CHUNK_CURVE_2, CHUNK_CURVE_3};
    const std::vector<unsigned int> four = {CHUNK_CURVE_0, CHUNK_CURVE_1, CHUNK_CURVE_2, CHUNK_CURVE_3};
    static const std::map<unsigned int, Container> table = {
        {CHUNK_MAIN,
         {"main chunk",
          true,
          {{CHUNK_MESH, CHUNKS, true},
           {CHUNK_MATERIAL, CHUNKS, true},
           {CHUNK_IMAGE, CHUNKS, true},
           {CHUNK_SCENE, CHUNKS, true}}}},
        {CHUNK_MESH,
         {"mesh",
          true,
          {{CHUNK_NAME, TEXT}, {CHUNK_MESH_FLAGS, VALUE}, {CHUNK_FILE_OR_BOUNDS, BOX}, {CHUNK_SUBMESH, CHUNKS, true}}}},
        {CHUNK_SUBMESH,
         {"submesh",
          false,
          {{CHUNK_MATERIAL_NAME, TEXT},
           {CHUNK_FILE_OR_BOUNDS, BOX},
           {CHUNK_INDICES, INDICES},
           {CHUNK_POSITIONS, VECTORS},
           {CHUNK_NORMALS, VECTORS},
           {CHUNK_UVWS, VECTORS, true},
           {CHUNK_COLORS, COLORS, true},
           {CHUNK_BONEGROUP, CHUNKS, true}}}},
        {CHUNK_BONEGROUP, {"bone group", false, {{CHUNK_NAME, TEXT}, {CHUNK_BONEGROUP_WEIGHTS, WEIGHTS}}}},
        {CHUNK_IMAGE, {"image", true, {{CHUNK_NAME, TEXT}, {CHUNK_FILE_OR_BOUNDS, TEXT}}}},
        {CHUNK_MATERIAL,
         {"material",
          true,
          {{CHUNK_NAME, TEXT},
           {CHUNK_MATERIAL_SHADELESS, VALUE},
           {CHUNK_MATERIAL_FLAG, VALUE},
           {CHUNK_MATERIAL_ATTRIBUTE, CHUNKS, true}}}},
        {CHUNK_MATERIAL_ATTRIBUTE,
         {"attribute", false, {{CHUNK_NAME, TEXT}, {CHUNK_VALUE_VECTOR4, VALUE}, {CHUNK_TEXTURE, CHUNKS, true}}}},
        {CHUNK_TEXTURE,
         {"texture", false, {{CHUNK_NAME, TEXT}, {CHUNK_IMAGE_NAME, TEXT}, {CHUNK_TEXTURE_VALUE, VALUE}}}},
        {CHUNK_SCENE, node("scene", {})},
        {CHUNK_CAMERA, node("camera", {{CHUNK_TRACK_FOV, CHUNKS}})},
        {CHUNK_MESHINSTANCE,
         node("mesh instance", {{CHUNK_MESH_NAME, TEXT}, {CHUNK_MATERIAL_REFERENCE, KEYED_TEXT, true}})},
        {CHUNK_DUMMY, node("dummy", {})},
        {CHUNK_LIGHT, node("light", {{CHUNK_TRACK_COLOR, CHUNKS},
                                     {CHUNK_LIGHT_ENERGY, CHUNKS},
                                     {CHUNK_LIGHT_DISTANCE, CHUNKS},
                                     {CHUNK_LIGHT_FLAG, VALUE}})},
        {CHUNK_ARMATURE, node("armature", {{CHUNK_BONE, CHUNKS}})},
        {CHUNK_BONE, {"bone", false, {{CHUNK_NAME, TEXT}, {CHUNK_TRACK_ROTATION, CHUNKS}, {CHUNK_BONE, CHUNKS, true}}}},
        {CHUNK_TRACK_POSITION, track("position track", three, {CHUNK_VALUE_VECTOR3})},
        {CHUNK_TRACK_ROTATION, track("rotation track", four, {CHUNK_VALUE_VECTOR3, CHUNK_VALUE_VECTOR4})},
        {CHUNK_TRACK_SCALE, track("scale track", three, {CHUNK_VALUE_VECTOR3})},
        {CHUNK_TRACK_COLOR, track("colour track", four, {CHUNK_VALUE_VECTOR4})},
        {CHUNK_TRACK_FOV, track("field of view track", one, {CHUNK_VALUE_FLOAT})},
        {CHUNK_LIGHT_ENERGY, track("energy track", one, {CHUNK_VALUE_FLOAT})},
        {CHUNK_LIGHT_DISTANCE, track("distance track", one, {CHUNK_VALUE_FLOAT})},
    };
    return table;
}

// A chunk where it lies; payload and end as the reader takes them, cut off where the parent ends.
struct Chunk
{
    unsigned int id;
    std::size_t offset; // of the identifier
    std::size_t payload;
    std::size_t claimed; // payload length in the file
    std::size_t end;
};

class Walk
{
public:
    explicit Walk(const std::vector<unsigned char>& bytes) : mBytes(bytes) {}

    ChunkWalk run()
    {
        Chunk main;
        if (!next(HEADER_SIZE, mBytes.size(), &main)) return mWalk;
        tellCut(main, mBytes.size());
        walk(main, "main chunk", 1);
        const std::size_t behind = mBytes.size() - main.end;
        if (behind != 0)
            tell("%s at %zu lie behind the main chunk", counted(behind, "byte", "bytes").c_str(), main.end);
        if (mNumOthers != 0) mWalk.lines.push_back(std::to_string(mNumOthers) + " more of such lines are left out");
        return mWalk;
    }

private:
    template <class... Values> void tell(const char* format, Values... values)
    {
        if (mWalk.lines.size() == MAX_LINES)
        {
            ++mNumOthers;
            return;
        }
        char line[512]; // a title may be long; it is cut
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        std::snprintf(line, sizeof line, format, values...);
#pragma GCC diagnostic pop
        mWalk.lines.push_back(line);
    }

    // The chunk at `offset`, if there is one before `end`.
    bool next(std::size_t offset, std::size_t end, Chunk* chunk) const
    {
        if (end - offset < 2) return false;
        chunk->id = mBytes[offset] | mBytes[offset + 1] << 8;
        if (chunk->id == 0) return false;
        chunk->offset = offset;
        chunk->payload = offset + 2;
        chunk->claimed = ChunkLib::BDT().getSize(chunk->id);
        if (chunk->claimed == 0)
        {
            if (end - chunk->payload < 4) return false;
            unsigned int length;
            std::memcpy(&length, &mBytes[chunk->payload], sizeof length);
            chunk->payload += sizeof length;
            chunk->claimed = length;
        }
        chunk->end = chunk->payload + std::min(chunk->claimed, end - chunk->payload);
        return true;
    }

    void tellCut(const Chunk& chunk, std::size_t end)
    {
        const std::size_t left = end - chunk.payload;
        if (chunk.claimed <= left) return;
        tell("chunk 0x%04X at %zu claims %s where %zu are left", chunk.id, chunk.offset,
             counted(chunk.claimed, "byte", "bytes").c_str(), left);
    }

    // All children of a container.
    void walk(const Chunk& parent, const std::string& title, unsigned int level)
    {
        const Container& container = containers().at(parent.id);
        std::set<unsigned int> seen;
        int number = 0; // of the next child that is a container, for those without a name
        Chunk chunk;
        std::size_t offset = parent.payload;
        for (; next(offset, parent.end, &chunk); offset = chunk.end)
        {
            tellCut(chunk, parent.end);
            const auto child = std::find_if(container.children.begin(), container.children.end(),
                                            [&](const Child& candidate) { return candidate.id == chunk.id; });
            if (child == container.children.end())
            {
                tell("chunk 0x%04X at %zu in %s is unknown there and skipped", chunk.id, chunk.offset, title.c_str());
                continue;
            }
            if (!seen.insert(chunk.id).second && !child->repeated)
            {
                tell("chunk 0x%04X at %zu in %s comes again", chunk.id, chunk.offset, title.c_str());
            }
            if (child->payload.unit != 0)
                checkPayload(chunk, child->payload, title);
            else if (level >= SceneNode::MAX_LEVELS && (isNode(chunk.id) || chunk.id == CHUNK_BONE))
            {
                tell("chunk 0x%04X at %zu in %s lies too deep and is skipped", chunk.id, chunk.offset, title.c_str());
            }
            else
            {
                // A root bone belongs to its armature.
                mWalk.numNodes += isNode(chunk.id) || (chunk.id == CHUNK_BONE && parent.id == CHUNK_BONE);
                walk(chunk, titleOf(chunk, title, number++), level + 1);
            }
        }
        if (offset == parent.end) return;
        tell("%s at %zu in %s belong to no chunk", counted(parent.end - offset, "byte", "bytes").c_str(), offset,
             title.c_str());
    }

    void checkPayload(const Chunk& chunk, const Payload& payload, const std::string& title)
    {
        const std::size_t size = chunk.end - chunk.payload;
        if (size < payload.base)
        {
            tell("chunk 0x%04X at %zu in %s is %s short", chunk.id, chunk.offset, title.c_str(),
                 counted(payload.base - size, "byte", "bytes").c_str());
        }
        else if (const std::size_t over = (size - payload.base) % payload.unit)
        {
            tell("chunk 0x%04X at %zu in %s has %s left over", chunk.id, chunk.offset, title.c_str(),
                 counted(over, "byte", "bytes").c_str());
        }
    }

    bool isNode(unsigned int id) const
    {
        return id == CHUNK_SCENE || id == CHUNK_CAMERA || id == CHUNK_MESHINSTANCE || id == CHUNK_DUMMY ||
               id == CHUNK_LIGHT || id == CHUNK_ARMATURE;
    }

    // "mesh 'tri'", "submesh 0 of mesh 'tri'", "position track of camera 'eye'".
    std::string titleOf(const Chunk& chunk, const std::string& parent, int number) const
    {
        const Container& container = containers().at(chunk.id);
        std::string title = container.name;
        Chunk child;
        for (std::size_t offset = chunk.payload; next(offset, chunk.end, &child); offset = child.end)
        {
            if (child.id != CHUNK_NAME) continue;
            const char* name = reinterpret_cast<const char*>(mBytes.data()) + child.payload;
            title += " " + quoted(std::string(name, strnlen(name, child.end - child.payload)));
            break;
        }
        if (chunk.id == CHUNK_SUBMESH) title += " " + std::to_string(number);
        return container.isNode || chunk.id == CHUNK_BONE ? title : title + " of " + parent;
    }

    const std::vector<unsigned char>& mBytes;
    ChunkWalk mWalk;
    std::size_t mNumOthers = 0;
};

} // namespace

ChunkWalk walkChunks(const std::vector<unsigned char>& bytes)
{
    return Walk(bytes).run();
}
