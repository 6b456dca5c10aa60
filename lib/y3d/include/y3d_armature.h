#pragma once

#include <string>
#include <vector>

#include "y3d_scenenode.h"
#include "y3d_trackquatf.h"

namespace y3d
{

// A skeleton. It is read for tools: the show draws no skinned mesh, and there is no writer.
class Armature : public SceneNode
{
public:
    // A bone; its rotation is relative to its parent.
    class Bone
    {
    public:
        Bone() = default;
        ~Bone();
        Bone(const Bone&) = delete;
        Bone& operator=(const Bone&) = delete;

        // Reads the bone's chunk, which the caller has opened, with all bones below. Unknown chunks are skipped.
        void loadChunk(ChunkLib::ReadBuffer& buffer);

        std::string mName;
        std::vector<Bone*> mChildren; // owned; file order
        TrackQuatf mRotation;
    };

    Armature();

    int getType() const override;

    // Only what all nodes do; the bones stay.
    void clear() override;

    // Writes nothing.
    void writeChunk(ChunkLib::WriteBuffer& buffer) override;
    void loadChunkItem(int id, ChunkLib::ReadBuffer& buffer) override;

    Bone mBoneRoot;
};

} // namespace y3d
