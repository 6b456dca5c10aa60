#include "tw_effect3d.h"

#include "tw_device_sdl3d.h"
#include "tw_exception.h"

#include "fe_texturemanager.h"

namespace Tidewheel
{

Effect3D::Effect3D() : mArchive(nullptr), mSetup(false), mDevice(nullptr), mTextureManager(nullptr) {}

Effect3D::~Effect3D() {}

void Effect3D::setupInternal(DeviceSDL* device, AM::ArchiveManager* archive)
{
    DeviceSDL3D* device3D = dynamic_cast<DeviceSDL3D*>(device);
    if (!device3D) throw Exception("Effect3D::setupInternal, The window is not of the type 'opengl'");

    mDevice = device;
    mTextureManager = device3D->mTextureManager;
    mArchive = archive;
    mTextureManager->setArchiveManager(archive);
    setup(*archive);
    mSetup = true;
}

} // namespace Tidewheel
