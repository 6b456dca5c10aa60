#pragma once

#include <string>
#include <vector>

#include "y3d_color4f.h"

namespace ChunkLib
{
class ReadBuffer;
class WriteBuffer;
} // namespace ChunkLib

namespace y3d
{

class Texture;

// A list of named properties. The renderer knows "diffuse", "specular", "ambient", "emissive" and "hardness"; any other
// name is carried along.
class Material
{
public:
    // One property: a colour, or a single number in the colour's first component, and the textures laid over it.
    class Attribute
    {
    public:
        Attribute() = default;
        ~Attribute();
        Attribute(const Attribute&) = delete;
        Attribute& operator=(const Attribute&) = delete;

        // Reads the attribute's chunk, which the caller has opened. Unknown chunks give a line on standard output.
        void loadChunk(ChunkLib::ReadBuffer& buffer);

        // Appends the attribute's chunk.
        void writeChunk(ChunkLib::WriteBuffer& buffer) const;

        const std::string& getName() const { return mName; }
        const Color4f& getColor() const { return mColor; }
        int getNumTextures() const { return static_cast<int>(mTextures.size()); }
        Texture* getTexture(int index) const { return mTextures[index]; }

        std::string mName;
        Color4f mColor;
        std::vector<Texture*> mTextures; // owned; file order
    };

    Material();
    ~Material();
    Material(const Material&) = delete;
    Material& operator=(const Material&) = delete;

    // Destroys the attributes and goes back to a nameless, lit material.
    void clear();

    // Reads the material's chunk, which the caller has opened. Unknown chunks give a line on standard output.
    void loadChunk(ChunkLib::ReadBuffer& buffer);

    // Appends the material's chunk.
    void writeChunk(ChunkLib::WriteBuffer& buffer) const;

    const std::string& getName() const { return mName; }
    int getNumAttributes() const { return static_cast<int>(mAttributes.size()); }
    Attribute* getAttribute(int index) const { return mAttributes[index]; }
    bool isShadeless() const { return mShadeless; }

    std::vector<Attribute*> mAttributes; // owned; file order
    std::string mName;                   // what submeshes and mesh instances call it
    bool mShadeless;                     // drawn without lighting, in the diffuse colour
    bool mDefaultOnFlag;                 // carried from file to file, read by nothing
};

} // namespace y3d
