#include "fe_rendermanager.h"

#include "fe_material.h"
#include "fe_numbersort.h"
#include "fe_submesh.h"

#include "tw_glinclude.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstdint>
#include <utility>

namespace Fennel
{

namespace
{

const std::size_t USUAL_JOBS = 100;

int textureOf(const Material* material)
{
    return !material || material->mTexture.isNull() ? 0 : material->mTexture->getSortableID();
}

unsigned long numberOf(const BufferARB* buffer)
{
    return buffer ? buffer->mNumber : 0;
}

} // namespace

bool RenderManager::Job::isBefore(const Job& other) const
{
    if (submesh != other.submesh)
    {
        const auto buffers = [](const Submesh& of) {
            return std::pair(numberOf(of.mVertexBuffer), numberOf(of.mIndexBuffer));
        };
        if (buffers(*submesh) != buffers(*other.submesh)) return buffers(*submesh) < buffers(*other.submesh);
    }
    if (material == other.material) return false;
    return textureOf(material) < textureOf(other.material);
}

RenderManager::RenderManager()
{
    mJobs.reserve(USUAL_JOBS);
}

// What Job::operator< looks at is gathered first, so that the sort neither follows pointers nor moves matrices. Sorted
// by the last criterion first, each sort keeps what the ones before it have done.
void RenderManager::sort()
{
    if (std::is_sorted(mJobs.begin(), mJobs.end())) return;

    mKeys.clear();
    for (const Job& job : mJobs)
    {
        mKeys.emplace_back(numberOf(job.submesh->mVertexBuffer), numberOf(job.submesh->mIndexBuffer),
                           textureOf(job.material), mKeys.size());
    }
    sortByNumber(mKeys, mSortedKeys, [](const Key& key) { return std::int64_t(key.texture) - INT_MIN; });
    sortByNumber(mKeys, mSortedKeys, [](const Key& key) { return key.indexBuffer; });
    sortByNumber(mKeys, mSortedKeys, [](const Key& key) { return key.vertexBuffer; });

    mSortedJobs.clear();
    mSortedJobs.reserve(mJobs.capacity());
    for (const Key& key : mKeys) mSortedJobs.push_back(mJobs[key.job]);
    mJobs.swap(mSortedJobs);
}

void RenderManager::render() const
{
    GL_CHECKED(glColor4f(1, 1, 1, 1));
    GL_CHECKED(glDisable(GL_LIGHTING));
    GL_CHECKED(glLightModelf(GL_LIGHT_MODEL_TWO_SIDE, 0));
    GL_CHECKED(glEnable(GL_CULL_FACE));
    GL_CHECKED(glFrontFace(GL_CCW));
    GL_CHECKED(glCullFace(GL_BACK));
    GL_CHECKED(glDisable(GL_BLEND));
    GL_CHECKED(glDisable(GL_TEXTURE_2D));

    const Material* lastMaterial = nullptr;
    const Submesh* lastSubmesh = nullptr;
    bool mirrored = false;

    for (const Job& job : mJobs)
    {
        if (((job.flags & Job::MIRRORED) != 0) != mirrored)
        {
            mirrored = !mirrored;
            if (mirrored)
                GL_CHECKED(glFrontFace(GL_CW));
            else
                GL_CHECKED(glFrontFace(GL_CCW));
        }
        if (job.material != lastMaterial)
        {
            job.material->activate(lastMaterial);
            lastMaterial = job.material;
        }
        GL_CHECKED(glLoadMatrixf(job.matrix.m));
        job.submesh->render(lastSubmesh);
        lastSubmesh = job.submesh;
    }
}

void RenderManager::clear()
{
    mJobs.clear();
    assert(mJobs.capacity()!=0);
}

} // namespace Fennel
