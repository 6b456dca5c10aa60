#include "glb.h"

#include "y3d_exception.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace gltf
{

namespace
{

const int FLOAT = 5126, UNSIGNED_INT = 5125, UNSIGNED_SHORT = 5123, ARRAY_BUFFER = 34962, ELEMENT_ARRAY_BUFFER = 34963;
const char* const TYPES[] = {"", "SCALAR", "VEC2", "VEC3", "VEC4"};

void appendWord(std::vector<unsigned char>* bytes, std::size_t value)
{
    for (int shift = 0; shift < 32; shift += 8) bytes->push_back(static_cast<unsigned char>(value >> shift));
}

void appendChunk(std::vector<unsigned char>* bytes, const char* kind, const void* data, std::size_t size, char padding)
{
    const std::size_t padded = (size + 3) / 4 * 4;
    appendWord(bytes, padded);
    bytes->insert(bytes->end(), kind, kind + 4);
    const unsigned char* begin = static_cast<const unsigned char*>(data);
    bytes->insert(bytes->end(), begin, begin + size);
    bytes->insert(bytes->end(), padded - size, static_cast<unsigned char>(padding));
}

} // namespace

Glb::Glb()
{
    description["asset"] = {{"version", "2.0"}, {"generator", "y3d export"}};
}

int Glb::add(const char* list, Json object)
{
    if (!description.contains(list)) description[list] = Json::array();
    description[list].push_back(std::move(object));
    return static_cast<int>(description[list].size()) - 1;
}

void Glb::use(const std::string& extension)
{
    Json& used = description["extensionsUsed"];
    if (std::find(used.begin(), used.end(), extension) == used.end()) used.push_back(extension);
}

int Glb::addView(const void* data, std::size_t size, int target)
{
    mBuffer.resize((mBuffer.size() + 3) / 4 * 4);
    Json view = {{"buffer", 0}, {"byteOffset", mBuffer.size()}, {"byteLength", size}};
    if (target != 0) view["target"] = target;
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    mBuffer.insert(mBuffer.end(), bytes, bytes + size);
    return add("bufferViews", view);
}

int Glb::addAccessor(const std::vector<float>& values, int components, int target, bool withBounds)
{
    Json accessor = {{"bufferView", addView(values.data(), values.size() * sizeof(float), target)},
                     {"componentType", FLOAT},
                     {"count", values.size() / components},
                     {"type", TYPES[components]}};
    for (const bool isMin : {true, false})
    {
        if (!withBounds) break;
        std::vector<float> bound(values.begin(), values.begin() + components);
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            float& part = bound[i % components];
            part = isMin ? std::min(part, values[i]) : std::max(part, values[i]);
        }
        accessor[isMin ? "min" : "max"] = bound;
    }
    return add("accessors", accessor);
}

int Glb::addFloats(const std::vector<float>& values, int components, bool withBounds)
{
    return addAccessor(values, components, 0, withBounds);
}

int Glb::addVertices(const std::vector<float>& values, int components)
{
    return addAccessor(values, components, ARRAY_BUFFER, components == 3);
}

int Glb::addIndices(const std::vector<unsigned int>& indices)
{
    const bool isShort = *std::max_element(indices.begin(), indices.end()) < 65535;
    const std::vector<std::uint16_t> narrow(indices.begin(), isShort ? indices.end() : indices.begin());
    const int view = isShort ? addView(narrow.data(), narrow.size() * sizeof narrow[0], ELEMENT_ARRAY_BUFFER)
                             : addView(indices.data(), indices.size() * sizeof indices[0], ELEMENT_ARRAY_BUFFER);
    return add("accessors", {{"bufferView", view},
                             {"componentType", isShort ? UNSIGNED_SHORT : UNSIGNED_INT},
                             {"count", indices.size()},
                             {"type", "SCALAR"}});
}

int Glb::addPicture(const std::vector<unsigned char>& bytes, const std::string& mimeType, const std::string& name)
{
    return add("images",
               {{"name", name}, {"mimeType", mimeType}, {"bufferView", addView(bytes.data(), bytes.size(), 0)}});
}

int Glb::addSampler(Json* animation, const Sampler& sampler)
{
    std::vector<float> times, values;
    const std::size_t components = sampler.keys.front().value.size();
    const auto append = [&](const std::vector<double>& v) {
        // w last, as rotations have it in glTF
        for (std::size_t i = 0; i < components; ++i)
            values.push_back(static_cast<float>(components == 4 ? v[(i + 1) % 4] : v[i]));
    };
    for (const Sampler::Key& key : sampler.keys)
    {
        const float time = static_cast<float>(key.time);
        if (!times.empty() && !(time > times.back())) continue; // closer than floats can tell
        times.push_back(time);
        if (sampler.mode == Sampler::CUBIC) append(key.in);
        append(key.value);
        if (sampler.mode == Sampler::CUBIC) append(key.out);
    }
    const char* const modes[] = {"STEP", "LINEAR", "CUBICSPLINE"};
    Json& samplers = (*animation)["samplers"];
    samplers.push_back({{"input", addFloats(times, 1, true)},
                        {"interpolation", modes[sampler.mode]},
                        {"output", addFloats(values, static_cast<int>(components), false)}});
    return static_cast<int>(samplers.size()) - 1;
}

std::vector<unsigned char> Glb::build() const
{
    Json whole = description;
    if (!mBuffer.empty()) whole["buffers"] = Json::array({{{"byteLength", mBuffer.size()}}});
    const std::string text = whole.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::vector<unsigned char> chunks;
    appendChunk(&chunks, "JSON", text.data(), text.size(), ' ');
    if (!mBuffer.empty()) appendChunk(&chunks, "BIN\0", mBuffer.data(), mBuffer.size(), 0);
    const std::size_t size = 12 + chunks.size();
    if (size > UINT32_MAX) throw y3d::Exception("the file would be too large");

    std::vector<unsigned char> file = {'g', 'l', 'T', 'F'};
    appendWord(&file, 2);
    appendWord(&file, size);
    file.insert(file.end(), chunks.begin(), chunks.end());
    return file;
}

} // namespace gltf
