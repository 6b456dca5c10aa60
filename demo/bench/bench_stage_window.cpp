#include "bench_stage.h"

#include "bench_pictures.h"

#include "tw_device_sdl3d.h"

#include <memory>

namespace
{

struct Window
{
    Window()
    {
        device.open("effects", 800, 600, false);
        device.mTextureManager->setArchiveManager(&archives);
        pictures = makeBenchPictures(*device.mTextureManager);
    }

    BenchStage stage;
    AM::ArchiveManager archives;
    Tidewheel::DeviceSDL3D device;
    std::vector<Fennel::Texture> pictures;
};

std::unique_ptr<Window> window;

} // namespace

BenchStage& BenchStage::get()
{
    if (!window) window = std::make_unique<Window>();
    return window->stage;
}

void BenchStage::close()
{
    window.reset();
}

void BenchStage::setup(Tidewheel::Effect3D& effect)
{
    effect.setupInternal(&window->device, &window->archives);
}

void BenchStage::beginFrame()
{
    window->device.beginFrame();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

// The swap alone would let the next frames queue up.
void BenchStage::endFrame()
{
    glFinish();
    window->device.endFrame();
}
