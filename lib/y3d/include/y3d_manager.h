#pragma once

#include <map>
#include <string>
#include <vector>

namespace ChunkLib
{
class ReadBuffer;
class WriteBuffer;
} // namespace ChunkLib

namespace y3d
{

class Image;
class Material;
class Mesh;
class Scene;

// Owner of everything in one Y3D file. Objects refer to each other by name; the manager finds them. No pointer into a
// manager survives it.
class Manager
{
public:
    Manager();
    ~Manager();
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    // Reads a whole file from memory and adds its objects to those that are there. The block is not needed afterwards.
    // Throws y3d::Exception when the block is no Y3D file of version 0:4 or does not begin with the main chunk;
    // anything else that is wrong costs only the object it is in. Unknown chunks give lines on standard output, in
    // proportion to the length of the file, and so stays the memory for nodes.
    void load(const unsigned char* data, int size);

    // Reads the children of the main chunk, which the caller has opened.
    void loadChunkMain(ChunkLib::ReadBuffer& buffer);

    // Builds a file. `*data` becomes a block made with new[] that the caller frees, `*size` its length. When it throws
    // (y3d::Exception: a tree too deep, a file of 2 GB or more) both are 0. Armatures are not written.
    void write(unsigned char** data, int* size) const;

    // Destroys all objects.
    void clear();

    // The first scene of that name, or null.
    Scene* getScene(const std::string& name);
    const Scene* getScene(const std::string& name) const;

    // The object of that name, or null. Of several the one loaded last.
    Mesh* getMesh(const std::string& name);
    const Mesh* getMesh(const std::string& name) const;
    Material* getMaterial(const std::string& name);
    const Material* getMaterial(const std::string& name) const;
    Image* getImage(const std::string& name);
    const Image* getImage(const std::string& name) const;

    // The position of that object in its list, or -1.
    int getMeshIndex(const std::string& name) const;
    int getMaterialIndex(const std::string& name) const;
    int getImageIndex(const std::string& name) const;

    // The lists in file order.
    int getNumScenes() const { return static_cast<int>(mScenes.size()); }
    Scene* getSceneAt(int index) const { return mScenes[index]; }
    int getNumMaterials() const { return static_cast<int>(mMaterials.size()); }
    Material* getMaterialAt(int index) const { return mMaterials[index]; }

    std::vector<Mesh*> mMeshes; // all owned
    std::vector<Material*> mMaterials;
    std::vector<Scene*> mScenes;
    std::vector<Image*> mImages;
    std::map<std::string, int> mImageIndices; // name to position in the list; a tool that fills the lists itself
    std::map<std::string, int> mMeshIndices;  // enters the names too
    std::map<std::string, int> mMaterialIndices;

private:
    void writeChunkMain(ChunkLib::WriteBuffer& buffer) const;
};

} // namespace y3d
