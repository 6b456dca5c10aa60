#pragma once

#include "nvtristrip/NvFaceInfo.h"

#include <cstddef>

namespace NVIDIA
{

// One strip: faces of which each has an edge in common with the next, as a stretch of the list that they are in.
struct NvStripInfo
{
    std::size_t m_first;
    std::size_t m_numFaces;
};

// Strips with their faces, given by places, one behind the other.
struct NvStripList
{
    const int* FacesOf(const NvStripInfo& strip) const { return m_faces.data() + strip.m_first; }

    IntVec m_faces;
    std::vector<NvStripInfo> m_strips;
};

} // namespace NVIDIA
