#include "accessors.h"

#include "y3d_exception.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace gltf
{

namespace
{

const std::size_t MAX_NUMBERS = std::size_t(1) << 27; // half a gigabyte of floats

std::size_t sizeOfComponent(int type)
{
    switch (type)
    {
    case TINYGLTF_COMPONENT_TYPE_BYTE:
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
        return 1;
    case TINYGLTF_COMPONENT_TYPE_SHORT:
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
        return 2;
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
    case TINYGLTF_COMPONENT_TYPE_FLOAT:
        return 4;
    default:
        return 0;
    }
}

template <class T> T take(const unsigned char* bytes)
{
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

template <class T> float toFloat(const unsigned char* bytes, bool normalized)
{
    const float value = static_cast<float>(take<T>(bytes));
    return normalized ? std::max(value / static_cast<float>(std::numeric_limits<T>::max()), -1.0f) : value;
}

float toFloat(const unsigned char* bytes, int type, bool normalized)
{
    switch (type)
    {
    case TINYGLTF_COMPONENT_TYPE_BYTE:
        return toFloat<std::int8_t>(bytes, normalized);
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
        return toFloat<std::uint8_t>(bytes, normalized);
    case TINYGLTF_COMPONENT_TYPE_SHORT:
        return toFloat<std::int16_t>(bytes, normalized);
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
        return toFloat<std::uint16_t>(bytes, normalized);
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
        return toFloat<std::uint32_t>(bytes, normalized);
    default:
        return take<float>(bytes);
    }
}

std::uint32_t toIndex(const unsigned char* bytes, int type)
{
    switch (type)
    {
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
        return take<std::uint8_t>(bytes);
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
        return take<std::uint16_t>(bytes);
    default:
        return take<std::uint32_t>(bytes);
    }
}

} // namespace

const tinygltf::Accessor& Accessors::find(int accessor) const
{
    if (accessor < 0 || static_cast<std::size_t>(accessor) >= mModel.accessors.size())
        throw y3d::Exception("there is no accessor %d", accessor);
    return mModel.accessors[accessor];
}

std::size_t Accessors::getCount(int accessor) const
{
    return find(accessor).count;
}

void Accessors::spend(std::size_t numNumbers)
{
    if (numNumbers > MAX_NUMBERS - mNumNumbers) throw y3d::Exception("its data is too large");
    mNumNumbers += numNumbers;
}

// Where the elements begin, and how far they lie apart.
const unsigned char* Accessors::locate(int accessor, int bufferView, std::size_t byteOffset, std::size_t count,
                                       std::size_t elementSize, std::size_t* stride) const
{
    const auto isIn = [](int index, const auto& list) {
        return index >= 0 && static_cast<std::size_t>(index) < list.size();
    };
    if (!isIn(bufferView, mModel.bufferViews) || !isIn(mModel.bufferViews[bufferView].buffer, mModel.buffers))
        throw y3d::Exception("accessor %d has no buffer", accessor);
    const tinygltf::BufferView& view = mModel.bufferViews[bufferView];
    const std::vector<unsigned char>& data = mModel.buffers[view.buffer].data;
    *stride = view.byteStride == 0 ? elementSize : view.byteStride;

    // Each bound on its own, so that no sum can run over.
    const bool viewFits = view.byteOffset <= data.size() && view.byteLength <= data.size() - view.byteOffset;
    const bool fits = viewFits && byteOffset <= view.byteLength && elementSize <= view.byteLength - byteOffset &&
                      *stride <= data.size() && *stride >= elementSize &&
                      count - 1 <= (view.byteLength - byteOffset - elementSize) / *stride;
    if (!fits) throw y3d::Exception("accessor %d reaches outside its buffer", accessor);
    return data.data() + view.byteOffset + byteOffset;
}

std::vector<float> Accessors::readFloats(int index, int components)
{
    const tinygltf::Accessor& accessor = find(index);
    const std::size_t size = sizeOfComponent(accessor.componentType);
    if (size == 0 || tinygltf::GetNumComponentsInType(accessor.type) != components)
        throw y3d::Exception("accessor %d has another type than is wanted", index);
    if (accessor.count == 0) return {};
    if (accessor.count > MAX_NUMBERS) throw y3d::Exception("its data is too large");
    spend(accessor.count * components);

    std::vector<float> values(accessor.count * components);
    const auto copy = [&](const unsigned char* from, float* to) {
        for (int i = 0; i < components; ++i)
            to[i] = toFloat(from + i * size, accessor.componentType, accessor.normalized);
    };
    std::size_t stride;
    if (accessor.bufferView >= 0)
    {
        const unsigned char* from =
            locate(index, accessor.bufferView, accessor.byteOffset, accessor.count, size * components, &stride);
        for (std::size_t i = 0; i < accessor.count; ++i) copy(from + i * stride, &values[i * components]);
    }
    if (accessor.sparse.isSparse && accessor.sparse.count > 0)
    {
        const auto& places = accessor.sparse.indices;
        const std::size_t count = accessor.sparse.count;
        const std::size_t placeSize = sizeOfComponent(places.componentType);
        if (placeSize == 0 || count > accessor.count)
            throw y3d::Exception("accessor %d has a wrong sparse part", index);
        std::size_t placeStride;
        const unsigned char* place =
            locate(index, places.bufferView, places.byteOffset, count, placeSize, &placeStride);
        const unsigned char* from = locate(index, accessor.sparse.values.bufferView, accessor.sparse.values.byteOffset,
                                           count, size * components, &stride);
        for (std::size_t i = 0; i < count; ++i)
        {
            const std::size_t target = toIndex(place + i * placeStride, places.componentType);
            if (target >= accessor.count) throw y3d::Exception("accessor %d has a wrong sparse part", index);
            copy(from + i * stride, &values[target * components]);
        }
    }
    for (const float value : values)
    {
        if (!std::isfinite(value)) throw y3d::Exception("accessor %d has values that are no numbers", index);
    }
    return values;
}

std::vector<unsigned int> Accessors::readIndices(int index, std::size_t numVertices)
{
    const tinygltf::Accessor& accessor = find(index);
    const std::size_t size = sizeOfComponent(accessor.componentType);
    if (size == 0 || accessor.type != TINYGLTF_TYPE_SCALAR || accessor.sparse.isSparse)
        throw y3d::Exception("accessor %d has another type than is wanted", index);
    if (accessor.count == 0) return {};
    spend(accessor.count);

    std::size_t stride;
    const unsigned char* from = locate(index, accessor.bufferView, accessor.byteOffset, accessor.count, size, &stride);
    std::vector<unsigned int> indices(accessor.count);
    for (std::size_t i = 0; i < accessor.count; ++i)
    {
        indices[i] = toIndex(from + i * stride, accessor.componentType);
        if (indices[i] >= numVertices)
            throw y3d::Exception("accessor %d has the index %u where there are %zu vertices", index, indices[i],
                                 numVertices);
    }
    return indices;
}

} // namespace gltf
