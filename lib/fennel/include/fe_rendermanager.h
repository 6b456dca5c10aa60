#pragma once

#include "mb_matrix4x4col.h"

#include <cstddef>
#include <vector>

namespace Fennel
{

class BufferARB;
class Material;
class Submesh;

// The draw jobs of one frame, in this order: clear, add as often as needed, sort, render. Sorted, jobs with the same
// buffers stand together, and among those the ones with the same texture, so that each job changes as little GL state
// as the one before it leaves possible. Among different buffers the older ones come first, and equal jobs stay in the
// order in which they were added, so that each run draws the same.
class RenderManager
{
public:
    struct Job
    {
        static const int MIRRORED = 1; // the transform mirrors, so triangles wind the other way round

        Job() = default;
        Job(const Submesh* pSubmesh, const Material* pMaterial, const MathBase::Matrix4x4Col& pMatrix, int pFlags)
            : submesh(pSubmesh), material(pMaterial), matrix(pMatrix), flags(pFlags)
        {
        }

        bool operator<(const Job& other) const
        {
            return (submesh != other.submesh || material != other.material) && isBefore(other);
        }

        const Submesh* submesh = nullptr;   // not owned
        const Material* material = nullptr; // not owned
        MathBase::Matrix4x4Col matrix;      // the full modelview matrix
        int flags = 0;                      // MIRRORED or 0

    private:
        bool isBefore(const Job& other) const;
    };

    RenderManager();

    // Appends a job. What the pointers lead to must stay for this frame.
    void add(const Submesh* submesh, const Material* material, const MathBase::Matrix4x4Col& matrix, unsigned int flags)
    {
        mJobs.emplace_back(submesh, material, matrix, static_cast<int>(flags));
    }

    void sort();

    // Sets the base state and draws all jobs in list order. The modelview mode must be on. Buffers stay bound.
    void render() const;

    // Removes all jobs and keeps their room, so that a frame no larger than the ones before allocates nothing.
    void clear();

    std::vector<Job> mJobs;

private:
    // A job's place in the order.
    struct Key
    {
        Key(unsigned long vertices, unsigned long indices, int pTexture, std::size_t pJob)
            : vertexBuffer(vertices), indexBuffer(indices), texture(pTexture), job(pJob)
        {
        }

        unsigned long vertexBuffer; // numbers, 0 for none
        unsigned long indexBuffer;
        int texture;     // 0 for none
        std::size_t job; // index before the sort
    };

    // Room for sort(), kept from frame to frame.
    std::vector<Key> mKeys;
    std::vector<Key> mSortedKeys;
    std::vector<Job> mSortedJobs;
};

} // namespace Fennel
