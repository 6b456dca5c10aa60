#pragma once

namespace Fennel
{

class Material;
class Mesh;
class Submesh;

// Turns the source data of submeshes into GL buffers. Every submesh gets buffers of its own; instances of one mesh
// share them because they draw the same Submesh objects.
class SubmeshManager
{
public:
    SubmeshManager() = default;
    SubmeshManager(const SubmeshManager&) = delete;
    SubmeshManager& operator=(const SubmeshManager&) = delete;
    ~SubmeshManager();

    // Makes the buffers of a submesh, unless it has them. Its source must be what Mesh::load lets pass: positions and
    // indices that fit them, in one of the four formats. Mesh and material are those it belongs to; they do not matter.
    void addSubmeshJob(Submesh* submesh, Mesh* mesh, Material* material);

    // To be called at the end of a load. Every job is complete when it is added, so nothing is left to do here.
    void flush();

    // Unbinds the buffers and disables the client arrays that drawing has left behind.
    void clear();
};

} // namespace Fennel
