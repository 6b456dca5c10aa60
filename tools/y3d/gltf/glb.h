#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "sampler.h"

namespace gltf
{

// A GLB file while it grows: the description and the one buffer under it.
class Glb
{
public:
    using Json = nlohmann::ordered_json;

    Glb();

    // Each appends one object and returns its number.
    int addFloats(const std::vector<float>& values, int components, bool withBounds);
    int addVertices(const std::vector<float>& values, int components); // with bounds where they are positions
    int addIndices(const std::vector<unsigned int>& indices);
    int addPicture(const std::vector<unsigned char>& bytes, const std::string& mimeType, const std::string& name);
    int add(const char* list, Json object); // to "nodes", "materials" and so on

    // A name of an extension; only once in the file.
    void use(const std::string& extension);

    // Adds a sampler to an animation, whose "samplers" it becomes one of, and returns its number there.
    int addSampler(Json* animation, const Sampler& sampler);

    // The whole file.
    std::vector<unsigned char> build() const;

    Json description;

private:
    int addView(const void* data, std::size_t size, int target);
    int addAccessor(const std::vector<float>& values, int components, int target, bool withBounds);

    std::vector<unsigned char> mBuffer;
};

} // namespace gltf
