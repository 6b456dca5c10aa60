#pragma once

#include <string>

namespace ChunkLib
{
class ReadBuffer;
class WriteBuffer;
} // namespace ChunkLib

namespace y3d
{

// Says which file belongs to an image name. Nothing is decoded here.
class Image
{
public:
    Image();
    ~Image();

    // Empties both strings.
    void clear();

    // Reads the image's chunk, which the caller has opened. Unknown chunks give a line on standard output.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends the image's chunk.
    void writeChunk(ChunkLib::WriteBuffer& buffer) const;

    const std::string& getName() const { return mName; }
    const std::string& getFileName() const { return mFileName; }

    std::string mName;     // what textures call it
    std::string mFileName; // without the scene's texture path
};

} // namespace y3d
