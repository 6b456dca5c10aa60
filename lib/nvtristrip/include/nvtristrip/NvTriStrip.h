#pragma once

#include "gr_exception.h"

// Finds long triangle strips in a triangle list, cuts them to fit a vertex cache, puts them in an order that hits the
// cache often, and gives them back as strips or, flattened again, as a triangle list in that order. A tool for those
// who prepare meshes: the show never calls it.
//
// The settings are global and stay in force from call to call.
namespace NVIDIA
{

// Input that cannot be worked on.
GR_DECLARE_EXCEPTION(Exception, 2048);

enum PrimType
{
    PT_LIST = 0,
    PT_STRIP = 1
};

// One list or one strip of the result.
struct PrimitiveGroup
{
    PrimitiveGroup() = default;
    ~PrimitiveGroup() { delete[] indices; }
    PrimitiveGroup(const PrimitiveGroup&) = delete;
    PrimitiveGroup& operator=(const PrimitiveGroup&) = delete;

    PrimType type = PT_STRIP;
    unsigned int numIndices = 0;
    unsigned int* indices = nullptr; // owned
};

// Entries of the vertex cache that is aimed at; 16 at first. Six of them count as lost to the pipeline: strips are cut
// at `size` - 6 triangles, at least one.
void SetCacheSize(unsigned int size);

// Whether all strips become one, by repeated vertices between them; true at first.
void SetStitchStrips(bool stitch);

// Strips with fewer faces than this, degenerate ones counted, are broken up into the list of loose faces; 0 at first.
void SetMinStripSize(unsigned int size);

// Whether everything goes into one triangle list, in the order of the strips; false at first.
void SetListsOnly(bool listsOnly);

// Puts `value` behind every strip, the last one too, instead of stitching; all strips are one group then. Without
// stitching that group ends at a value of 0xFFFFFFFF, which is the internal mark between strips.
void EnableRestart(unsigned int value);
void DisableRestart();

// Makes the groups from `numIndices` / 3 triangles. What is left behind the last whole triangle is dropped, and so are
// triangles with two equal vertices and exact repetitions. Groups of strips come first and one list of loose faces
// last; without any triangle there is no group, with lists only an empty one. The caller destroys `*groups` with
// delete[].
//
// Returns true. With `validate` false is returned when the groups have a triangle that the input lacks; they are handed
// over all the same. Restart values are read as vertices there, so with them validation fails.
//
// Throws Exception when a vertex of a triangle is above 2^31 - 1, or when there are more than 2^27 triangles.
bool GenerateStrips(const unsigned int* indices, unsigned int numIndices, PrimitiveGroup** groups,
                    unsigned int* numGroups, bool validate = false);

// Makes copies of the groups whose vertices are numbered by their first use, from 0 on through all groups. The caller
// destroys `*remapped`, an array of `numGroups`, with delete[]. Restart values in force that are no vertex stay.
// Throws Exception when an index is not below `numVertices`.
void RemapIndices(const PrimitiveGroup* groups, unsigned int numGroups, unsigned int numVertices,
                  PrimitiveGroup** remapped);

} // namespace NVIDIA
