#pragma once

#include "tw_effect.h"

namespace Fennel
{
class TextureManager;
}

namespace Tidewheel
{

// The base of every effect of the show: an effect that draws with OpenGL and takes its textures from the device.
//
// What the author of an effect writes: `setup(AM::ArchiveManager&)`, to load data; `update(time, delta, position)`, to
// draw the current frame; and, where it takes input from the script, `executeTrigger`, `updateSpline` and
// `resetTriggers`, which takes the effect back to its first state when the timeline starts its entry over.
class Effect3D : public Effect
{
public:
    Effect3D();
    ~Effect3D() override;

    // Stores the device, its texture manager and the archives, has the textures come from these archives, and calls
    // `setup(*archive)`. Throws a Tidewheel::Exception if the device is not the OpenGL one.
    void setupInternal(DeviceSDL* device, AM::ArchiveManager* archive) override;

    AM::ArchiveManager* mArchive;            // not owned; null before setupInternal
    bool mSetup;                             // `setup` has returned
    DeviceSDL* mDevice;                      // not owned; null before setupInternal
    Fennel::TextureManager* mTextureManager; // the device's; null before setupInternal
};

} // namespace Tidewheel
