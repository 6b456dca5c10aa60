#pragma once

#include <cstddef>
#include <vector>

#include "model.h"

namespace gltf
{

// Reads the numbers that accessors of a model name: all component types, strides and sparse parts. It checks every
// bound, and counts what it has handed out: a small file can name one block again and again, or ask for zeros that lie
// nowhere. Everything throws y3d::Exception with a text like "accessor 3 reaches outside its buffer".
class Accessors
{
public:
    // The model must outlive this.
    explicit Accessors(const Model& model) : mModel(model) {}

    // The number of elements.
    std::size_t getCount(int accessor) const;

    // All elements, one after the other, of which each must have that many components. Normalised integers become
    // numbers from -1 or 0 to 1.
    std::vector<float> readFloats(int accessor, int components);

    // Indices of vertices, which must be below `numVertices`.
    std::vector<unsigned int> readIndices(int accessor, std::size_t numVertices);

private:
    const tinygltf::Accessor& find(int accessor) const;
    void spend(std::size_t numNumbers);
    const unsigned char* locate(int accessor, int bufferView, std::size_t byteOffset, std::size_t count,
                                std::size_t elementSize, std::size_t* stride) const;

    const Model& mModel;
    std::size_t mNumNumbers = 0; // handed out so far
};

} // namespace gltf
