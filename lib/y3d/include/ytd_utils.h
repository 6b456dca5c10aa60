#pragma once

#include "y3d_structlist.h"
#include "ytd_format.h"

namespace y3d
{
class Mesh;
class Submesh;
} // namespace y3d

namespace ytd
{

// Operations on meshes. The buffer functions run when a scene is loaded and turn the lists of a submesh into the
// interleaved blocks that go to the graphics library; the preparation functions serve tools that make Y3D files and
// lie in a library of their own, with the stripifier under it. Formats are sets of the bits in ytd_format.h.
class Utils
{
public:
    // What a submesh has to offer; lists without entries do not count, nor do channels from the third on.
    static unsigned int getFormat(const y3d::Submesh* submesh);

    // Bytes of one vertex.
    static unsigned int getFormatSize(unsigned int format);

    // Bytes of a whole block: one vertex for each entry of `indices`, or for each vertex of the submesh when it is
    // null. Throws y3d::Exception when that is 4 GB or more.
    static unsigned int getVertexBufferSize(y3d::Submesh* submesh, unsigned int format,
                                            const y3d::StructList<y3d::Index>* indices);

    // Bytes of all indices with 8, 16 or 32 bits each.
    static unsigned int getIndexBufferSize(y3d::Submesh* submesh, int bitsPerIndex);

    // Fills `dest` from byte `offset` on; there must be room for getVertexBufferSize bytes. With `indices` vertex i of
    // the block is the one that entry i names, else vertex i of the submesh. Throws y3d::Exception when the submesh
    // lacks a vertex or an attribute that is asked for.
    static void compileVertexBuffer(unsigned char* dest, const y3d::Submesh* submesh, unsigned int format,
                                    const y3d::StructList<y3d::Index>* indices, int offset);

    // Fills `dest` from byte `destOffset` on with every index plus `offset`, as unsigned integers of 8, 16 or 32 bits
    // cut to that width; there must be room for getIndexBufferSize bytes.
    static void compileIndexBuffer(unsigned char* dest, const y3d::Submesh* submesh, int bitsPerIndex, int offset,
                                   int destOffset);

    // Does nothing: a submesh has what it has.
    static void setFormat(y3d::Submesh* submesh, unsigned int format);

    // Gives the submesh the box around all vertices that its indices name. With `force` false a box that is there
    // stays. Throws y3d::Exception when there is no index.
    static void updateBoundingBox(y3d::Submesh* submesh, bool force);

    // Does so for each submesh and gives the mesh the box around theirs. With `force` false a mesh that has a box is
    // left alone. Throws y3d::Exception when there is no submesh.
    static void updateBoundingBoxes(y3d::Mesh* mesh, bool force);

    // Removes vertices that no index names and merges equal ones, keeping the order. Looks at positions, normals and
    // the first two texture channels; colours, bone groups and further channels no longer line up afterwards.
    static void mergeVertices(y3d::Submesh* submesh);

    // Puts the triangles in an order that suits a vertex cache of `cacheSize` entries, and the vertices in the order of
    // their first use. Vertices that no index names become zero, so mergeVertices goes first. Indices behind the last
    // whole triangle are dropped.
    static void cacheOptimize(y3d::Submesh* submesh, int cacheSize);

    // mergeVertices, then cacheOptimize unless `cacheSize` is 0; for one submesh or for all of a mesh.
    static void optimizeSubmesh(y3d::Submesh* submesh, int cacheSize);
    static void optimizeMesh(y3d::Mesh* mesh, int cacheSize);
};

} // namespace ytd
