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

const int usualJobs = 100;

int textureOf(const Material& material)
{
    return material.mTexture.isNull() ? 0 : material.mTexture->getSortableID();
}

} // namespace

bool RenderManager::Job::operator<(const Job& other) const
{
    if (submesh != other.submesh)
    {
        const auto number = [](const BufferARB* buffer) { return buffer ? buffer->mNumber : 0; };
        const auto buffers = [&](const Submesh& of) {
            return std::pair(number(of.mVertexBuffer), number(of.mIndexBuffer));
        };
        if (buffers(*submesh) != buffers(*other.submesh)) return buffers(*submesh) < buffers(*other.submesh);
    }
    if (material == other.material) return false;
    return textureOf(*material) < textureOf(*other.material);
}

RenderManager::RenderManager()
{
    mJobs.reserve(usualJobs);
}

void RenderManager::add(const Submesh* submesh, const Material* material, const MathBase::Matrix4x4Col& matrix,
                        unsigned int flags)
{
    Job job;
    job.submesh = submesh;
    job.material = material;
    job.matrix = matrix;
    job.flags = static_cast<int>(flags);
    mJobs.push_back(job);
}

void RenderManager::sort()
{
    if (mJobs.empty()) return;
    std::sort(mJobs.begin(), mJobs.end());
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
