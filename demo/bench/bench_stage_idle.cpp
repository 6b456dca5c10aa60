#include "bench_stage.h"

#include "bench_pictures.h"
#include "gl_recorder.h"

namespace
{

struct Idle
{
    Idle() : pictures(makeBenchPictures(textures)) { GLRecorder::gl.asleep = true; }

    BenchStage stage;
    AM::ArchiveManager archives;
    Fennel::TextureManager textures{&archives};
    std::vector<Fennel::Texture> pictures;
};

Idle& idle()
{
    static Idle stage;
    return stage;
}

} // namespace

BenchStage& BenchStage::get()
{
    return idle().stage;
}

void BenchStage::close() {}

void BenchStage::setup(Tidewheel::Effect3D& effect)
{
    effect.mTextureManager = &idle().textures;
    effect.setup(idle().archives);
}

void BenchStage::beginFrame() {}

void BenchStage::endFrame() {}
