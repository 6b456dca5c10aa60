#include "fe_rendermanager.h"

#include "fe_material.h"
#include "fe_submesh.h"

#include "tw_glinclude.h"

#include <algorithm>
#include <cassert>
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

bool RenderManager::Job::operator<(const Job& other) const
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

bool RenderManager::Key::operator<(const Key& other) const
{
    if (vertexBuffer != other.vertexBuffer) return vertexBuffer < other.vertexBuffer;
    if (indexBuffer != other.indexBuffer) return indexBuffer < other.indexBuffer;
    return texture < other.texture;
}

RenderManager::RenderManager()
{
    mJobs.reserve(USUAL_JOBS);
}

void RenderManager::add(const Submesh* submesh, const Material* material, const MathBase::Matrix4x4Col& matrix,
                        unsigned int flags)
{
    mJobs.push_back({submesh, material, matrix, static_cast<int>(flags)});
}

// What Job::operator< looks at is gathered first, so that the sort neither follows pointers nor moves matrices. The
// result is what sorting the jobs themselves by it gives, also in the order of equal ones.
void RenderManager::sort()
{
    if (mJobs.size() < 2) return;

    mKeys.clear();
    for (const Job& job : mJobs)
    {
        mKeys.push_back({numberOf(job.submesh->mVertexBuffer), numberOf(job.submesh->mIndexBuffer),
                         textureOf(job.material), static_cast<int>(mKeys.size())});
    }
    std::sort(mKeys.begin(), mKeys.end());

    mSortedJobs.clear();
    mSortedJobs.reserve(mJobs.capacity());
    for (const Key& key : mKeys) mSortedJobs.push_back(mJobs[static_cast<std::size_t>(key.job)]);
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
