#pragma once

#include <string>

namespace ChunkLib
{
class ReadBuffer;
class WriteBuffer;
} // namespace ChunkLib

namespace y3d
{

// A use of an image by an attribute of a material.
class Texture
{
public:
    Texture();
    ~Texture();

    // Empties both strings and sets the value to 0.
    void clear();

    // Reads the texture's chunk, which the caller has opened. Unknown chunks give a line on standard output.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends the texture's chunk.
    void writeChunk(ChunkLib::WriteBuffer& buffer) const;

    const std::string& getName() const { return mName; }
    const std::string& getImageName() const { return mImageName; }

    std::string mName;
    std::string mImageName; // name of an image of the same file; may name none
    unsigned char mValue;   // carried from file to file, read by nothing
};

} // namespace y3d
