#include "y3d_manager.h"

#include "y3d_chunkguard.h"
#include "y3d_chunks.h"
#include "y3d_exception.h"
#include "y3d_fields.h"
#include "y3d_image.h"
#include "y3d_material.h"
#include "y3d_mesh.h"
#include "y3d_scene.h"

#include <sys/mman.h>

#include <climits>
#include <cstdint>
#include <memory>

namespace y3d
{

namespace
{

const char FORMAT[] = "Y3DF";
const int MAJOR = 0;
const int MINOR = 4;

// Chunks of a basic data type carry no length, and empty chunks are dropped.
const unsigned int FLAGS = 1;

// Reads the open chunk into a new object of a list that is also found by name. An object that fails with an exception
// of any type is destroyed and not entered.
template <class T>
void loadNamed(ChunkLib::ReadBuffer& buffer, std::vector<T*>* list, std::map<std::string, int>* indices)
{
    const std::size_t before = list->size();
    loadOwned(buffer, list);
    if (list->size() == before) return;
    try
    {
        (*indices)[list->back()->getName()] = static_cast<int>(before);
    }
    catch (...)
    {
        delete list->back();
        list->pop_back();
    }
}

int findIndex(const std::map<std::string, int>& indices, const std::string& name)
{
    const auto found = indices.find(name);
    return found == indices.end() ? -1 : found->second;
}

template <class T>
T* findNamed(const std::vector<T*>& list, const std::map<std::string, int>& indices, const std::string& name)
{
    const int index = findIndex(indices, name);
    return index == -1 ? nullptr : list[index];
}

// Advises the system to back a large new block with large pages, which it takes in at a third of the cost. Where it
// does not do so, nothing changes.
void useLargePages(unsigned char* block, std::size_t size)
{
    const std::size_t pageSize = 4096;
    if (size < 1024 * pageSize) return;
    const std::size_t toNextPage = pageSize - reinterpret_cast<std::uintptr_t>(block) % pageSize;
    madvise(block + toNextPage, size - toNextPage, MADV_HUGEPAGE);
}

} // namespace

Manager::Manager() = default;

Manager::~Manager()
{
    clear();
}

void Manager::load(const unsigned char* data, int size)
{
    ChunkLib::ReadBuffer buffer(data, size > 0 ? size : 0, FLAGS);

    const int major = buffer.getMajorVersion();
    const int minor = buffer.getMinorVersion();
    const std::string format = buffer.getFormat();
    if (minor != MINOR || major != MAJOR || format != FORMAT)
    {
        throw Exception("Manager-file is of wrong version (%d:%d of format %s)", major, minor, format.c_str());
    }

    const int id = buffer.openChunk();
    if (id != CHUNK_MAIN)
    {
        throw Exception("There can only be a main-chunk as the top of the hiarchy! Found 0x%X", id);
    }
    ChunkGuard guard(buffer);
    loadChunkMain(buffer);
}

void Manager::loadChunkMain(ChunkLib::ReadBuffer& buffer)
{
    while (const int id = buffer.openChunk())
    {
        ChunkGuard guard(buffer);
        switch (id)
        {
        case CHUNK_MESH:
            loadNamed(buffer, &mMeshes, &mMeshIndices);
            break;
        case CHUNK_MATERIAL:
            loadNamed(buffer, &mMaterials, &mMaterialIndices);
            break;
        case CHUNK_IMAGE:
            loadNamed(buffer, &mImages, &mImageIndices);
            break;
        case CHUNK_SCENE:
            if (!isLeftOut(buffer, sizeof(Scene))) loadOwned(buffer, &mScenes);
            break;
        default:
            report(buffer, "Unknown chunk with ID=0x%X\n", id);
            break;
        }
    }
}

void Manager::write(unsigned char** data, int* size) const
{
    *data = nullptr;
    *size = 0;

    // Measured first and then written into a block of the right size: taking memory is most of what large files cost.
    ChunkLib::WriteBuffer measure(FORMAT, MAJOR, MINOR, FLAGS, nullptr, 0);
    writeChunkMain(measure);
    const std::size_t length = measure.getSize();
    if (!measure.isComplete() || length > INT_MAX)
    {
        throw Exception("Manager::write, The file is too large (%zu bytes or more, at most %d)", length, INT_MAX);
    }

    std::unique_ptr<unsigned char[]> block(new unsigned char[length]);
    useLargePages(block.get(), length);
    ChunkLib::WriteBuffer buffer(FORMAT, MAJOR, MINOR, FLAGS, block.get(), length);
    writeChunkMain(buffer);
    *data = block.release();
    *size = static_cast<int>(length);
}

void Manager::writeChunkMain(ChunkLib::WriteBuffer& buffer) const
{
    buffer.openChunk(CHUNK_MAIN);
    for (const Mesh* mesh : mMeshes) mesh->writeChunk(buffer);
    for (const Material* material : mMaterials) material->writeChunk(buffer);
    for (const Image* image : mImages) image->writeChunk(buffer);
    for (Scene* scene : mScenes) scene->writeChunk(buffer);
    buffer.closeChunk();
}

void Manager::clear()
{
    destroyOwned(&mImages);
    destroyOwned(&mMeshes);
    destroyOwned(&mScenes);
    destroyOwned(&mMaterials);
    mImageIndices.clear();
    mMeshIndices.clear();
    mMaterialIndices.clear();
}

Scene* Manager::getScene(const std::string& name)
{
    for (Scene* scene : mScenes)
    {
        if (scene->getName() == name) return scene;
    }
    return nullptr;
}

const Scene* Manager::getScene(const std::string& name) const
{
    return const_cast<Manager*>(this)->getScene(name);
}

Mesh* Manager::getMesh(const std::string& name)
{
    return findNamed(mMeshes, mMeshIndices, name);
}

const Mesh* Manager::getMesh(const std::string& name) const
{
    return findNamed(mMeshes, mMeshIndices, name);
}

Material* Manager::getMaterial(const std::string& name)
{
    return findNamed(mMaterials, mMaterialIndices, name);
}

const Material* Manager::getMaterial(const std::string& name) const
{
    return findNamed(mMaterials, mMaterialIndices, name);
}

Image* Manager::getImage(const std::string& name)
{
    return findNamed(mImages, mImageIndices, name);
}

const Image* Manager::getImage(const std::string& name) const
{
    return findNamed(mImages, mImageIndices, name);
}

int Manager::getMeshIndex(const std::string& name) const
{
    return findIndex(mMeshIndices, name);
}

int Manager::getMaterialIndex(const std::string& name) const
{
    return findIndex(mMaterialIndices, name);
}

int Manager::getImageIndex(const std::string& name) const
{
    return findIndex(mImageIndices, name);
}

} // namespace y3d
